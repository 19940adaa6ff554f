#include <gtest/gtest.h>
#include <tervik/isoline.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "platform/numerics.h"
#include "support/paths.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

template <class F>
tervik_data4 make_grid(int nx, int ny, double lon0, double lat0, double dlon, double dlat, F f) {
  tervik_data4 g;
  g.nx = nx;
  g.ny = ny;
  g.first_lon = lon0;
  g.first_lat = lat0;
  g.lon_step = dlon;
  g.lat_step = dlat;
  g.last_lon = lon0 + (nx - 1) * dlon;
  g.last_lat = lat0 + (ny - 1) * dlat;
  double* v = static_cast<double*>(std::malloc(sizeof(double) * nx * ny));
  for (int k = 0; k < nx * ny; ++k) v[k] = f(k % nx, k / nx);
  g.set_gridPtr(v);
  return g;
}

// A hill over 70E..100E, 10N..40N every degree, rising from 0 to 21.4.
tervik_data4 hill() {
  return make_grid(31, 31, 70, 10, 1, 1, [](int i, int j) {
    return 20 * std::exp(-((i - 14.0) * (i - 14.0) + (j - 17.0) * (j - 17.0)) / 60.0) + 0.1 * i;
  });
}

isoline_analysis_param levels_over(const tervik_data4& g, double start, double interval,
                                   double end) {
  isoline_analysis_param p;
  p.first_lon = g.first_lon;
  p.last_lon = g.last_lon;
  p.first_lat = g.first_lat;
  p.last_lat = g.last_lat;
  p.lon_step = g.lon_step;
  p.lat_step = g.lat_step;
  p.level_start = start;
  p.level_interval = interval;
  p.level_end = end;
  return p;
}

std::set<double> levels_of(const tag_isoline_layer& out) {
  std::set<double> levels;
  for (const tag_isoline& line : out.lines) levels.insert(line.level);
  return levels;
}

// The lines the contour tracer draws for a plain array.
tag_isoline_layer traced(std::vector<double> v, int nx, int ny, double x0, double y0, double dx,
                         double dy, const std::vector<double>& levels) {
  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.enable_spline(false);
  tracer.create_isoline(v.data(), nx, ny, x0, y0, dx, dy, levels, tervik_data4::undef);
  tag_isoline_layer copy = *builder.getLayer();
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
  for (const tag_shaded_isoline& r : out.polygons)
    for (size_t k = 0; k + 1 < r.points.size(); ++k)
      total += (r.points[k].x * r.points[k + 1].y - r.points[k + 1].x * r.points[k].y) / 2;
  return total;
}

TEST(IsolineAnalysis, LevelsAreAddedUpFromTheStartOrListed) {
  const tervik_data4 ramp = make_grid(12, 3, 0, 0, 1, 1, [](int i, int) { return i * 0.1; });
  struct Levels {
    double start, interval, end;
    int count;
  };
  const Levels cases[] = {{0.25, 0.2, 0.9, 4},   // 3.25 intervals: 4 levels
                          {0.75, -0.2, 0.1, 4},  // downwards
                          {0.35, 0.2, 0.2, 1},   // end less than an interval below start
                          {0, 0.1, 0.85, 9}};    // the ninth is 0.7999999999999999
  for (const Levels& c : cases) {
    std::set<double> expected;
    double level = c.start;
    for (int k = 0; k < c.count; ++k, level += c.interval) expected.insert(level);
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, levels_over(ramp, c.start, c.interval, c.end)));
    EXPECT_EQ(levels_of(out), expected) << c.start << " " << c.interval;
  }
  isoline_analysis_param p = levels_over(ramp, 0, 0, 0);
  p.use_interval = false;
  p.levels = {0.55, 5, 0.15};  // 5 lies above the field
  tag_isoline_layer out{};
  out.lines.resize(3);  // replaced
  ASSERT_TRUE(do_isoline_analysis(ramp, out, p));
  ASSERT_EQ(out.line_count, 2);
  ASSERT_EQ(out.lines.size(), 2u);
  EXPECT_EQ(out.lines[0].level, 0.55);
  EXPECT_EQ(out.lines[1].level, 0.15);
}

