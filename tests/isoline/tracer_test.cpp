#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tervik/isoline.h>

namespace {

const double U = 9999.0;  // missing value
using Calls = std::vector<std::string>;

// Shortest text that reads back as the same double ("12", "20.25", "0.1").
std::string num(double v) {
  char text[40];
  return std::string(text, std::to_chars(text, text + sizeof text, v).ptr);
}

struct RecordedPoint {
  double x, y;
  bool edge;
};

struct RecordedLine {
  double level = 0.0;
  bool closed = false;
  std::vector<RecordedPoint> points;
  int finished = 0;  // addLine calls
};

// A builder that writes down every call, both as text (to compare whole sequences) and as
// lines (to check properties). It reports a layer once a line has begun, as the layer
// builder does.
class RecordingBuilder : public contourBuilder {
 public:
  Calls calls;
  std::vector<RecordedLine> lines;

  void newLine(double level, bool closed) override {
    calls.push_back("newLine " + num(level) + (closed ? " closed" : " open"));
    lines.push_back(RecordedLine{level, closed, {}, 0});
  }
  void addPoint(double x, double y, bool edge) override {
    calls.push_back("point " + num(x) + " " + num(y) + (edge ? " edge" : ""));
    if (!lines.empty()) lines.back().points.push_back({x, y, edge});
  }
  void addLabel(const char* text, double x, double y, double angle) override {
    calls.push_back("label " + std::string(text) + " " + num(x) + " " + num(y) + " " +
                    num(angle));
  }
  void addLine() override {
    calls.push_back("addLine");
    if (!lines.empty()) ++lines.back().finished;
  }
  tag_isoline_layer* getLayer() override { return lines.empty() ? nullptr : &layer_; }

