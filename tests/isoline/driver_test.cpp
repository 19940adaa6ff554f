#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <tervik/isoline.h>

#include "platform/numerics.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// A grid record of f(i, j) at columns first_lon + i*lon_step and rows first_lat + j*lat_step.
template <class F>
tervik_data4 make_grid(int nx, int ny, double first_lon, double first_lat, double lon_step,
                       double lat_step, F f) {
  tervik_data4 g;
  g.nx = nx;
  g.ny = ny;
  g.first_lon = first_lon;
  g.first_lat = first_lat;
  g.lon_step = lon_step;
  g.lat_step = lat_step;
  g.last_lon = first_lon + (nx - 1) * lon_step;
  g.last_lat = first_lat + (ny - 1) * lat_step;
  double* v = static_cast<double*>(std::malloc(sizeof(double) * nx * ny));
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) v[j * nx + i] = f(i, j);
  g.set_gridPtr(v);
  return g;
}

// A hill over 70E..100E, 10N..40N every degree.
tervik_data4 hill() {
  return make_grid(31, 31, 70, 10, 1, 1, [](int i, int j) {
    return 20 * std::exp(-((i - 14.0) * (i - 14.0) + (j - 17.0) * (j - 17.0)) / 60.0) +
           0.1 * i;
  });
}

isoline_analysis_param whole_area(const tervik_data4& g) {
  isoline_analysis_param p;
  p.area_set = true;
  p.first_lon = g.first_lon;
  p.last_lon = g.last_lon;
  p.first_lat = g.first_lat;
  p.last_lat = g.last_lat;
  p.lon_step = g.lon_step;
  p.lat_step = g.lat_step;
  p.use_interval = true;
  p.level_start = 2;
  p.level_interval = 4;
  p.level_end = 18;
  return p;
}

std::set<double> line_levels(const tag_isoline_layer& out) {
  std::set<double> levels;
  for (const tag_isoline& line : out.lines) levels.insert(line.level);
  return levels;
}

// The lines the contour tracer draws for a plain array, for comparison.
tag_isoline_layer trace(std::vector<double> grid, int nx, int ny, double x0, double y0,
                        double dx, double dy, const std::vector<double>& levels) {
  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.enable_spline(false);
  tag_isoline_layer copy{};
  if (tracer.create_isoline(grid.data(), nx, ny, x0, y0, dx, dy, levels, tervik_data4::undef))
    copy = *builder.getLayer();
  builder.releaseContour();
  return copy;
}

bool same_lines(const tag_isoline_layer& a, const tag_isoline_layer& b) {
  if (a.lines.size() != b.lines.size()) return false;
  for (size_t k = 0; k < a.lines.size(); ++k) {
    const auto &p = a.lines[k].points, &q = b.lines[k].points;
    if (a.lines[k].level != b.lines[k].level || p.size() != q.size()) return false;
    for (size_t m = 0; m < p.size(); ++m)
      if (p[m].x != q[m].x || p[m].y != q[m].y) return false;
  }
  return true;
}

double shaded_area(const tag_isoline_layer& out) {
  double total = 0;
  for (const tag_shaded_isoline& r : out.polygons) {
    const auto& p = r.points;
    for (size_t k = 0; k + 1 < p.size(); ++k)
      total += ((p[k].x - p[0].x) * (p[k + 1].y - p[0].y) -
                (p[k + 1].x - p[0].x) * (p[k].y - p[0].y)) / 2;
  }
  return total;
}

TEST(IsolineAnalysis, ContoursTheWholeGridAndReplacesTheOutput) {
  const tervik_data4 g = hill();
  isoline_analysis_param p = whole_area(g);
  tag_isoline_layer out{};
  out.line_count = 1;
  out.lines.resize(1);
  out.lines[0].level = -77;
  out.polygon_count = 1;
  out.polygons.resize(1);
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_EQ(line_levels(out), (std::set<double>{2, 6, 10, 14, 18}));
  EXPECT_EQ(out.line_count, static_cast<int32_t>(out.lines.size()));
  EXPECT_EQ(out.polygon_count, 0);
  EXPECT_TRUE(out.polygons.empty());
  const std::vector<double> levels = {2, 6, 10, 14, 18};
  EXPECT_TRUE(same_lines(out, trace(std::vector<double>(g.data(), g.data() + 31 * 31), 31, 31,
                                    70, 10, 1, 1, levels)));
}

