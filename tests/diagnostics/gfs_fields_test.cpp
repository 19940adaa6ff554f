// Vorticity of a real analysis: the 500 hPa wind and height of a GFS grid over North
// America (101 x 46 points of 1 degree, north row first).

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

#include "support/paths.h"

namespace {

struct TextGrid {
  int nx = 0, ny = 0;
  double lon0 = 0, dlon = 0, lat0 = 0, dlat = 0;
  std::vector<double> values;
};

// The extract's layout: '#' comment lines, one "key value" geometry line, nx*ny values.
TextGrid read_text_grid(const std::string& path) {
  std::ifstream in(path);
  std::string key;
  while (in >> std::ws && in.peek() == '#') std::getline(in, key);
  TextGrid g;
  in >> key >> g.nx >> key >> g.ny >> key >> g.lon0 >> key >> g.dlon >> key >> g.lat0 >> key >>
      g.dlat;
  g.values.resize(in ? static_cast<std::size_t>(g.nx) * g.ny : 0);
  for (double& v : g.values) in >> v;
  if (!in) g.values.clear();
  return g;
}

TEST(GfsAnalysis, VorticityFollowsTheCurvatureOfTheHeightField) {
  TERVIK_REQUIRE_SHARED_DATA(u_path, "grids/derived_text/GFS_test_ugrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(v_path, "grids/derived_text/GFS_test_vgrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(z_path, "grids/derived_text/GFS_test_hgt_500hPa.txt");
  const TextGrid u = read_text_grid(u_path), v = read_text_grid(v_path);
  const TextGrid z = read_text_grid(z_path);
  const int nx = u.nx, ny = u.ny;
  ASSERT_TRUE(!u.values.empty() && v.values.size() == u.values.size() && z.nx == nx);
  std::vector<double> vor(u.values.size());
  double lo, hi;
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.values.data(), v.values.data(), nx, ny,
                              u.lat0, u.dlat, u.lon0, u.dlon, 1e5), 0);
  EXPECT_TRUE(lo > -50.0 && hi < 50.0) << lo << " " << hi;  // a few 1e-4 per second
  // Geostrophic balance: troughs, where the height is low against its neighbours (positive
  // Laplacian), turn cyclonically. Compare the signs away from the borders.
  int agree = 0, strong = 0;
  for (int j = 2; j < ny - 2; ++j) {
    const double cos2 = std::pow(std::cos((z.lat0 + j * z.dlat) * M_PI / 180.0), 2);
    for (int i = 2; i < nx - 2; ++i) {
      const auto h = [&](int di, int dj) { return z.values[(j + dj) * nx + i + di]; };
      const double lap =
          (h(1, 0) + h(-1, 0) - 2 * h(0, 0)) / cos2 + h(0, 1) + h(0, -1) - 2 * h(0, 0);
      if (std::fabs(lap) < 20.0) continue;
      ++strong;
      agree += (lap > 0) == (vor[j * nx + i] > 0);
    }
  }
  ASSERT_GT(strong, 100);
  EXPECT_GT(agree, 0.8 * strong) << agree << " of " << strong;
}

}  // namespace
