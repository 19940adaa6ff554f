#include <cstdlib>

#include <gtest/gtest.h>

#include "isoline/contour_detail.h"

// A straight open line (1,2) - (3,2) - (5,2) in grid units, sampled every 0.25: each segment
// of length 2 becomes the Hermite curve with tangents (1,0) scaled by min(|AB|, 0.7), sampled
// at t = 0, 1/8, ..., 7/8, and the last point is appended. At t = 1/8:
//   x = 1 + 0.7/8 + (6 - 2.1)/64 + (-4 + 1.4)/512 = 1.143359375.
TEST(Spline, HermiteSamplesUseTheTangentScaledToAtMostPointSeven) {
  const double line[] = {1, 2, 3, 2, 5, 2};
  double* out = nullptr;
  size_t capacity = 0;
  const size_t written = tervik::detail::spline_line(line, 3, 0.25, 10, 10, out, capacity);
  ASSERT_EQ(written, 2u * (8 + 8 + 1));
  EXPECT_EQ(out[0], 1.0);
  EXPECT_NEAR(out[2], 1.143359375, 1e-12);
  EXPECT_NEAR(out[8], 2.0, 1e-12);  // the middle of a symmetric segment
  EXPECT_EQ(out[written - 2], 5.0);
  for (size_t k = 1; k < written; k += 2) EXPECT_EQ(out[k], 2.0);
  std::free(out);
}