// Levels: count = trunc((end - start)/interval) + 1, each level the previous plus the
// interval, and nothing at all when the count is 0 or less.
TEST(IsolineAnalysis, LevelsFromAnIntervalOrAList) {
  const tervik_data4 ramp = make_grid(12, 3, 0, 0, 1, 1, [](int i, int) { return i * 0.1; });
  struct LevelCase {
    double start, interval, end;
    int count;
  };
  const LevelCase cases[] = {
      {0.25, 0.2, 0.9, 4},   // 3.25 steps: 4 levels
      {0.75, -0.2, 0.1, 4},  // downwards
      {0.35, 0.2, 0.2, 1},   // end below start by less than a step: one level
      {0, 0.1, 0.85, 9},
  };
  for (const LevelCase& c : cases) {
    isoline_analysis_param p = whole_area(ramp);
    p.level_start = c.start;
    p.level_interval = c.interval;
    p.level_end = c.end;
    std::set<double> expected;
    double level = c.start;
    for (int k = 0; k < c.count; ++k, level += c.interval) expected.insert(level);
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, p)) << c.start << " " << c.interval;
    EXPECT_EQ(line_levels(out), expected) << c.start << " " << c.interval;
  }
  {
    // added up, not multiplied: the ninth level is 0.7999999999999999
    isoline_analysis_param p = whole_area(ramp);
    p.level_start = 0;
    p.level_interval = 0.1;
    p.level_end = 0.85;
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, p));
    EXPECT_EQ(line_levels(out).count(0.7999999999999999), 1u);
    EXPECT_EQ(line_levels(out).count(0.8), 0u);
  }
  isoline_analysis_param p = whole_area(ramp);
  p.use_interval = false;
  p.levels = {0.55, 5, 0.15};  // 5 lies above the field
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(ramp, out, p));
  ASSERT_EQ(out.lines.size(), 2u);
  EXPECT_EQ(out.lines[0].level, 0.55);  // list order
  EXPECT_EQ(out.lines[1].level, 0.15);
}

TEST(IsolineAnalysis, NoLevelsFailsSilentlyAndLeavesTheOutput) {
  const tervik_data4 g = hill();
  struct NoLevels {
    const char* name;
    double start, interval, end;
  };
  const NoLevels cases[] = {{"end a step below start", 10, 4, 6}, {"zero interval", 2, 0, 18},
                            {"zero over zero", 2, 0, 2},          {"NaN interval", 2, NAN, 18},
                            {"billions of levels", 0, 1e-9, 18}};
  for (const NoLevels& c : cases) {
    isoline_analysis_param p = whole_area(g);
    p.level_start = c.start;
    p.level_interval = c.interval;
    p.level_end = c.end;
    tag_isoline_layer out{};
    out.line_count = 3;
    CaptureStderr();
    EXPECT_FALSE(do_isoline_analysis(g, out, p)) << c.name;
    EXPECT_EQ(GetCapturedStderr(), "") << c.name;
    EXPECT_EQ(out.line_count, 3) << c.name;
  }
  isoline_analysis_param p = whole_area(g);
  p.use_interval = false;
  tag_isoline_layer out{};
  EXPECT_FALSE(do_isoline_analysis(g, out, p));  // an empty list
}

TEST(IsolineAnalysis, FailuresToContourAreReported) {
  const tervik_data4 g = hill();
  struct Failing {
    const char* name;
    tervik_data4 grid;
    isoline_analysis_param param;
  };
  isoline_analysis_param west = whole_area(g), coarse = whole_area(g), fine = whole_area(g);
  west.first_lon = 69.99;
  coarse.last_lat = 40.5;
  fine.lon_step = 0.5;
  const tervik_data4 missing = make_grid(5, 5, 0, 0, 1, 1, [](int, int) { return 9999.0; });
  const tervik_data4 nan = make_grid(5, 5, 0, 0, 1, 1, [](int, int) { return NAN; });
  const tervik_data4 column = make_grid(1, 5, 0, 0, 1, 1, [](int, int j) { return j; });
  const tervik_data4 no_values;
  isoline_analysis_param levels_1_to_3 = whole_area(missing);
  levels_1_to_3.level_start = 1;
  levels_1_to_3.level_interval = 1;
  levels_1_to_3.level_end = 3;
  const Failing cases[] = {
      {"area west of the grid", g, west},
      {"area north of the grid", g, coarse},
      {"area finer than the grid", g, fine},
      {"no isoline crosses", g, [&] {
         isoline_analysis_param p = whole_area(g);
         p.level_start = p.level_end = 500;
         return p;
       }()},
      {"all missing", missing, levels_1_to_3},
      {"all NaN", nan, levels_1_to_3},
      {"one column", column, whole_area(column)},
      {"no values", no_values, levels_1_to_3},
  };
  for (const Failing& c : cases) {
    tag_isoline_layer out{};
    out.polygon_count = 9;
    CaptureStderr();
    EXPECT_FALSE(do_isoline_analysis(c.grid, out, c.param)) << c.name;
    EXPECT_EQ(GetCapturedStderr(), "Isoline analysis fails.\n") << c.name;
    EXPECT_EQ(out.polygon_count, 9) << c.name;
  }
}

