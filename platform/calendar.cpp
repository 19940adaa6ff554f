#include "platform/calendar.h"

namespace {

constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;

bool is_leap(int year, int mode) {
  if (mode == calendar_no_leap) return false;
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int days_in_month(int year, int month, int mode) {
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && is_leap(year, mode) ? 29 : kDays[month - 1];
}

int days_in_year(int year, int mode) { return is_leap(year, mode) ? 366 : 365; }

// Days from 1 January of year 1 to the given date.
long long day_number(int year, int month, int day, int mode) {
  const long long y = year - 1;
  long long days = y * 365;
  if (mode == calendar_gregorian) days += y / 4 - y / 100 + y / 400;
  for (int m = 1; m < month; ++m) days += days_in_month(year, m, mode);
  return days + day - 1;
}

// Inverse of day_number; false when the day lies outside years 1..9999.
bool date_of(long long days, int mode, int* year, int* month, int* day) {
  if (days < 0) return false;
  int y = kFirstYear;
  // Jump close with whole 400-year (Gregorian) or 1-year (no-leap) cycles, then step.
  const long long cycle = mode == calendar_gregorian ? 146097 : 365;
  const int cycle_years = mode == calendar_gregorian ? 400 : 1;
  const long long cycles = days / cycle;
  if (cycles > (kLastYear - kFirstYear) / cycle_years + 1) return false;
  y += static_cast<int>(cycles) * cycle_years;
  days -= cycles * cycle;
  while (days >= days_in_year(y, mode)) {
    days -= days_in_year(y, mode);
    ++y;
  }
  if (y > kLastYear) return false;
  int m = 1;
  while (days >= days_in_month(y, m, mode)) days -= days_in_month(y, m++, mode);
  *year = y;
  *month = m;
  *day = static_cast<int>(days) + 1;
  return true;
}

bool valid(int year, int month, int day, int hour, int minute, int second, int mode) {
  if (mode != calendar_gregorian && mode != calendar_no_leap) return false;
  if (year < kFirstYear || year > kLastYear || month < 1 || month > 12) return false;
  if (day < 1 || day > days_in_month(year, month, mode)) return false;
  return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
}

int shift(int* year, int* month, int* day, int* hour, int* minute, int* second, long long hours,
          int mode) {
  if (!year || !month || !day || !hour || !minute || !second) return 1;
  if (!valid(*year, *month, *day, *hour, *minute, *second, mode)) return 1;
  const long long total = day_number(*year, *month, *day, mode) * 24 + *hour + hours;
  if (total < 0) return 1;
  int y, m, d;
  if (!date_of(total / 24, mode, &y, &m, &d)) return 1;
  *year = y;
  *month = m;
  *day = d;
  *hour = static_cast<int>(total % 24);
  return 0;
}

}  // namespace

int timeadd(int* year, int* month, int* day, int* hour, int* minute, int* second, unsigned hours,
            int mode) {
  return shift(year, month, day, hour, minute, second, static_cast<long long>(hours), mode);
}

int timesub(int* year, int* month, int* day, int* hour, int* minute, int* second, unsigned hours,
            int mode) {
  return shift(year, month, day, hour, minute, second, -static_cast<long long>(hours), mode);
}
