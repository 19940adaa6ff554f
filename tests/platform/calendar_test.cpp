#include <gtest/gtest.h>

#include "platform/calendar.h"

namespace {
struct Stamp {
  int y, m, d, h, mi, s;
};
bool operator==(const Stamp& a, const Stamp& b) {
  return a.y == b.y && a.m == b.m && a.d == b.d && a.h == b.h && a.mi == b.mi && a.s == b.s;
}
std::ostream& operator<<(std::ostream& os, const Stamp& t) {
  return os << t.y << "-" << t.m << "-" << t.d << " " << t.h << ":" << t.mi << ":" << t.s;
}
}  // namespace

TEST(Calendar, AddsAndSubtractsHoursAcrossMonthsYearsAndLeapDays) {
  struct Case {
    Stamp from;
    long long hours;  // negative: subtract
    int mode;
    Stamp to;
  } cases[] = {
      {{2024, 2, 28, 23, 0, 0}, 1, 0, {2024, 2, 29, 0, 0, 0}},
      {{2023, 2, 28, 23, 0, 0}, 1, 0, {2023, 3, 1, 0, 0, 0}},
      {{1900, 2, 28, 0, 0, 0}, 24, 0, {1900, 3, 1, 0, 0, 0}},   // century, not leap
      {{2000, 2, 28, 0, 0, 0}, 24, 0, {2000, 2, 29, 0, 0, 0}},  // 400-year leap
      {{2024, 12, 31, 18, 30, 15}, 6, 0, {2025, 1, 1, 0, 30, 15}},
      {{2025, 1, 1, 0, 0, 0}, -1, 0, {2024, 12, 31, 23, 0, 0}},
      {{2024, 3, 1, 0, 0, 0}, -24, 0, {2024, 2, 29, 0, 0, 0}},
      {{2024, 1, 1, 0, 0, 0}, 24 * 366, 0, {2025, 1, 1, 0, 0, 0}},
      {{2024, 1, 1, 0, 0, 0}, 24LL * 146097, 0, {2424, 1, 1, 0, 0, 0}},
      {{2024, 2, 28, 0, 0, 0}, 24, 1, {2024, 3, 1, 0, 0, 0}},  // no leap days
      {{2024, 1, 1, 0, 0, 0}, 24 * 365, 1, {2025, 1, 1, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    Stamp t = c.from;
    const unsigned hours = static_cast<unsigned>(c.hours < 0 ? -c.hours : c.hours);
    const int rc = c.hours < 0 ? timesub(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, hours, c.mode)
                               : timeadd(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, hours, c.mode);
    EXPECT_EQ(rc, 0) << c.from;
    EXPECT_EQ(t, c.to) << c.from << " + " << c.hours;
  }
}

TEST(Calendar, RejectsImpossibleDatesAndLeavesThemUnchanged) {
  const Stamp bad[] = {{2023, 2, 29, 0, 0, 0}, {2024, 0, 1, 0, 0, 0}, {2024, 4, 31, 0, 0, 0},
                       {2024, 1, 1, 24, 0, 0}, {2024, 1, 1, 0, 60, 0}, {0, 1, 1, 0, 0, 0},
                       {2024, 1, 1, -1, 0, 0}};
  for (const auto& b : bad) {
    Stamp t = b;
    EXPECT_NE(timeadd(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, 1, 0), 0) << b;
    EXPECT_EQ(t, b);
  }
}

TEST(Calendar, RejectsResultsOutsideTheSupportedYearsAndUnknownModes) {
  Stamp t{1, 1, 1, 0, 0, 0};
  EXPECT_NE(timesub(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, 1, 0), 0);
  t = {9999, 12, 31, 23, 0, 0};
  EXPECT_NE(timeadd(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, 1, 0), 0);
  t = {2024, 1, 1, 0, 0, 0};
  EXPECT_NE(timeadd(&t.y, &t.m, &t.d, &t.h, &t.mi, &t.s, 1, 2), 0);
  EXPECT_NE(timeadd(nullptr, &t.m, &t.d, &t.h, &t.mi, &t.s, 1, 0), 0);
}
