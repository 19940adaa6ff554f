#include "platform/sysutil.h"

#include <cstdio>
#include <cstring>

std::string mFileSystem::getFileName(const char* path) {
  if (!path) return std::string();
  const char* cut = std::strrchr(path, separator);
  return std::string(cut ? cut + 1 : path);
}

namespace {
int wrap(int v, int modulus) {
  const int r = v % modulus;
  return r < 0 ? r + modulus : r;
}
}  // namespace

int mGetMeteorTime(char* buffer, int year, int month, int day, int hour, int forecast_hour) {
  if (!buffer) return 0;
  std::snprintf(buffer, 13, "%02d%02d%02d%02d.%03d", wrap(year, 100), wrap(month, 100),
                wrap(day, 100), wrap(hour, 100), wrap(forecast_hour, 1000));
  return 12;
}
