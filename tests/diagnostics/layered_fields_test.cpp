// Fields built from several pressure levels: the frontogenesis of a baroclinic zone and
// the interpolation to isentropic and PV surfaces through a stack of levels.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/geo_grid.h"

namespace {

TEST(Frontogenesis, ConfluenceAcrossTheZoneSharpensItAtTheRateOfTheSqueeze) {
  // Colder to the north, no change in time. v = -c y (y northward from the middle row):
  // air converges on the zone and the gradient tightens at the rate |d(theta)/dy| * c.
  const tervik::test::GeoGrid g{7, 6, 50.0, -1.0, 0.0, 1.0};
  const double p = 850.0, c = 2e-5, scale = 1e9;
  const auto t = g.field([](int, int j) { return 4.0 + 1.5 * j; });
  const auto tu = g.field([](int, int j) { return 4.0 + 1.5 * j - 12.0; });
  const auto tl = g.field([](int, int j) { return 4.0 + 1.5 * j + 5.0; });
  auto u = g.field([](int, int) { return 0.0; });
  auto v = g.field([&](int, int j) { return -c * (2.5 - j) * g.dy(); });
  const auto omega = u;
  std::vector<double> out(g.size());
  double lo, hi;
  auto run = [&] {
    return compute_field_frontogen(out.data(), &lo, &hi, t.data(), t.data(), tu.data(),
                                   tl.data(), u.data(), v.data(), omega.data(), p, 700.0, 925.0,
                                   g.nx, g.ny, 3600, g.lat0, g.dlat, g.lon0, g.dlon, scale);
  };
  ASSERT_EQ(run(), 0);
  auto theta_k = [&](int j) { return t2T(theta_se_s(p, t[j * g.nx])); };
  for (int j = 1; j < g.ny - 1; ++j) {
    const double rate = std::fabs(theta_k(j - 1) - theta_k(j + 1)) / (2 * g.dy()) * c * scale;
    for (int i = 0; i < g.nx; ++i) EXPECT_NEAR(out[j * g.nx + i], rate, 1e-9 * rate) << i << j;
  }
  for (auto& x : v) x = -x;  // diffluent
  ASSERT_EQ(run(), 0);
  EXPECT_LT(hi, 0.0);
  for (auto& x : v) x = -4.0;
  for (auto& x : u) x = 12.0;
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(out, std::vector<double>(g.size(), 0.0));
}

TEST(SurfaceInterpolation, FindsTheFirstCrossingBelowTheTarget) {
  // Three levels from the top down (300, 500, 850 hPa), four columns. The key falls with
  // depth in columns 0 and 3; column 1 starts below the target, column 2 never reaches it.
  const double level_p[] = {300.0, 500.0, 850.0};
  const double key0[] = {340, 305, 350, 330}, key1[] = {320, 290, 345, 300},
               key2[] = {300, 280, 341, 290};
  const double val0[] = {4, 1, 1, 8}, val1[] = {2, 1, 1, 2}, val2[] = {1, 1, 1, 0.5};
  const double* keys[] = {key0, key1, key2};
  const double* vals[] = {val0, val1, val2};
  const double fill = -999.0;
  // column 0: halfway from 500 to 850 hPa, the value halfway between 2 and 1
  // column 3: two thirds of the way from 300 to 500 hPa, 8 + (2 - 8) * 2 / 3
  const std::vector<double> want = {1.5, fill, fill, 4.0};
  std::vector<double> out(4), swapped(4);
  double lo, hi;
  ASSERT_EQ(compute_field_isentropic_pv(out.data(), &lo, &hi, vals, keys, level_p, 310.0, fill,
                                        3, 4, 1), 0);
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(out[k], want[k], 1e-12) << k;
  EXPECT_NEAR(lo, 1.5, 1e-12);  // filled points stay out of the range
  EXPECT_NEAR(hi, 4.0, 1e-12);
  // the height of a PV surface takes its key from the first set of levels
  ASSERT_EQ(compute_field_height_pvunit(swapped.data(), &lo, &hi, keys, vals, level_p, 310.0,
                                        fill, 3, 4, 1), 0);
  EXPECT_EQ(swapped, out);
  // a stack with no levels has no crossing anywhere
  ASSERT_EQ(compute_field_isentropic_pv(out.data(), &lo, &hi, vals, keys, level_p, 310.0, fill,
                                        0, 4, 1), 0);
  EXPECT_EQ(out, std::vector<double>(4, fill));
}

}  // namespace