// Within 0.001 in all six values the area is the grid (its own geometry is used); with the
// override set, the whole field is drawn at the parameters' geometry, wherever that lies.
TEST(IsolineAnalysis, GeometryOfTheWholeGrid) {
  const tervik_data4 g = hill();
  const std::vector<double> field(g.data(), g.data() + 31 * 31);
  const std::vector<double> levels = {2, 6, 10, 14, 18};
  isoline_analysis_param p = whole_area(g);
  p.first_lon += 0.0009;
  p.last_lat -= 0.0009;
  p.lat_step += 0.0009;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_TRUE(same_lines(out, trace(field, 31, 31, 70, 10, 1, 1, levels)));

  tervik_data4 shifted = g;
  shifted.geometry_override = 1;
  p = whole_area(g);
  p.first_lon = -170;
  p.first_lat = 80;
  p.lon_step = 0.25;
  p.lat_step = -0.5;
  ASSERT_TRUE(do_isoline_analysis(shifted, out, p));
  EXPECT_TRUE(same_lines(out, trace(field, 31, 31, -170, 80, 0.25, -0.5, levels)));
}

// A cut-out takes every cs-th column from c0 and every rs-th row from r0 and draws them at
// the area's geometry.
TEST(IsolineAnalysis, CutsOutAnArea) {
  const tervik_data4 g = hill();
  isoline_analysis_param p = whole_area(g);
  p.first_lon = 74;
  p.last_lon = 96;
  p.lon_step = 2;
  p.first_lat = 13;
  p.last_lat = 37;
  p.lat_step = 3;
  std::vector<double> area;
  for (int jj = 0; jj < 9; ++jj)  // |37 - 13|/3 + 1 rows from row 3, every third
    for (int ii = 0; ii < 12; ++ii) area.push_back(g.data()[(3 + 3 * jj) * 31 + 4 + 2 * ii]);
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_TRUE(same_lines(out, trace(area, 12, 9, 74, 13, 2, 3, {2, 6, 10, 14, 18})));
  for (const tag_isoline& line : out.lines) {
    for (const tag_isoline_point& pt : line.points) {
      EXPECT_GE(pt.x, 74);
      EXPECT_LE(pt.x, 96);
    }
  }
}

// Rows running north to south flip the inside test for latitudes. A cut-out of such a grid
// steps south (negative lat_step), so its row count |last - first|/lat_step + 1 is at most
// one: it contours nothing, reading nothing outside the grid.
TEST(IsolineAnalysis, NorthToSouthRows) {
  const tervik_data4 g = make_grid(31, 31, 70, 40, 1, -1, [](int i, int j) {
    return 20 * std::exp(-((i - 14.0) * (i - 14.0) + (j - 13.0) * (j - 13.0)) / 60.0);
  });
  isoline_analysis_param p = whole_area(g);
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_FALSE(out.lines.empty());

  p.first_lat = 35;
  p.last_lat = 15;
  p.lat_step = -1;
  p.first_lon = 75;
  CaptureStderr();
  EXPECT_FALSE(do_isoline_analysis(g, out, p));
  EXPECT_EQ(GetCapturedStderr(), "Isoline analysis fails.\n");
}

