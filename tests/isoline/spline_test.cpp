#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "isoline/contour_detail.h"

namespace {

struct Smoothed {
  size_t values;
  std::vector<double> xy;
};

// Smooths a line of points given as x, y pairs in grid units on a 10 x 10 grid.
Smoothed smooth(const std::vector<double>& line, double step = 0.25, size_t capacity = 4) {
  double* out = static_cast<double*>(std::malloc(capacity * sizeof(double)));
  const size_t values =
      tervik::detail::spline_line(line.data(), line.size() / 2, step, 10, 10, out, capacity);
  Smoothed s{values, std::vector<double>(out, out + values)};
  std::free(out);
  return s;
}

std::vector<double> xs(const Smoothed& s) {
  std::vector<double> x;
  for (size_t k = 0; k < s.xy.size(); k += 2) x.push_back(s.xy[k]);
  return x;
}

TEST(Spline, StraightStepIsSampledAlongTheHermiteCurve) {
  // One step of length 1 with unit tangents scaled to 0.7:
  // x(t) = 2 + 0.7 t + 0.9 t^2 - 0.6 t^3 at t = 0, 0.25, 0.5, 0.75, then the end point.
  // A point within a step of the start is dropped; so is the step end when the last point
  // is within a step of it (the line still ends at its last point).
  struct Case {
    const char* name;
    std::vector<double> line;
    std::vector<double> x;
  };
  const Case cases[] = {
      {"two points", {2, 2, 3, 2}, {2, 2.221875, 2.5, 2.778125, 3}},
      {"near point dropped", {2, 2, 2.1, 2, 3, 2}, {2, 2.221875, 2.5, 2.778125, 3}},
      {"near end kept", {2, 2, 3, 2, 3.1, 2}, {2, 2.221875, 2.5, 2.778125, 3.1}},
  };
  for (const Case& c : cases) {
    const Smoothed s = smooth(c.line);
    ASSERT_EQ(s.values, 2 * c.x.size()) << c.name;
    const std::vector<double> x = xs(s);
    for (size_t k = 0; k < x.size(); ++k) {
      EXPECT_NEAR(x[k], c.x[k], 1e-15) << c.name << " sample " << k;
      EXPECT_EQ(s.xy[2 * k + 1], 2.0) << c.name;
    }
  }
}

TEST(Spline, TangentIsThePlainMeanOfTheUnitVectors) {
  // At the corner (3,2) of (2,2) -> (3,2) -> (3,3) the tangent is (0.5, 0.5), not a unit
  // vector: scaled by 0.7 it gives y(t) = 2 - 0.35 t^2 + 0.35 t^3 on the first step.
  const Smoothed s = smooth({2, 2, 3, 2, 3, 3});
  ASSERT_EQ(s.values, 18u);  // four samples per step and the end point
  EXPECT_NEAR(s.xy[4], 2.54375, 1e-15);
  EXPECT_NEAR(s.xy[5], 1.95625, 1e-15);
  EXPECT_NEAR(s.xy[7], 2.0 - 0.35 * 0.5625 + 0.35 * 0.421875, 1e-15);
  EXPECT_EQ(s.xy[16], 3.0);
  EXPECT_EQ(s.xy[17], 3.0);
}

TEST(Spline, BorderStepsStayStraightAndShortLinesStayAsTheyAre) {
  // Along the bottom row (y = 1) and the right column (x = 10) only step starts are kept.
  const Smoothed bottom = smooth({2, 1, 3, 1, 4, 1});
  EXPECT_EQ(bottom.xy, (std::vector<double>{2, 1, 3, 1, 4, 1}));
  const Smoothed right = smooth({10, 4, 10, 5});
  EXPECT_EQ(right.xy, (std::vector<double>{10, 4, 10, 5}));
  // Nothing lies a step from the ends: the line is kept.
  EXPECT_EQ(smooth({2, 2, 2.1, 2.1, 2.2, 2}).values, 0u);
  EXPECT_EQ(smooth({2, 2}).values, 0u);
  // A point exactly one step away counts.
  EXPECT_EQ(smooth({2, 2, 2.25, 2}).values, 4u);
}

TEST(Spline, ClosedRingStaysClosed) {
  // A diamond: the guard points continue the ring, so the curve is smooth through its start.
  const std::vector<double> ring = {5, 4, 6, 5, 5, 6, 4, 5, 5, 4};
  const Smoothed s = smooth(ring, 0.25, 64);
  ASSERT_GT(s.values, 10u);
  EXPECT_EQ(s.xy[0], 5.0);
  EXPECT_EQ(s.xy[1], 4.0);
  EXPECT_EQ(s.xy[s.values - 2], 5.0);
  EXPECT_EQ(s.xy[s.values - 1], 4.0);
  // The tangent at the start is horizontal: the second sample moves right, level in y to
  // first order.
  EXPECT_GT(s.xy[2], 5.0);
  EXPECT_LT(s.xy[3] - 4.0, s.xy[2] - 5.0);
}

}  // namespace
