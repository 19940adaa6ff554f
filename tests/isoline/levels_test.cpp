#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <tervik/isoline.h>

namespace {

struct LevelCase {
  double min, max, start, interval, end;
};

TEST(FindIsolineValues, RoundIntervalsAboutTenLevels) {
  const LevelCase cases[] = {
      {0, 95, 10, 10, 90},           // the range rounds up to 10 steps
      {0, 100, 10, 10, 100},
      {-273, 45, -270, 30, 30},      // 318 scales to 3.18 and rounds to 3
      {1000, 1040, 1004, 4, 1040},
      {0.0123, 0.0456, 0.015, 0.003, 0.045},
      {-5, -1, -4.8, 0.4, -1.2},     // one step above -5.2, the multiple below -5
  };
  for (const LevelCase& c : cases) {
    double start = -1, interval = -1, end = -1;
    find_isoline_values(c.min, c.max, &start, &interval, &end);
    EXPECT_NEAR(interval, c.interval, 1e-12 * c.interval) << c.min << ".." << c.max;
    EXPECT_NEAR(start, c.start, 1e-9 * c.interval) << c.min << ".." << c.max;
    EXPECT_NEAR(end, c.end, 1e-9 * c.interval) << c.min << ".." << c.max;
  }
}

TEST(FindIsolineValues, DegenerateOrNonFiniteRangesGiveTheUnitDefault) {
  const double cases[][2] = {{3, 3},        {3, 3 + 1e-17}, {5, 4},          {NAN, 1},
                             {0, NAN},      {0, INFINITY},  {-INFINITY, 0},  {-1e308, 1e308}};
  for (const auto& c : cases) {
    double start = -1, interval = -1, end = -1;
    find_isoline_values(c[0], c[1], &start, &interval, &end);
    EXPECT_EQ(start, 0) << c[0] << ".." << c[1];
    EXPECT_EQ(interval, 1) << c[0] << ".." << c[1];
    EXPECT_EQ(end, 0) << c[0] << ".." << c[1];
  }
  find_isoline_values(0, 95, nullptr, nullptr, nullptr);  // null outputs are skipped
}

// Whatever the range: the interval is a tenth to a whole power of ten times 1..10, the first
// level lies within one interval above min and the last within one interval below max.
TEST(FindIsolineValues, LevelsBracketTheRange) {
  std::mt19937 gen(3);
  std::uniform_real_distribution<double> exponent(-8, 8), unit(-1, 1);
  for (int trial = 0; trial < 2000; ++trial) {
    const double scale = std::pow(10.0, exponent(gen));
    const double a = unit(gen) * scale * 10, b = a + std::fabs(unit(gen)) * scale + 1e-6 * scale;
    double start, interval, end;
    find_isoline_values(a, b, &start, &interval, &end);
    const double digits = interval / std::pow(10.0, std::floor(std::log10(interval) + 1e-9));
    EXPECT_NEAR(digits, std::round(digits), 1e-6) << a << ".." << b;
    EXPECT_GT(start, a - 1e-9 * interval) << a << ".." << b;
    EXPECT_LE(start, a + interval * (1 + 1e-9)) << a << ".." << b;
    EXPECT_LE(end, b + 1e-9 * interval) << a << ".." << b;
    EXPECT_GT(end, b - interval * (1 + 1e-9)) << a << ".." << b;
    EXPECT_LE((b - a) / interval, 20.0) << a << ".." << b;
  }
}

}  // namespace
