#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tervik/isoline.h>

#include "isoline/recording_builder.h"

using tervik::test::RecordedLine;
using tervik::test::RecordedPoint;
using tervik::test::RecordingBuilder;

namespace {

const double U = 9999.0;  // missing value

struct Frame {
  double x0 = 0.0, y0 = 0.0, dx = 1.0, dy = 1.0;
};

// Contours a grid given row by row from the first (southern) row, spline off unless asked.
RecordingBuilder contour(std::vector<double> grid, int nx, int ny, std::vector<double> levels,
                         bool spline = false, Frame f = {}) {
  RecordingBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.enable_spline(spline);
  tracer.create_isoline(grid.data(), nx, ny, f.x0, f.y0, f.dx, f.dy, levels, U);
  return builder;
}

using Calls = std::vector<std::string>;

TEST(ContourTracer, PeakGivesOneClosedRingInMapCoordinates) {
  // The level crosses the four sides around the centre point. The walk starts on the
  // vertical side below it, goes left round to the right and comes back: five points, the
  // first repeated. Grid units map to x = 10 + (gx-1)*2, y = 20 + (gy-1)*0.5.
  const RecordingBuilder b =
      contour({0, 0, 0, 0, 1, 0, 0, 0, 0}, 3, 3, {0.5}, false, Frame{10, 20, 2, 0.5});
  const Calls expected = {"newLine 0.5 closed", "point 12 20.25 edge", "point 11 20.5",
                          "point 12 20.75",     "point 13 20.5",       "point 12 20.25 edge",
                          "label 0.5 12 20.25 0", "addLine"};
  EXPECT_EQ(b.calls, expected);
}

TEST(ContourTracer, LineEndsAtMissingDataAndRunsFromTheBackwardWalk) {
  // Rows: 0 0 0 / 1 1 x. The line along the middle starts on the left border; its forward
  // walk leaves the grid at once, so the line runs from where the backward walk ended.
  struct Case {
    double corner;
    Calls calls;
  };
  const Case cases[] = {
      {U, {"newLine 0.5 open", "point 1 0.5 edge", "point 0 0.5 edge", "label 0.5 1 0.5 0",
           "addLine"}},
      {1, {"newLine 0.5 open", "point 2 0.5 edge", "point 1 0.5", "point 0 0.5 edge",
           "label 0.5 2 0.5 0", "addLine"}},
  };
  for (const Case& c : cases)
    EXPECT_EQ(contour({0, 0, 0, 1, 1, c.corner}, 3, 2, {0.5}).calls, c.calls) << c.corner;
}

TEST(ContourTracer, LevelEqualToAValueCrossesOnlyAtTheLowerEnd) {
  // Columns 0 and 1: level 0 touches the lower ends and is drawn through the grid points of
  // the first column; level 1 touches only upper ends and draws nothing.
  const RecordingBuilder b = contour({0, 1, 0, 1}, 2, 2, {0, 1});
  const Calls expected = {"newLine 0 open", "point 0 1 edge", "point 0 0 edge", "label 0 0 1 0",
                          "addLine"};
  EXPECT_EQ(b.calls, expected);
}

// Rows 1 0 / 0 1: every side of the one cell is crossed at 0.4, 0.5 and 0.6.
TEST(ContourTracer, SaddleCellTakesTheShorterPairingAndOnATieBottomRight) {
  struct Case {
    double level;
    std::vector<std::vector<std::pair<double, double>>> lines;
  };
  const Case cases[] = {
      // The tie: bottom-right and left-top.
      {0.5, {{{1, 0.5}, {0.5, 0}}, {{0.5, 1}, {0, 0.5}}}},
      // Crossings nearer the high corners: bottom-right and left-top are shorter.
      {0.4, {{{1, 0.4}, {0.6, 0}}, {{0.4, 1}, {0, 0.6}}}},
      // Bottom-left is shorter. The right-top piece is never drawn: sides of the last column
      // and the top row do not start lines, and no walk reaches it.
      {0.6, {{{0, 0.4}, {0.4, 0}}}},
  };
  for (const Case& c : cases) {
    const RecordingBuilder b = contour({1, 0, 0, 1}, 2, 2, {c.level});
    ASSERT_EQ(b.lines.size(), c.lines.size()) << c.level;
    for (size_t n = 0; n < c.lines.size(); ++n) {
      const RecordedLine& line = b.lines[n];
      ASSERT_EQ(line.points.size(), c.lines[n].size()) << c.level;
      EXPECT_FALSE(line.closed);
      for (size_t k = 0; k < line.points.size(); ++k) {
        EXPECT_NEAR(line.points[k].x, c.lines[n][k].first, 1e-12) << c.level << " line " << n;
        EXPECT_NEAR(line.points[k].y, c.lines[n][k].second, 1e-12) << c.level << " line " << n;
      }
    }
  }
}

TEST(ContourTracer, LinesShorterThanATenthOfAMapUnitGetNoLabel) {
  // The level-0 line of the two-column grid is one grid step long: dy map units.
  struct Case {
    double dy;
    size_t labels;
  };
  for (const Case c : {Case{0.1, 1}, Case{0.0999, 0}, Case{0.01, 0}}) {
    const RecordingBuilder b = contour({0, 1, 0, 1}, 2, 2, {0}, false, Frame{0, 0, 1, c.dy});
    ASSERT_EQ(b.lines.size(), 1u);
    EXPECT_EQ(b.lines[0].labels.size(), c.labels) << c.dy;
  }
}

TEST(ContourTracer, ASinglePointLineIsClosedAndUnlabelled) {
  // The bottom side is crossed, but the cell above has missing corners: nothing to follow.
  for (const bool spline : {false, true}) {
    const Calls expected = {"newLine 0.5 closed", "point 0.5 0 edge", "addLine"};
    EXPECT_EQ(contour({0, 1, U, U}, 2, 2, {0.5}, spline).calls, expected) << spline;
  }
}

TEST(ContourTracer, ARingLongerThanTheSmallGridsBufferIsCutOpen) {
  // A two-point plateau: its ring has six crossings. A 4 x 3 grid's buffer holds the walk
  // only up to the sixth, so the ring stays open; one more column leaves room to close it.
  const RecordingBuilder narrow = contour({0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0}, 4, 3, {0.5});
  const Calls open = {"newLine 0.5 open", "point 1 0.5 edge", "point 0.5 1", "point 1 1.5",
                      "point 2 1.5",      "point 2.5 1",      "point 2 0.5 edge",
                      "label 0.5 1 0.5 0", "addLine"};
  EXPECT_EQ(narrow.calls, open);

  const RecordingBuilder wide =
      contour({0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0}, 5, 3, {0.5});
  ASSERT_EQ(wide.lines.size(), 1u);
  EXPECT_TRUE(wide.lines[0].closed);
  EXPECT_EQ(wide.lines[0].points.size(), 7u);
}

TEST(ContourTracer, LongLineCarriesALabelAfterEveryFortyMapUnits) {
  // A straight line along a 100-column grid, walked from right to left one map unit per
  // point: labels at the first point, then where the distance since the last one first
  // exceeds 40 (41 units on, not at exactly 40), facing the way the line runs.
  std::vector<double> grid(200, 0.0);
  for (int i = 100; i < 200; ++i) grid[i] = 1.0;
  const RecordingBuilder b = contour(grid, 100, 2, {0.5});
  ASSERT_EQ(b.lines.size(), 1u);
  const RecordedLine& line = b.lines[0];
  EXPECT_EQ(line.points.size(), 100u);
  ASSERT_EQ(line.labels.size(), 3u);
  const double xs[] = {99, 58, 17}, angles[] = {0, 180, 180};
  for (int n = 0; n < 3; ++n) {
    EXPECT_EQ(line.labels[n].x, xs[n]);
    EXPECT_EQ(line.labels[n].y, 0.5);
    EXPECT_DOUBLE_EQ(line.labels[n].angle, angles[n]);
  }
}

// ---- properties on a larger field ----

// A smooth field of hills and hollows with a few missing patches.
std::vector<double> hills(int nx, int ny, bool holes) {
  std::vector<double> g(static_cast<size_t>(nx) * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) {
      double v = std::sin(0.31 * i + 0.4) * std::cos(0.23 * j + 0.1) + 0.02 * i - 0.01 * j;
      if (holes && ((i - 12) * (i - 12) + (j - 9) * (j - 9) < 6 || (i == 30 && j > 20)))
        v = U;
      g[static_cast<size_t>(j) * nx + i] = v;
    }
  return g;
}

// Value of the grid interpolated linearly along the cell side that (gx, gy) lies on (grid
// units from 1); NaN when the point is on no side.
double value_on_side(const std::vector<double>& g, int nx, double gx, double gy) {
  auto p = [&](int i, int j) { return g[static_cast<size_t>(j - 1) * nx + (i - 1)]; };
  if (gy == std::floor(gy)) {
    const int i = static_cast<int>(std::floor(gx)), j = static_cast<int>(gy);
    if (gx == i) return p(i, j);
    return p(i, j) + (gx - i) * (p(i + 1, j) - p(i, j));
  }
  if (gx == std::floor(gx)) {
    const int i = static_cast<int>(gx), j = static_cast<int>(std::floor(gy));
    return p(i, j) + (gy - j) * (p(i, j + 1) - p(i, j));
  }
  return std::nan("");
}

TEST(ContourTracerProperties, EveryPointLiesOnItsLevelAndEveryCrossingIsUsedOnce) {
  const int nx = 41, ny = 33;
  const std::vector<double> g = hills(nx, ny, true);
  const std::vector<double> levels = {-0.73, -0.31, 0.017, 0.29, 0.61};
  const RecordingBuilder b = contour(g, nx, ny, levels, false, Frame{1, 1, 1, 1});
  ASSERT_GT(b.lines.size(), 10u);
  std::set<std::pair<double, double>> seen;
  size_t rings = 0;
  for (const RecordedLine& line : b.lines) {
    rings += line.closed;
    ASSERT_FALSE(line.points.empty());
    EXPECT_EQ(line.finished, 1);
    const RecordedPoint& first = line.points.front();
    const RecordedPoint& last = line.points.back();
    EXPECT_EQ(line.closed, first.x == last.x && first.y == last.y);
    for (size_t k = 0; k < line.points.size(); ++k) {
      const RecordedPoint& pt = line.points[k];
      EXPECT_EQ(pt.edge, k == 0 || k + 1 == line.points.size());
      const double v = value_on_side(g, nx, pt.x, pt.y);
      ASSERT_FALSE(std::isnan(v)) << "point off the cell sides: " << pt.x << "," << pt.y;
      EXPECT_NEAR(v, line.level, 1e-12) << pt.x << "," << pt.y;
      // A closed ring repeats its first point; no other crossing is drawn twice.
      if (line.closed && k + 1 == line.points.size()) continue;
      EXPECT_TRUE(seen.insert({pt.x, pt.y}).second) << "crossing drawn twice: " << pt.x << ","
                                                    << pt.y;
    }
  }
  // The field has both rings and lines cut by the border or the missing patches.
  EXPECT_GT(rings, 0u);
  EXPECT_LT(rings, b.lines.size());
}

TEST(ContourTracerProperties, SplineKeepsTheLinesTheirEndsAndTheirClosure) {
  const int nx = 41, ny = 33;
  const std::vector<double> g = hills(nx, ny, true);
  const std::vector<double> levels = {-0.31, 0.29};
  const RecordingBuilder plain = contour(g, nx, ny, levels, false, Frame{5, -3, 0.5, 0.5});
  const RecordingBuilder smooth = contour(g, nx, ny, levels, true, Frame{5, -3, 0.5, 0.5});
  ASSERT_EQ(plain.lines.size(), smooth.lines.size());
  size_t grown = 0;
  for (size_t n = 0; n < plain.lines.size(); ++n) {
    const RecordedLine& a = plain.lines[n];
    const RecordedLine& s = smooth.lines[n];
    EXPECT_EQ(a.level, s.level);
    EXPECT_EQ(a.closed, s.closed);
    EXPECT_EQ(a.points.front().x, s.points.front().x);
    EXPECT_EQ(a.points.front().y, s.points.front().y);
    EXPECT_EQ(a.points.back().x, s.points.back().x);
    EXPECT_EQ(a.points.back().y, s.points.back().y);
    if (s.points.size() > a.points.size()) ++grown;
  }
  EXPECT_GT(grown, plain.lines.size() / 2);
}

TEST(ContourTracer, SplineLongerThanTheBufferWarnsOnceAndTheBufferStaysGrown) {
  // The peak's ring has four steps of 0.71 grid units; sampled every 0.25 it needs 13 points,
  // more than the 3 x 3 grid's buffer of 25 doubles.
  std::vector<double> g = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  RecordingBuilder builder;
  isoline_analysis_gx tracer(&builder);
  testing::internal::CaptureStderr();
  tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, std::vector<double>{0.5}, U);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "spline fit yields too many points.\n");
  testing::internal::CaptureStderr();
  tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, std::vector<double>{0.5}, U);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  ASSERT_EQ(builder.lines.size(), 2u);
  for (const RecordedLine& line : builder.lines) {
    EXPECT_TRUE(line.closed);
    EXPECT_EQ(line.points.size(), 13u);
    EXPECT_EQ(line.points.front().x, 1.0);
    EXPECT_EQ(line.points.front().y, 0.5);
  }
}

