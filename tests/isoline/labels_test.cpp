#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "isoline/contour_detail.h"
#include "isoline/recording_builder.h"

namespace {

using tervik::test::RecordingBuilder;

TEST(LabelText, WholeLevelsWithoutDecimalsOthersWithOne) {
  struct Case {
    double level;
    const char* text;
  };
  const Case cases[] = {{5, "5"},          {-3, "-3"},     {0, "0"},
                        {-0.0, "0"},       {0.5, "0.5"},   {-0.5, "-0.5"},
                        {1012.5, "1012.5"}, {0.04, "0.0"}, {5880, "5880"},
                        {1e10, "10000000000"}};
  for (const Case& c : cases) {
    char text[16];
    tervik::detail::label_text(c.level, text);
    EXPECT_STREQ(text, c.text) << c.level;
  }
}

TEST(LabelAngle, FollowsFairlyStraightLinesOnly) {
  struct Case {
    const char* name;
    double px, py, qx, qy, rx, ry, angle;
  };
  const Case cases[] = {
      {"eastward", 0, 0, 1, 0, 2, 0, 0},
      {"westward", 2, 0, 1, 0, 0, 0, 180},
      {"south-westward", 2, 2, 1, 1, 0, 0, 225},
      {"north-eastward", 0, 0, 1, 1, 2, 2, 45},
      {"gentle bend", 0, 0, 1, 0, 2, 0.5, 26.56505117707799},
      {"right angle", 0, 0, 1, 0, 1.5, 1, 0},
      {"vertical step in", 1, 0, 1, 1, 2, 2, 0},
      {"vertical step out", 0, 0, 1, 0.1, 1, 1, 0},
      {"vanishing segment", 0, 0, 1, 0, 1 + 1e-9, 0, 0},
  };
  for (const Case& c : cases)
    EXPECT_NEAR(tervik::detail::label_angle(c.px, c.py, c.qx, c.qy, c.rx, c.ry), c.angle, 1e-9)
        << c.name;
}

// A square ring of the given side length, points one unit apart, counter-clockwise from its
// lower-left corner and back to it.
std::vector<double> square_ring(int side) {
  std::vector<double> xy;
  auto add = [&](double x, double y) {
    xy.push_back(x);
    xy.push_back(y);
  };
  for (int k = 0; k < side; ++k) add(k, 0);
  for (int k = 0; k < side; ++k) add(side, k);
  for (int k = 0; k < side; ++k) add(side - k, side);
  for (int k = 0; k < side; ++k) add(0, side - k);
  add(0, 0);
  return xy;
}

std::vector<std::string> labels_of(const std::vector<double>& xy, double level) {
  RecordingBuilder b;
  b.newLine(level, false);
  tervik::detail::place_labels(b, level, xy.data(), xy.size() / 2);
  return std::vector<std::string>(b.calls.begin() + 1, b.calls.end());
}

TEST(LabelPlacement, RingsStopWhenTheRestIsWithinTheSpacing) {
  // Perimeter 120: the second label comes 41 units on (79 left); 41 units further only 38
  // are left, so no third label. Perimeter 128 leaves 46 there, and a third label follows.
  // Labels on the vertical sides stay horizontal; on the top side they face west.
  EXPECT_EQ(labels_of(square_ring(30), 10),
            (std::vector<std::string>{"label 10 0 0 0", "label 10 30 11 0"}));
  EXPECT_EQ(labels_of(square_ring(32), 10),
            (std::vector<std::string>{"label 10 0 0 0", "label 10 32 9 0", "label 10 14 32 180"}));
}

TEST(LabelPlacement, OpenLinesLabelUpToTheLastButOnePoint) {
  // The same points without the closing one: an open line labels every 41 units up to its
  // last-but-one point, however near the end.
  std::vector<double> open = square_ring(30);
  open.resize(open.size() - 2);
  EXPECT_EQ(labels_of(open, 2.5), (std::vector<std::string>{"label 2.5 0 0 0", "label 2.5 30 11 0",
                                                             "label 2.5 8 30 180"}));
}

TEST(LabelPlacement, ShortAndSinglePointLinesGetNone) {
  EXPECT_TRUE(labels_of({3, 3}, 1).empty());
  EXPECT_TRUE(labels_of({3, 3, 3.05, 3.05}, 1).empty());  // 0.0707 long
  EXPECT_EQ(labels_of({3, 3, 3.1, 3}, 1), (std::vector<std::string>{"label 1 3 3 0"}));
}

}  // namespace