TEST(IsolineAnalysis, FailuresLeaveTheOutputUntouched) {
  const tervik_data4 g = hill();
  const tervik_data4 missing = make_grid(5, 5, 0, 0, 1, 1, [](int, int) { return 9999.0; });
  const tervik_data4 nan = make_grid(5, 5, 0, 0, 1, 1, [](int, int) { return NAN; });
  const tervik_data4 column = make_grid(1, 5, 0, 0, 1, 1, [](int, int j) { return j; });
  const tervik_data4 south = make_grid(31, 31, 70, 40, 1, -1, [](int i, int j) { return i + j; });
  const tervik_data4 no_values;
  auto area = [&](double lon0, double lon1, double lat0, double lat1, double dlon, double dlat) {
    isoline_analysis_param p = levels_over(g, 2, 4, 18);
    p.first_lon = lon0, p.last_lon = lon1, p.first_lat = lat0, p.last_lat = lat1;
    p.lon_step = dlon, p.lat_step = dlat;
    return p;
  };
  isoline_analysis_param south_cut = levels_over(south, 10, 10, 50);
  south_cut.first_lat = 35;
  south_cut.last_lat = 15;  // rows step south: |15 - 35|/-1 + 1 rows is none
  struct Failing {
    const char* name;
    const tervik_data4& grid;
    isoline_analysis_param p;
    const char* message;
  };
  const char* fails = "Isoline analysis fails.\n";
  const Failing cases[] = {
      {"end an interval below start", g, levels_over(g, 10, 4, 6), ""},
      {"zero interval", g, levels_over(g, 2, 0, 18), ""},
      {"zero over zero", g, levels_over(g, 2, 0, 2), ""},
      {"NaN interval", g, levels_over(g, 2, NAN, 18), ""},
      {"billions of levels", g, levels_over(g, 0, 1e-9, 18), ""},
      {"area west of the grid", g, area(69.99, 100, 10, 40, 1, 1), fails},
      {"area north of the grid", g, area(70, 100, 10, 40.5, 1, 1), fails},
      {"area finer than the grid", g, area(70, 90, 10, 40, 0.5, 1), fails},
      {"cut-out of rows running south", south, south_cut, fails},
      {"no isoline crosses", g, levels_over(g, 500, 1, 500), fails},
      {"all missing", missing, levels_over(missing, 1, 1, 3), fails},
      {"all NaN", nan, levels_over(nan, 1, 1, 3), fails},
      {"one column", column, levels_over(column, 1, 1, 3), fails},
      {"no values", no_values, levels_over(g, 1, 1, 3), fails},
  };
  for (const Failing& c : cases) {
    tag_isoline_layer out{};
    out.line_count = 9;
    CaptureStderr();
    EXPECT_FALSE(do_isoline_analysis(c.grid, out, c.p)) << c.name;
    EXPECT_EQ(GetCapturedStderr(), c.message) << c.name;
    EXPECT_EQ(out.line_count, 9) << c.name;
  }
}

// The whole grid at its own geometry when the area matches within 0.001, at the area's
// geometry when the record overrides; else every cs-th column from c0 and rs-th row from r0.
TEST(IsolineAnalysis, AreaChoice) {
  const tervik_data4 g = hill();
  const std::vector<double> field(g.data(), g.data() + 31 * 31), levels = {2, 6, 10, 14, 18};
  isoline_analysis_param p = levels_over(g, 2, 4, 18);
  p.first_lon += 0.0009;
  p.lat_step -= 0.0009;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_TRUE(same_lines(out, traced(field, 31, 31, 70, 10, 1, 1, levels)));

  tervik_data4 moved = g;
  moved.geometry_override = 1;
  p.first_lon = -170, p.first_lat = 80, p.lon_step = 0.25, p.lat_step = -0.5;
  ASSERT_TRUE(do_isoline_analysis(moved, out, p));
  EXPECT_TRUE(same_lines(out, traced(field, 31, 31, -170, 80, 0.25, -0.5, levels)));

  p = levels_over(g, 2, 4, 18);
  p.first_lon = 74, p.last_lon = 96, p.lon_step = 2;
  p.first_lat = 13, p.last_lat = 37, p.lat_step = 3;
  std::vector<double> cut;
  for (int jj = 0; jj < 9; ++jj)
    for (int ii = 0; ii < 12; ++ii) cut.push_back(field[(3 + 3 * jj) * 31 + 4 + 2 * ii]);
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_TRUE(same_lines(out, traced(cut, 12, 9, 74, 13, 2, 3, levels)));
}

