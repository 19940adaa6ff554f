// The diagnostics on a real analysis: the 500 hPa wind and height of a GFS grid over
// North America (101 x 46 points of 1 degree, north row first).

#include <cmath>
#include <fstream>
#include <sstream>
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

// The extract's layout: '#' comment lines, one geometry line, then nx*ny values.
bool read_text_grid(const std::string& path, TextGrid& g) {
  std::ifstream in(path);
  std::string line;
  while (std::getline(in, line) && !line.empty() && line[0] == '#') {
  }
  std::istringstream head(line);
  std::string key;
  head >> key >> g.nx >> key >> g.ny >> key >> g.lon0 >> key >> g.dlon >> key >> g.lat0 >> key >>
      g.dlat;
  if (!head || g.nx < 3 || g.ny < 3) return false;
  g.values.resize(static_cast<std::size_t>(g.nx) * g.ny);
  for (double& v : g.values)
    if (!(in >> v)) return false;
  return true;
}

double correlation(const std::vector<double>& a, const std::vector<double>& b) {
  double ma = 0, mb = 0;
  for (std::size_t k = 0; k < a.size(); ++k) ma += a[k], mb += b[k];
  ma /= a.size();
  mb /= b.size();
  double sab = 0, saa = 0, sbb = 0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    sab += (a[k] - ma) * (b[k] - mb);
    saa += (a[k] - ma) * (a[k] - ma);
    sbb += (b[k] - mb) * (b[k] - mb);
  }
  return sab / std::sqrt(saa * sbb);
}

TEST(GfsAnalysis, VorticityFollowsTheCurvatureOfTheHeightField) {
  TERVIK_REQUIRE_SHARED_DATA(u_path, "grids/derived_text/GFS_test_ugrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(v_path, "grids/derived_text/GFS_test_vgrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(z_path, "grids/derived_text/GFS_test_hgt_500hPa.txt");
  TextGrid u, v, z;
  ASSERT_TRUE(read_text_grid(u_path, u));
  ASSERT_TRUE(read_text_grid(v_path, v));
  ASSERT_TRUE(read_text_grid(z_path, z));
  const int nx = u.nx, ny = u.ny;

  std::vector<double> vor(u.values.size());
  double lo, hi;
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.values.data(), v.values.data(), nx, ny,
                              u.lat0, u.dlat, u.lon0, u.dlon, 1e5), 0);
  // synoptic-scale relative vorticity stays within a few 1e-4 per second
  EXPECT_GT(lo, -50.0);
  EXPECT_LT(hi, 50.0);
  EXPECT_LT(lo, 0.0);
  EXPECT_GT(hi, 0.0);

  // Geostrophic balance: vorticity goes with the Laplacian of the height (troughs, where
  // the height is locally low, turn cyclonically). Compare away from the borders.
  std::vector<double> interior_vor, laplacian;
  for (int j = 2; j < ny - 2; ++j) {
    for (int i = 2; i < nx - 2; ++i) {
      const auto at = [&](int di, int dj) { return z.values[(j + dj) * nx + i + di]; };
      const double coslat = std::cos((z.lat0 + j * z.dlat) * M_PI / 180.0);
      laplacian.push_back((at(1, 0) + at(-1, 0) - 2 * at(0, 0)) / (coslat * coslat) +
                          at(0, 1) + at(0, -1) - 2 * at(0, 0));
      interior_vor.push_back(vor[j * nx + i]);
    }
  }
  EXPECT_GT(correlation(interior_vor, laplacian), 0.6);

  // The deepest interior height of the map lies in a cyclonic trough.
  std::size_t lowest = 0;
  for (std::size_t k = 1; k < laplacian.size(); ++k) {
    const int i = 2 + static_cast<int>(k) % (nx - 4), j = 2 + static_cast<int>(k) / (nx - 4);
    const int i0 = 2 + static_cast<int>(lowest) % (nx - 4), j0 = 2 + static_cast<int>(lowest) / (nx - 4);
    if (z.values[j * nx + i] < z.values[j0 * nx + i0]) lowest = k;
  }
  EXPECT_GT(interior_vor[lowest], 0.0);
}

}  // namespace
