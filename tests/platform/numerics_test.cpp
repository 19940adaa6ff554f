#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "platform/numerics.h"

namespace {
std::vector<double> random_grid(int rows, int columns, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(-10, 10);
  std::vector<double> g(static_cast<size_t>(rows) * columns);
  for (double& v : g) v = u(gen);
  return g;
}
}  // namespace

TEST(Convolve, ConstantFieldStaysConstantUpToTheEdges) {
  const double box5[] = {0.2, 0.2, 0.2};
  std::vector<double> g(7 * 4, 3.5);
  ASSERT_EQ(convolve(g.data(), box5, 2, 4, 7, 0, 4, 0, 7), 0);
  for (double v : g) EXPECT_NEAR(v, 3.5, 1e-14);
}

TEST(Convolve, InteriorPointIsTheWeightedMeanAlongRowsThenColumns) {
  // A 3-point box over a 5x5 grid; the centre of a separable smoothing of the delta at
  // (2,2) is (1/3)*(1/3) and its four direct neighbours get the same.
  const double box3[] = {1.0 / 3, 1.0 / 3};
  std::vector<double> g(25, 0.0);
  g[2 * 5 + 2] = 9.0;
  ASSERT_EQ(convolve(g.data(), box3, 1, 5, 5, 0, 5, 0, 5), 0);
  EXPECT_NEAR(g[2 * 5 + 2], 1.0, 1e-14);
  EXPECT_NEAR(g[1 * 5 + 1], 1.0, 1e-14);
  EXPECT_NEAR(g[2 * 5 + 0], 0.0, 1e-14);
  double total = 0;
  for (double v : g) total += v;
  EXPECT_NEAR(total, 9.0, 1e-12);  // nothing lost when the kernel stays inside
}

TEST(Convolve, EdgePointsUseOnlyTheNeighboursInside) {
  // Along one row [0, 0, 6] with a 3-box: the last point averages itself and its one
  // neighbour, (0 + 6)/2 = 3.
  const double box3[] = {1.0 / 3, 1.0 / 3};
  std::vector<double> row = {0, 0, 6};
  ASSERT_EQ(convolve(row.data(), box3, 1, 1, 3, 0, 1, 0, 3), 0);
  EXPECT_NEAR(row[2], 3.0, 1e-14);
  EXPECT_NEAR(row[1], 2.0, 1e-14);
  EXPECT_NEAR(row[0], 0.0, 1e-14);
}

TEST(Convolve, TouchesNothingOutsideTheGivenRange) {
  const double box3[] = {1.0 / 3, 1.0 / 3};
  std::vector<double> g = random_grid(6, 8, 1);
  const std::vector<double> before = g;
  ASSERT_EQ(convolve(g.data(), box3, 1, 6, 8, 2, 4, 3, 6), 0);
  for (int j = 0; j < 6; ++j)
    for (int i = 0; i < 8; ++i) {
      if (j < 2 || j >= 4 || i < 3 || i >= 6) {
        EXPECT_EQ(g[j * 8 + i], before[j * 8 + i]) << i << "," << j;
      }
    }
}

TEST(Convolve, KernelWiderThanTheGridAndClippedRangesAreSafe) {
  std::vector<double> w(40, 1.0);
  std::vector<double> g = random_grid(3, 2, 2);
  double mean = 0;
  for (double v : g) mean += v / 6;
  ASSERT_EQ(convolve(g.data(), w.data(), 39, 3, 2, -5, 100, -5, 100), 0);
  for (double v : g) EXPECT_NEAR(v, mean, 1e-12);  // equal weights everywhere: the mean
}

TEST(Convolve, RefusesUnusableArguments) {
  const double w[] = {1.0};
  double g[4] = {1, 2, 3, 4};
  EXPECT_NE(convolve(nullptr, w, 0, 2, 2, 0, 2, 0, 2), 0);
  EXPECT_NE(convolve(g, nullptr, 0, 2, 2, 0, 2, 0, 2), 0);
  EXPECT_NE(convolve(g, w, -1, 2, 2, 0, 2, 0, 2), 0);
  EXPECT_NE(convolve(g, w, 0, 0, 2, 0, 2, 0, 2), 0);
  const double zero[] = {0.0};
  EXPECT_NE(convolve(g, zero, 0, 2, 2, 0, 2, 0, 2), 0);
  EXPECT_EQ(g[3], 4);
}

TEST(VectorDirection, CountsDegreesCounterClockwiseFromEast) {
  struct Case { double x2, y2, deg; } cases[] = {
      {1, 0, 0}, {0, 1, 90}, {-1, 0, 180}, {0, -1, 270}, {1, 1, 45}, {1, -1, 315}, {0, 0, 0}};
  for (const auto& c : cases) EXPECT_NEAR(vector_dir(0, 0, c.x2, c.y2), c.deg, 1e-12) << c.x2 << "," << c.y2;
  EXPECT_NEAR(vector_dir(5, 5, 4, 4), 225, 1e-12);
  const double tiny_negative = vector_dir(0, 0, 1, -1e-300);
  EXPECT_GE(tiny_negative, 0.0);
  EXPECT_LT(tiny_negative, 360.0);
}

TEST(QuickSort, SortsTheInclusiveRangeAscending) {
  std::vector<double> v = {5, 3, 9, 1, 7, 2};
  do_quick_sort(v.data(), 1, 4);
  EXPECT_EQ(v, (std::vector<double>{5, 1, 3, 7, 9, 2}));
  std::vector<double> r = random_grid(1, 1000, 3);
  do_quick_sort(r.data(), 0, 999);
  EXPECT_TRUE(std::is_sorted(r.begin(), r.end()));
}

TEST(QuickSort, PutsNaNsLastAndIgnoresEmptyRanges) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> v = {3, nan, 1, nan, 2};
  do_quick_sort(v.data(), 0, 4);
  EXPECT_EQ(v[0], 1);
  EXPECT_EQ(v[1], 2);
  EXPECT_EQ(v[2], 3);
  EXPECT_TRUE(std::isnan(v[3]) && std::isnan(v[4]));
  std::vector<double> w = {2, 1};
  do_quick_sort(w.data(), 1, 0);
  do_quick_sort(nullptr, 0, 5);
  EXPECT_EQ(w[0], 2);
}