TEST(IsolineAnalysis, SmoothsACopyOfTheField) {
  std::mt19937 gen(4);
  std::uniform_real_distribution<double> noise(-1, 1);
  const tervik_data4 g = make_grid(40, 30, 0, 0, 1, 1, [&](int i, int) { return 0.2 * i + noise(gen); });
  const std::vector<double> original(g.data(), g.data() + 1200);
  std::vector<double> boxed = original;
  const double third[] = {1.0 / 3, 1.0 / 3};
  ASSERT_EQ(convolve(boxed.data(), third, 1, 30, 40, 0, 30, 0, 40), 0);
  const std::vector<double> levels = {2, 4, 6};

  size_t points[4] = {};
  for (int smoothing = 0; smoothing <= 3; ++smoothing) {
    isoline_analysis_param p = whole_area(g);
    p.level_start = 2;
    p.level_interval = 2;
    p.level_end = 6;
    p.smoothing = smoothing;
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(g, out, p)) << smoothing;
    for (const tag_isoline& line : out.lines) points[smoothing] += line.points.size();
    if (smoothing == 0) {
      EXPECT_TRUE(same_lines(out, trace(original, 40, 30, 0, 0, 1, 1, levels)));
    } else if (smoothing == 1) {
      EXPECT_TRUE(same_lines(out, trace(boxed, 40, 30, 0, 0, 1, 1, levels)));
    }
  }
  // wider kernels leave smoother, shorter lines through the noise
  EXPECT_LT(points[1], points[0]);
  EXPECT_LT(points[2], points[1]);
  EXPECT_LT(points[3], points[1]);
  EXPECT_TRUE(std::equal(original.begin(), original.end(), g.data()));  // record untouched
}

// Shading adds bands over the whole defined area; colours count the levels in the order of
// the shading: upwards for a positive interval, downwards otherwise.
TEST(IsolineAnalysis, ShadesBandsInTheOrderOfTheLevels) {
  const tervik_data4 ramp = make_grid(11, 3, 0, 0, 1, 1, [](int i, int) { return i; });
  struct ShadeCase {
    bool use_interval;
    double start, interval, end;
    std::vector<double> list;
    int colour_of_top_band;
  };
  const ShadeCase cases[] = {
      {true, 2, 3, 8, {}, 2},          // levels 2 5 8 upwards: top band above 8 has colour 2
      {true, 8, -3, 2, {}, -1},        // downwards: the band above the highest is -1
      {false, 0, 0, 0, {2, 5, 8}, -1},  // a list is shaded high to low
  };
  for (const ShadeCase& c : cases) {
    isoline_analysis_param p = whole_area(ramp);
    p.use_interval = c.use_interval;
    p.level_start = c.start;
    p.level_interval = c.interval;
    p.level_end = c.end;
    p.levels = c.list;
    p.shade = true;
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, p));
    EXPECT_EQ(out.polygon_count, static_cast<int32_t>(out.polygons.size()));
    ASSERT_EQ(out.polygons.size(), 4u);
    EXPECT_NEAR(shaded_area(out), 20, 1e-12);
    int top = -2;
    for (const tag_shaded_isoline& r : out.polygons)
      if (r.points.front().x >= 8 && r.points.front().y >= 0) top = r.first;
    EXPECT_EQ(top, c.colour_of_top_band) << c.interval;
  }
}

TEST(IsolineAnalysis, ShadedBandsTileASmoothedCutOut) {
  const tervik_data4 g = hill();
  isoline_analysis_param p = whole_area(g);
  p.first_lon = 72;
  p.last_lon = 98;
  p.first_lat = 12;
  p.last_lat = 36;
  p.lon_step = p.lat_step = 2;
  p.shade = true;
  p.spline = true;
  p.shade_spline = true;
  p.smoothing = 3;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_FALSE(out.lines.empty());
  EXPECT_NEAR(shaded_area(out), 26 * 24, 1e-9 * 26 * 24);
  for (const tag_shaded_isoline& r : out.polygons) EXPECT_GE(r.first, -1);
}

// Millions of levels, nearly all outside the field, cost little.
TEST(IsolineAnalysis, MillionsOfListedLevels) {
  const tervik_data4 g = hill();
  isoline_analysis_param p = whole_area(g);
  p.use_interval = false;
  for (int k = 0; k < 2000000; ++k) p.levels.push_back(-1e6 + k);
  p.shade = true;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_EQ(line_levels(out).size(), 21u);  // the integers 1..21 that cross the hill
  EXPECT_NEAR(shaded_area(out), 900, 1e-9 * 900);
}

}  // namespace
