#include <cstdlib>
#include <cstring>
#include <string>

#include <tervik/records.h>

#include "platform/calendar.h"
#include "platform/sysutil.h"

namespace {

// atoi of the two characters at `field`, cut out by a temporary terminator.
int read_two_digits(char* field) {
  const char kept = field[2];
  field[2] = '\0';
  const int v = std::atoi(field);
  field[2] = kept;
  return v;
}

}  // namespace

extern "C" int tduGetTimeByFilename(char* name, int* year, int* month, int* day, int* hour,
                                    int* forecast_hour) {
  if (!name || std::strlen(name) < 12) return 1;
  if (!year || !month || !day || !hour || !forecast_hour) return 1;
  int y = read_two_digits(name);
  if (y < 100) y += 2000;
  *year = y;
  *month = read_two_digits(name + 2);
  *day = read_two_digits(name + 4);
  *hour = read_two_digits(name + 6);
  *forecast_hour = std::atoi(name + 9);  // character 8 is the dot
  return 0;
}

extern "C" char* tduGetFilenameByRelativeTimeInterval(const char* path, int hours, int mode) {
  if (!path) return nullptr;
  std::string base = mFileSystem::getFileName(path);
  int year, month, day, hour, forecast;
  if (tduGetTimeByFilename(&base[0], &year, &month, &day, &hour, &forecast) != 0) return nullptr;

  int minute = 0, second = 0;
  // Widen before negating: -INT_MIN does not fit an int.
  const long long wide = hours;
  const int failed =
      wide < 1 ? timesub(&year, &month, &day, &hour, &minute, &second,
                         static_cast<unsigned>(-wide), mode)
               : timeadd(&year, &month, &day, &hour, &minute, &second,
                         static_cast<unsigned>(wide), mode);
  if (failed) return nullptr;

  char name[16] = {};
  mGetMeteorTime(name, year, month, day, hour, 0);

  const size_t length = std::strlen(path);
  char* result = static_cast<char*>(std::malloc(length + 1));
  if (!result) return nullptr;
  std::memcpy(result, path, length + 1);
  const char* cut = std::strrchr(result, mFileSystem::separator);
  char* old_name = cut ? result + (cut - result) + 1 : result;
  // The new name overwrites the old one without a terminator of its own. The old name has
  // at least 12 characters and the new one exactly 12, so the copy never grows; the bound
  // keeps it so.
  char* end = result + length;
  for (const char* c = name; *c && old_name < end; ++c) *old_name++ = *c;
  return result;
}
