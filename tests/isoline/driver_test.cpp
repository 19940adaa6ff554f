#include <gtest/gtest.h>
#include <tervik/isoline.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "support/paths.h"

namespace {

template <class F>
tervik_data4 make_grid(int nx, int ny, double lon0, double lat0, double dlon, double dlat, F f) {
  tervik_data4 g;
  g.nx = nx, g.ny = ny;
  g.first_lon = lon0, g.first_lat = lat0, g.lon_step = dlon, g.lat_step = dlat;
  g.last_lon = lon0 + (nx - 1) * dlon, g.last_lat = lat0 + (ny - 1) * dlat;
  double* v = static_cast<double*>(std::malloc(sizeof(double) * nx * ny));
  for (int k = 0; k < nx * ny; ++k) v[k] = f(k % nx, k / nx);
  g.set_gridPtr(v);
  return g;
}

// Parameters covering the whole grid with levels start, start + interval, ... up to end.
isoline_analysis_param levels_over(const tervik_data4& g, double start, double interval,
                                   double end) {
  isoline_analysis_param p;
  p.first_lon = g.first_lon, p.last_lon = g.last_lon, p.lon_step = g.lon_step;
  p.first_lat = g.first_lat, p.last_lat = g.last_lat, p.lat_step = g.lat_step;
  p.level_start = start, p.level_interval = interval, p.level_end = end;
  return p;
}

// Levels are added up from the start, one more than the whole intervals from start to end:
// the ninth from 0 by 0.1 is 0.7999999999999999.
TEST(IsolineAnalysis, LevelsAreAddedUpFromTheStart) {
  const tervik_data4 ramp = make_grid(12, 3, 0, 0, 1, 1, [](int i, int) { return i * 0.1; });
  struct Levels {
    double start, interval, end;
    int count;
  };
  const Levels cases[] = {{0.25, 0.2, 0.9, 4}, {0.75, -0.2, 0.1, 4}, {0, 0.1, 0.85, 9}};
  for (const Levels& c : cases) {
    std::set<double> expected, levels;
    double level = c.start;
    for (int k = 0; k < c.count; ++k, level += c.interval) expected.insert(level);
    tag_isoline_layer out{};
    ASSERT_TRUE(do_isoline_analysis(ramp, out, levels_over(ramp, c.start, c.interval, c.end)));
    for (const tag_isoline& line : out.lines) levels.insert(line.level);
    EXPECT_EQ(levels, expected) << c.start << " " << c.interval;
  }
}

TEST(IsolineAnalysis, FailuresLeaveTheOutputUntouched) {
  auto plane = [](int i, int j) { return i + j; };
  const tervik_data4 g = make_grid(31, 31, 70, 10, 1, 1, plane), no_values;
  const tervik_data4 west = make_grid(31, 31, 69.99, 10, 1, 1, plane);
  const tervik_data4 fine = make_grid(61, 31, 70, 10, 0.5, 1, plane);
  const char* fails = "Isoline analysis fails.\n";
  struct Failing {
    const char* name;
    const tervik_data4& grid;
    isoline_analysis_param p;
    const char* message;
  };
  const Failing cases[] = {
      {"end an interval below start", g, levels_over(g, 10, 4, 6), ""},
      {"zero interval", g, levels_over(g, 2, 0, 18), ""},
      {"billions of levels", g, levels_over(g, 0, 1e-9, 18), ""},
      {"area west of the grid", g, levels_over(west, 2, 4, 18), fails},
      {"area finer than the grid", g, levels_over(fine, 2, 4, 18), fails},
      {"no values", no_values, levels_over(g, 1, 1, 3), fails},
  };
  for (const Failing& c : cases) {
    tag_isoline_layer out{};
    out.line_count = 9;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(do_isoline_analysis(c.grid, out, c.p)) << c.name;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.message) << c.name;
    EXPECT_EQ(out.line_count, 9) << c.name;
  }
}

// 500 hPa heights of a GFS analysis (rows north to south): the levels proposed for the
// field, smoothed and splined lines, bands that cover the grid, and the caller's values
// left as they were.
TEST(IsolineAnalysis, RealHeightsOf500hPa) {
  TERVIK_REQUIRE_SHARED_DATA(path, "grids/derived_text/GFS_test_hgt_500hPa.txt");
  std::ifstream in(path);
  std::string key;
  in.ignore(1000, '\n').ignore(1000, '\n');  // two comment lines
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
  double area = 0;
  for (const tag_shaded_isoline& r : out.polygons)
    for (size_t k = 0; k + 1 < r.points.size(); ++k)
      area += (r.points[k].x * r.points[k + 1].y - r.points[k + 1].x * r.points[k].y) / 2;
  EXPECT_NEAR(area, 100 * 45, 1e-9 * 4500);
  EXPECT_TRUE(std::equal(v.begin(), v.end(), g.data()));
}

}  // namespace
