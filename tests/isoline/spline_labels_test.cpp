// The Hermite smoothing of traced lines and the placement of their labels, on lines whose
// answer can be worked out by hand.
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <tervik/isoline.h>

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

namespace {
struct LabelRecorder : contourBuilder {
  std::vector<std::array<double, 3>> labels;  // x, y, angle
  std::vector<std::string> texts;
  void addLabel(const char* text, double x, double y, double angle) override {
    labels.push_back({x, y, angle});
    texts.push_back(text);
  }
};
}  // namespace

// Labels go at the first point and then wherever the distance walked since the last label
// first exceeds 40 map units (strictly: a point exactly 40 on gets none).
TEST(Labels, FirstPointThenEveryFortyUnitsWalked) {
  std::vector<double> xy;
  for (int k = 0; k < 100; ++k) xy.insert(xy.end(), {static_cast<double>(k), 3.0});
  LabelRecorder whole, half;
  tervik::detail::place_labels(whole, 5.0, xy.data(), 100);
  tervik::detail::place_labels(half, 2.5, xy.data(), 100);
  ASSERT_EQ(whole.labels.size(), 3u);
  EXPECT_EQ(whole.labels[0], (std::array<double, 3>{0, 3, 0}));
  EXPECT_EQ(whole.labels[1], (std::array<double, 3>{41, 3, 0}));
  EXPECT_EQ(whole.labels[2], (std::array<double, 3>{82, 3, 0}));
  EXPECT_EQ(whole.texts[0], "5");
  EXPECT_EQ(half.texts[0], "2.5");
}
