#include <gtest/gtest.h>

#include <tervik/streamline.h>

namespace {

void expect_counts_match(const tagSTREAMLINE_LAYER& layer) {
  EXPECT_EQ(layer.line_count, static_cast<int32_t>(layer.lines.size()));
  EXPECT_EQ(layer.arrow_count, static_cast<int32_t>(layer.arrows.size()));
  for (const auto& line : layer.lines)
    EXPECT_EQ(line.point_count, static_cast<int32_t>(line.points.size()));
}

TEST(StreamlineBuilder, FillsTheCallersLayerAfterResettingIt) {
  tagSTREAMLINE_LAYER layer;
  layer.line_count = 7;
  layer.lines.resize(3);
  layer.arrow_count = 5;
  layer.arrows.push_back({1, 2, 3, 4});

  strmStreamlineBuilder builder(&layer);
  EXPECT_EQ(builder.getLayer(), &layer);
  EXPECT_EQ(layer.line_count, 0);
  EXPECT_TRUE(layer.lines.empty());
  EXPECT_EQ(layer.arrow_count, 0);
  EXPECT_TRUE(layer.arrows.empty());

  builder.newLine();
  builder.addPoint(1, 2);
  builder.addArrow(1, 2, 3, 4);  // stored in the layer at once, before its line is finished
  ASSERT_EQ(layer.arrow_count, 1);
  EXPECT_EQ(layer.line_count, 0);
  builder.addPoint(3, 4);
  builder.addLine();
  builder.addLine();  // the current line stays: a second addLine appends a second copy
  builder.newLine();
  builder.addPoint(9, 9);  // begun but never finished: dropped

  ASSERT_EQ(layer.line_count, 2);
  expect_counts_match(layer);
  EXPECT_EQ(layer.lines[1].points[1].x, 3);
  EXPECT_EQ(layer.lines[1].points[1].y, 4);
  EXPECT_EQ(layer.arrows[0].x2, 3);
}

TEST(StreamlineBuilder, MakesItsOwnLayerAtTheFirstLineOrArrow) {
  strmStreamlineBuilder lines(nullptr);
  EXPECT_EQ(lines.getLayer(), nullptr);
  lines.newLine();
  ASSERT_NE(lines.getLayer(), nullptr);
  lines.addLine();
  EXPECT_EQ(lines.getLayer()->line_count, 1);

  strmStreamlineBuilder arrows(nullptr);
  arrows.addArrow(0, 0, 1, 1);
  ASSERT_NE(arrows.getLayer(), nullptr);
  EXPECT_EQ(arrows.getLayer()->arrow_count, 1);
}

TEST(StreamlineBuilder, IgnoresPointsAndLinesBeforeAnyNewLine) {
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  builder.addPoint(1, 1);
  builder.addLine();
  EXPECT_EQ(layer.line_count, 0);

  strmStreamlineBuilder empty(nullptr);
  empty.addLine();
  EXPECT_EQ(empty.getLayer(), nullptr);
}

}  // namespace
