#include <gtest/gtest.h>

#include <cstring>

#include <tervik/isoline.h>

namespace {

TEST(IsolineContourBuilder, LinesEnterTheLayerOnlyWhenFinished) {
  isolineContourBuilder b;
  EXPECT_EQ(b.getLayer(), nullptr);

  b.newLine(5.0, true);
  ASSERT_NE(b.getLayer(), nullptr);
  b.addPoint(1, 2, true);
  b.addPoint(3, 4, false);
  b.addLabel("5", 1, 2, 30);
  EXPECT_EQ(b.getLayer()->line_count, 0);  // not finished yet
  b.addLine();
  b.addLine();  // a second finish appends the same line again

  b.newLine(7.5, false);  // begun, never finished: dropped
  b.addPoint(9, 9, true);

  const tag_isoline_layer& layer = *b.getLayer();
  ASSERT_EQ(layer.line_count, 2);
  ASSERT_EQ(layer.lines.size(), 2u);
  for (const tag_isoline& line : layer.lines) {
    EXPECT_EQ(line.level, 5.0);
    EXPECT_EQ(line.closed, 1);
    EXPECT_EQ(line.point_count, 2);
    ASSERT_EQ(line.points.size(), 2u);
    EXPECT_EQ(line.points[1].x, 3);
    EXPECT_EQ(line.points[1].y, 4);
    EXPECT_TRUE(line.points[0].edge);
    EXPECT_FALSE(line.points[1].edge);
    ASSERT_EQ(line.label_count, 1);
    EXPECT_STREQ(line.labels[0].text, "5");
    EXPECT_EQ(line.labels[0].angle, 30);
  }
  EXPECT_EQ(layer.polygon_count, 0);
  b.releaseContour();
}

TEST(IsolineContourBuilder, LabelTextsAreCutToFifteenCharacters) {
  isolineContourBuilder b;
  b.newLine(0, false);
  b.addLabel("123456789012345", 0, 0, 0);
  b.addLabel("1234567890123456789", 0, 0, 0);
  b.addLabel(nullptr, 0, 0, 0);
  b.addLine();
  const tag_isoline& line = b.getLayer()->lines.at(0);
  EXPECT_STREQ(line.labels[0].text, "123456789012345");
  EXPECT_STREQ(line.labels[1].text, "123456789012345");
  EXPECT_STREQ(line.labels[2].text, "");
  b.releaseContour();
}

TEST(IsolineContourBuilder, PolygonsKeepTheirDescriptors) {
  isolineContourBuilder b;
  b.newShadedLine(2.5, 3, -1);
  b.addShadedPoint(0, 0, true);
  b.addShadedPoint(1, 0, false);
  b.addShadedPoint(0, 0, true);
  b.addShadedLine();
  const tag_isoline_layer& layer = *b.getLayer();
  ASSERT_EQ(layer.polygon_count, 1);
  const tag_shaded_isoline& ring = layer.polygons.at(0);
  EXPECT_EQ(ring.first, 3);
  EXPECT_EQ(ring.second, -1);
  EXPECT_EQ(ring.level, 2.5);
  EXPECT_EQ(ring.point_count, 3);
  EXPECT_EQ(layer.line_count, 0);
  b.releaseContour();
}

TEST(IsolineContourBuilder, CallsWithoutABegunLineAndRepeatedReleasesAreHarmless) {
  isolineContourBuilder b;
  b.addPoint(1, 1, true);
  b.addLabel("x", 1, 1, 0);
  b.addLine();
  b.addShadedPoint(1, 1, true);
  b.addShadedLine();
  EXPECT_EQ(b.getLayer(), nullptr);
  b.newLine(1, false);
  b.releaseContour();
  b.releaseContour();
  EXPECT_EQ(b.getLayer(), nullptr);
}

TEST(IsolineContourBuilder, TheLayerOutlivesTheBuilder) {
  tag_isoline_layer* layer = nullptr;
  {
    isolineContourBuilder b;
    b.newLine(1, false);
    b.addPoint(1, 1, true);
    b.addLine();
    layer = b.getLayer();
  }
  ASSERT_NE(layer, nullptr);
  EXPECT_EQ(layer->lines.at(0).points.at(0).x, 1);
  // The destructor left the layer to whoever took it; it is a plain heap record.
  delete layer;
}

}  // namespace