TEST(ContourTracer, ResultTellsWhetherTheBuilderHoldsALayer) {
  std::vector<double> g = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  EXPECT_FALSE(tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, std::vector<double>{2.0}, U));
  const double levels[] = {0.5};
  EXPECT_TRUE(tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, levels, 1, U));
  ASSERT_NE(builder.getLayer(), nullptr);
  EXPECT_EQ(builder.getLayer()->line_count, 1);
  builder.releaseContour();
}

// ---- bad input ----

TEST(ContourTracerBadInput, DrawsNothingAndReadsOnlyTheGrid) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  struct Case {
    const char* name;
    std::vector<double> grid;  // exactly the values the sizes promise
    int nx, ny;
    std::vector<double> levels;
  };
  const Case cases[] = {
      {"one column", {0, 1, 2, 3}, 1, 4, {0.5, 1.5}},
      {"one row", {0, 1, 2, 3}, 4, 1, {0.5, 1.5}},
      {"no columns", {0}, 0, 3, {0.5}},
      {"negative rows", {0}, 3, -2, {0.5}},
      {"all missing", std::vector<double>(12, U), 4, 3, {0.5, U}},
      {"all NaN", std::vector<double>(12, nan), 4, 3, {0.5}},
      {"NaN peak", {0, 0, 0, 0, nan, 0, 0, 0, 0}, 3, 3, {0.5}},
      {"infinite peak", {0, 0, 0, 0, inf, 0, 0, 0, 0}, 3, 3, {0.5}},
      {"NaN level", {0, 0, 0, 0, 1, 0, 0, 0, 0}, 3, 3, {nan}},
      {"no levels", {0, 0, 0, 0, 1, 0, 0, 0, 0}, 3, 3, {}},
  };
  for (const Case& c : cases) {
    std::vector<double> g = c.grid;
    RecordingBuilder b;
    isoline_analysis_gx tracer(&b);
    EXPECT_FALSE(tracer.create_isoline(g.data(), c.nx, c.ny, 0, 0, 1, 1, c.levels, U)) << c.name;
    EXPECT_TRUE(b.calls.empty()) << c.name;
  }
}

