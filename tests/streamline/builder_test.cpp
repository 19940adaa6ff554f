#include <gtest/gtest.h>

#include <tervik/streamline.h>

namespace {

TEST(StreamlineBuilder, ResetsTheCallersLayerAndTakesLinesWhenFinished) {
  tagSTREAMLINE_LAYER layer;
  layer.line_count = 7;
  layer.lines.resize(3);
  layer.arrows.push_back({1, 2, 3, 4});
  strmStreamlineBuilder builder(&layer);
  EXPECT_TRUE(layer.line_count == 0 && layer.lines.empty() && layer.arrows.empty());
  builder.addLine();  // no line begun: ignored
  builder.newLine();
  builder.addPoint(1, 2);
  builder.addArrow(1, 2, 3, 4);  // stored at once, before its line is finished
  EXPECT_TRUE(layer.arrow_count == 1 && layer.line_count == 0);
  builder.addLine();
  builder.addPoint(3, 4);
  builder.addLine();  // the current line stays: a second addLine appends it again
  builder.newLine();  // begun but never finished: dropped
  ASSERT_EQ(layer.line_count, 2);
  EXPECT_EQ(layer.lines[0].point_count, 1);
  EXPECT_EQ(layer.lines[1].point_count, 2);
}

}  // namespace