 private:
  tag_isoline_layer layer_{};
};

struct Frame {
  double x0 = 0.0, y0 = 0.0, dx = 1.0, dy = 1.0;
};

// Contours a grid given row by row from the first (southern) row, without spline.
RecordingBuilder contour(std::vector<double> grid, int nx, int ny, std::vector<double> levels,
                         Frame f = {}) {
  RecordingBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.enable_spline(false);
  tracer.create_isoline(grid.data(), nx, ny, f.x0, f.y0, f.dx, f.dy, levels, U);
  return builder;
}

TEST(ContourTracer, HandDerivedCallSequences) {
  struct Case {
    const char* name;
    std::vector<double> grid;
    int nx, ny;
    std::vector<double> levels;
    Frame frame;
    Calls calls;
  };
  const Case cases[] = {
      // The level crosses the four sides around the centre point. The walk starts on the
      // vertical side below it, goes left round to the right and comes back: five points, the
      // first repeated. Grid units map to x = 10 + (gx-1)*2, y = 20 + (gy-1)*0.5.
      {"peak ring", {0, 0, 0, 0, 1, 0, 0, 0, 0}, 3, 3, {0.5}, {10, 20, 2, 0.5},
       {"newLine 0.5 closed", "point 12 20.25 edge", "point 11 20.5", "point 12 20.75",
        "point 13 20.5", "point 12 20.25 edge", "label 0.5 12 20.25 0", "addLine"}},
      // Rows 0 0 0 / 1 1 x: the line starts on the left border, its forward walk leaves the
      // grid at once, so it runs from where the backward walk stopped at the missing corner.
      {"missing end", {0, 0, 0, 1, 1, U}, 3, 2, {0.5}, {},
       {"newLine 0.5 open", "point 1 0.5 edge", "point 0 0.5 edge", "label 0.5 1 0.5 0",
        "addLine"}},
      // Level 0 touches the lower ends of the first column and is drawn through its grid
      // points; level 1 touches only upper ends and draws nothing.
      {"level equals value", {0, 1, 0, 1}, 2, 2, {0, 1}, {},
       {"newLine 0 open", "point 0 1 edge", "point 0 0 edge", "label 0 0 1 0", "addLine"}},
  };
  for (const Case& c : cases)
    EXPECT_EQ(contour(c.grid, c.nx, c.ny, c.levels, c.frame).calls, c.calls) << c.name;
}

// Rows 1 0 / 0 1: every side of the one cell is crossed at 0.4, 0.5 and 0.6.
TEST(ContourTracer, SaddleCellTakesTheShorterPairingAndOnATieBottomRight) {
  struct Case {
    double level;
    std::vector<std::vector<double>> lines;  // x0, y0, x1, y1 of each two-point line
  };
  const Case cases[] = {
      {0.5, {{1, 0.5, 0.5, 0}, {0.5, 1, 0, 0.5}}},  // tie: bottom-right, left-top
      {0.4, {{1, 0.4, 0.6, 0}, {0.4, 1, 0, 0.6}}},  // bottom-right, left-top shorter
      // Bottom-left is shorter. The right-top piece is never drawn: sides of the last column
      // and the top row do not start lines, and no walk reaches it.
      {0.6, {{0, 0.4, 0.4, 0}}},
  };
  for (const Case& c : cases) {
    const RecordingBuilder b = contour({1, 0, 0, 1}, 2, 2, {c.level});
    ASSERT_EQ(b.lines.size(), c.lines.size()) << c.level;
    for (size_t n = 0; n < c.lines.size(); ++n) {
      ASSERT_EQ(b.lines[n].points.size(), 2u) << c.level;
      for (size_t k = 0; k < 4; ++k)
        EXPECT_NEAR(k % 2 ? b.lines[n].points[k / 2].y : b.lines[n].points[k / 2].x,
                    c.lines[n][k], 1e-12) << c.level << " line " << n;
    }
  }
}

// A smooth field of hills and hollows with a few missing patches.
std::vector<double> hills(int nx, int ny) {
  std::vector<double> g(static_cast<size_t>(nx) * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) {
      double v = std::sin(0.31 * i + 0.4) * std::cos(0.23 * j + 0.1) + 0.02 * i - 0.01 * j;
      if ((i - 12) * (i - 12) + (j - 9) * (j - 9) < 6 || (i == 30 && j > 20)) v = U;
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
    return gx == i ? p(i, j) : p(i, j) + (gx - i) * (p(i + 1, j) - p(i, j));
  }
  if (gx == std::floor(gx)) {
    const int i = static_cast<int>(gx), j = static_cast<int>(std::floor(gy));
    return p(i, j) + (gy - j) * (p(i, j + 1) - p(i, j));
  }
  return std::nan("");
}

TEST(ContourTracerProperties, EveryPointLiesOnItsLevelAndEveryCrossingIsUsedOnce) {
  const int nx = 41, ny = 33;
  const std::vector<double> g = hills(nx, ny);
  const RecordingBuilder b =
      contour(g, nx, ny, {-0.73, -0.31, 0.017, 0.29, 0.61}, Frame{1, 1, 1, 1});
  ASSERT_GT(b.lines.size(), 10u);
  std::set<std::pair<double, double>> seen;
  size_t rings = 0;
  for (const RecordedLine& line : b.lines) {
    rings += line.closed;
    ASSERT_FALSE(line.points.empty());
    EXPECT_EQ(line.finished, 1);
    const RecordedPoint &first = line.points.front(), &last = line.points.back();
    EXPECT_EQ(line.closed, first.x == last.x && first.y == last.y);
    for (size_t k = 0; k < line.points.size(); ++k) {
      const RecordedPoint& pt = line.points[k];
      EXPECT_EQ(pt.edge, k == 0 || k + 1 == line.points.size());
      EXPECT_NEAR(value_on_side(g, nx, pt.x, pt.y), line.level, 1e-12) << pt.x << "," << pt.y;
      // A closed ring repeats its first point; no other crossing is drawn twice.
      if (line.closed && k + 1 == line.points.size()) continue;
      EXPECT_TRUE(seen.insert({pt.x, pt.y}).second) << "drawn twice: " << pt.x << "," << pt.y;
    }
  }
  // Both rings and lines cut by the border or the missing patches.
  EXPECT_GT(rings, 0u);
  EXPECT_LT(rings, b.lines.size());
}

TEST(ContourTracerBadInput, DrawsNothingAndReadsOnlyTheGrid) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> peak = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  struct Case {
    const char* name;
    std::vector<double> grid;  // exactly the values the sizes promise
    int nx, ny;
    std::vector<double> levels;
  };
  const Case cases[] = {
      {"one column", {0, 1, 2, 3}, 1, 4, {0.5, 1.5}},
      {"all missing", std::vector<double>(12, U), 4, 3, {0.5, U}},
      {"NaN peak", {0, 0, 0, 0, nan, 0, 0, 0, 0}, 3, 3, {0.5}},
      {"level above the field", peak, 3, 3, {2.0}},
  };
  for (const Case& c : cases) {
    std::vector<double> g = c.grid;
    RecordingBuilder b;
    EXPECT_FALSE(isoline_analysis_gx(&b).create_isoline(g.data(), c.nx, c.ny, 0, 0, 1, 1,
                                                        c.levels, U))
        << c.name;
    EXPECT_TRUE(b.calls.empty()) << c.name;
  }
  std::vector<double> g = peak;
  RecordingBuilder b;
  isoline_analysis_gx tracer(&b);
  EXPECT_FALSE(isoline_analysis_gx(nullptr).create_isoline(g.data(), 3, 3, 0, 0, 1, 1, {0.5}, U));
  // Sizes whose side marks cannot be allocated: every level fails before the grid is read.
  testing::internal::CaptureStdout();
  EXPECT_FALSE(tracer.create_isoline(g.data(), INT_MAX, INT_MAX, 0, 0, 1, 1, {0.5, 0.7}, U));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error in GXCLEV: Unable to allocate storage \n"
            "Error in GXCLEV: Unable to allocate storage \n");
  EXPECT_TRUE(b.calls.empty());
  EXPECT_TRUE(tracer.create_isoline(g.data(), 3, 3, 0, 0, 1, 1, {0.5}, U));  // recovers
}

}  // namespace