TEST(ContourTracerBadInput, MissingGridLevelsOrBuilderFailQuietly) {
  std::vector<double> g = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  const double levels[] = {0.5};
  RecordingBuilder b;
  isoline_analysis_gx tracer(&b);
  EXPECT_FALSE(tracer.create_isoline(nullptr, 3, 3, 0, 0, 1, 1, levels, 1, U));
  EXPECT_FALSE(tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, levels, -1, U));
  EXPECT_FALSE(tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, nullptr, 1, U));
  EXPECT_TRUE(b.calls.empty());

  isoline_analysis_gx orphan(nullptr);
  EXPECT_FALSE(orphan.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, levels, 1, U));
}

TEST(ContourTracerBadInput, StorageBeyondReachSkipsTheLevelWithTheMessage) {
  // Sizes whose side marks cannot be allocated: every level fails before the grid is read.
  std::vector<double> g = {0, 1, 0, 1};
  RecordingBuilder b;
  isoline_analysis_gx tracer(&b);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(tracer.create_isoline(g.data(), INT_MAX, INT_MAX, 0, 0, 1, 1,
                                     std::vector<double>{0.5, 0.7}, U));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error in GXCLEV: Unable to allocate storage \n"
            "Error in GXCLEV: Unable to allocate storage \n");
  EXPECT_TRUE(b.calls.empty());
  // The tracer recovers for a grid it can hold.
  EXPECT_TRUE(tracer.create_isoline(g.data(), 2, 2, 0, 0, 1, 1, std::vector<double>{0.0}, U));
}

}  // namespace