TEST(IsolineAnalysis, SmoothsACopyOfTheField) {
  unsigned seed = 4;
  const tervik_data4 g = make_grid(40, 30, 0, 0, 1, 1, [&](int i, int) {
    seed = seed * 1103515245u + 12345u;
    return 0.2 * i + ((seed >> 16) % 1000) / 500.0 - 1;
  });
  const std::vector<double> field(g.data(), g.data() + 1200), levels = {2, 4, 6};
  std::vector<double> box = field;
  const double third[] = {1.0 / 3, 1.0 / 3};
  ASSERT_EQ(convolve(box.data(), third, 1, 30, 40, 0, 30, 0, 40), 0);
  size_t points[4] = {};
  for (int smoothing = 0; smoothing <= 3; ++smoothing) {
    isoline_analysis_param p = levels_over(g, 2, 2, 6);
    p.smoothing = smoothing;
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(g, out, p));
    for (const tag_isoline& line : out.lines) points[smoothing] += line.points.size();
    if (smoothing < 2) {
      EXPECT_TRUE(same_lines(out, traced(smoothing ? box : field, 40, 30, 0, 0, 1, 1, levels)));
    }
  }
  EXPECT_LT(points[2], points[1]);  // wider kernels: smoother, shorter lines through noise
  EXPECT_LT(points[3], points[0] / 2);
  EXPECT_TRUE(std::equal(field.begin(), field.end(), g.data()));
}

// Bands cover the contoured area; their colours count the levels upwards for a positive
// interval, downwards otherwise (so the band above the top level is -1 or the last colour).
TEST(IsolineAnalysis, ShadesTheBandsInTheOrderOfTheLevels) {
  const tervik_data4 ramp = make_grid(11, 3, 0, 0, 1, 1, [](int i, int) { return i; });
  struct Shade {
    bool use_interval;
    double start, interval, end;
    int top_colour;
  };
  const Shade cases[] = {{true, 2, 3, 8, 2}, {true, 8, -3, 2, -1}, {false, 0, 0, 0, -1}};
  for (const Shade& c : cases) {
    isoline_analysis_param p = levels_over(ramp, c.start, c.interval, c.end);
    p.use_interval = c.use_interval;
    p.levels = {2, 5, 8};
    p.shade = true;
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, p));
    ASSERT_EQ(out.polygon_count, 4);
    EXPECT_NEAR(shaded_area(out), 20, 1e-12);
    EXPECT_EQ(out.polygons.back().first, c.top_colour) << c.interval;
  }
  // smoothed field, smoothed lines and bands, on a cut-out
  const tervik_data4 g = hill();
  isoline_analysis_param p = levels_over(g, 2, 4, 18);
  p.first_lon = 72, p.last_lon = 98, p.first_lat = 12, p.last_lat = 36;
  p.lon_step = p.lat_step = 2;
  p.shade = p.spline = p.shade_spline = true;
  p.smoothing = 3;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_NEAR(shaded_area(out), 26 * 24, 1e-9 * 26 * 24);
}

// A list of millions of levels, nearly all outside the field, costs little.
TEST(IsolineAnalysis, MillionsOfListedLevels) {
  const tervik_data4 g = hill();
  isoline_analysis_param p = levels_over(g, 0, 0, 0);
  p.use_interval = false;
  for (int k = 0; k < 2000000; ++k) p.levels.push_back(-1e6 + k);
  p.shade = true;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  EXPECT_EQ(levels_of(out).size(), 21u);  // 1..21
  EXPECT_NEAR(shaded_area(out), 900, 1e-9 * 900);
}

// 500 hPa heights of a GFS analysis (rows north to south): the levels proposed for the
// field, smoothed and splined lines and bands over the whole grid.
TEST(IsolineAnalysis, RealHeightsOf500hPa) {
  TERVIK_REQUIRE_SHARED_DATA(path, "grids/derived_text/GFS_test_hgt_500hPa.txt");
  std::ifstream in(path);
  std::string line, key;
  std::getline(in, line);
  std::getline(in, line);
  int nx = 0, ny = 0;
  double lon0 = 0, dlon = 0, lat0 = 0, dlat = 0;
  in >> key >> nx >> key >> ny >> key >> lon0 >> key >> dlon >> key >> lat0 >> key >> dlat;
  std::vector<double> v(static_cast<size_t>(nx) * ny);
  for (double& x : v) in >> x;
  ASSERT_TRUE(in && nx == 101 && ny == 46);
  const tervik_data4 g =
      make_grid(nx, ny, lon0, lat0, dlon, dlat, [&](int i, int j) { return v[j * nx + i]; });
  double start, interval, end;
  find_isoline_values(*std::min_element(v.begin(), v.end()), *std::max_element(v.begin(), v.end()),
                      &start, &interval, &end);
  isoline_analysis_param p = levels_over(g, start, interval, end);
  p.shade = p.spline = p.shade_spline = true;
  p.smoothing = 3;
  tag_isoline_layer out{};
  ASSERT_TRUE(do_isoline_analysis(g, out, p));
  for (const tag_isoline& l : out.lines)
    EXPECT_NEAR(std::remainder(l.level - start, interval), 0, 1e-6);
  EXPECT_GE(levels_of(out).size(), 8u);
  EXPECT_NEAR(shaded_area(out), 100 * 45, 1e-9 * 4500);
}

}  // namespace
