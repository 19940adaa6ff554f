#include <gtest/gtest.h>
#include <tervik/isoline.h>

#include <cmath>

namespace {

TEST(FindIsolineValues, RoundIntervalsAboutTenLevelsElseTheUnitDefault) {
  struct Case {
    double min, max, start, interval, end;
  };
  const Case cases[] = {
      {0, 95, 10, 10, 90},       // 9.5 rounds to 10 tenths of 100
      {-273, 45, -270, 30, 30},  // 318 scales to 3.18 and rounds to 3
      {0.0123, 0.0456, 0.015, 0.003, 0.045},
      {-5, -1, -4.8, 0.4, -1.2},  // one interval above -5.2, the multiple below -5
      {NAN, 1, 0, 1, 0},  // non-finite ranges
      {-1e308, 1e308, 0, 1, 0},
  };
  for (const Case& c : cases) {
    double start = -1, interval = -1, end = -1;
    find_isoline_values(c.min, c.max, &start, &interval, &end);
    EXPECT_NEAR(interval, c.interval, 1e-12 * c.interval) << c.min << ".." << c.max;
    EXPECT_NEAR(start, c.start, 1e-9 * c.interval) << c.min << ".." << c.max;
    EXPECT_NEAR(end, c.end, 1e-9 * c.interval) << c.min << ".." << c.max;
  }
}

}  // namespace
