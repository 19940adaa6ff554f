#ifndef TERVIK_PLATFORM_SYSUTIL_H
#define TERVIK_PLATFORM_SYSUTIL_H

// System services: a stopwatch, path handling and time-stamped file names.

#include <chrono>
#include <string>

// Stopwatch on the steady clock, in whole milliseconds.
class mTime {
 public:
  mTime() { start(); }
  void start() { begun_ = std::chrono::steady_clock::now(); }
  long long elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 begun_)
        .count();
  }

 private:
  std::chrono::steady_clock::time_point begun_;
};

class mFileSystem {
 public:
  // The directory separator of file paths.
  static constexpr char separator = '/';
  // The part of `path` after its last separator (the whole path when it has none);
  // empty for a null path.
  static std::string getFileName(const char* path);
};

// Writes the time-stamped base name of a data file into `buffer` (at least 13 bytes):
// two digits each of year (within its century), month, day and hour, a dot and three digits
// of forecast hour, for example "24011512.006". Fields are taken modulo their width.
// Returns the number of characters written (12), or 0 for a null buffer.
int mGetMeteorTime(char* buffer, int year, int month, int day, int hour, int forecast_hour);

#endif
