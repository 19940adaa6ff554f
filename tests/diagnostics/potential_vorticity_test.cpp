// Potential vorticity of a pressure layer and interpolation to isentropic and PV surfaces.

#include <cfloat>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/geo_grid.h"

namespace {

using tervik::test::GeoGrid;

TEST(LayerPV, IsMinusGTimesAbsoluteVorticityTimesTheStaticStability) {
  // A stable layer (potential temperature rising with height) under cyclonic and
  // anticyclonic absolute vorticity.
  const double p1 = 600.0, p2 = 400.0;
  const std::vector<double> zeta = {1e-4, -2e-5, 1.5e-4};
  const std::vector<double> t1 = {-10.0, -10.0, 9999.0}, t2 = {-30.0, -30.0, -30.0};
  std::vector<double> pv(3);
  double lo, hi;
  ASSERT_EQ(compute_field_isop_pv(pv.data(), &lo, &hi, zeta.data(), t1.data(), t2.data(), p1, p2,
                                  3, 1, 1e6), 0);
  for (int k = 0; k < 3; ++k) {
    const double dtheta_dp = (theta(p1, t1[k]) - theta(p2, t2[k])) / ((p1 - p2) * 100.0);
    EXPECT_NEAR(pv[k], -9.81 * zeta[k] * dtheta_dp * 1e6, 1e-9 * std::fabs(pv[k])) << k;
  }
  EXPECT_GT(pv[0], 0.0);  // stable and cyclonic: positive PV, of the order of 1 PVU
  EXPECT_LT(pv[0], 5.0);
  EXPECT_LT(pv[1], 0.0);
  EXPECT_LT(pv[2], 0.0);  // the undefined temperature is used as a number
  EXPECT_EQ(lo, pv[2]);
  EXPECT_EQ(hi, pv[0]);
}

TEST(LayerPV, WindFormUsesTheAbsoluteVorticityOfTheWind) {
  const GeoGrid g{5, 4, 50.0, -1.0, 0.0, 1.0};
  const auto u = g.field([](int i, int j) { return 20.0 + 3.0 * std::sin(i + 2.0 * j); });
  const auto v = g.field([](int i, int j) { return 5.0 * std::cos(0.5 * i - j); });
  const auto t1 = g.field([](int i, int) { return -8.0 - i; });
  const auto t2 = g.field([](int, int j) { return -35.0 + j; });
  std::vector<double> zeta(g.size()), want(g.size()), got(g.size());
  double lo, hi, want_lo, want_hi;
  ASSERT_EQ(compute_field_absvor(zeta.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                                 g.dlat, g.lon0, g.dlon, 1.0), 0);
  ASSERT_EQ(compute_field_isop_pv(want.data(), &want_lo, &want_hi, zeta.data(), t1.data(),
                                  t2.data(), 700.0, 500.0, g.nx, g.ny, 1e6), 0);
  ASSERT_EQ(compute_field_isop_pv(got.data(), &lo, &hi, u.data(), v.data(), t1.data(), t2.data(),
                                  700.0, 500.0, g.nx, g.ny, g.lat0, g.dlat, g.lon0, g.dlon, 1e6),
            0);
  EXPECT_EQ(got, want);
  EXPECT_EQ(lo, want_lo);
  EXPECT_EQ(hi, want_hi);
}

TEST(SurfaceInterpolation, FindsTheFirstCrossingBelowTheTarget) {
  // Three levels from the top down (300, 500, 850 hPa), four columns. The key falls with
  // depth in columns 0 and 3; column 1 starts below the target, column 2 never reaches it.
  const double level_p[] = {300.0, 500.0, 850.0};
  const std::vector<double> key0 = {340.0, 305.0, 350.0, 330.0};
  const std::vector<double> key1 = {320.0, 290.0, 345.0, 300.0};
  const std::vector<double> key2 = {300.0, 280.0, 341.0, 290.0};
  const std::vector<double> val0 = {4.0, 1.0, 1.0, 8.0};
  const std::vector<double> val1 = {2.0, 1.0, 1.0, 2.0};
  const std::vector<double> val2 = {1.0, 1.0, 1.0, 0.5};
  const double* keys[] = {key0.data(), key1.data(), key2.data()};
  const double* vals[] = {val0.data(), val1.data(), val2.data()};
  const double target = 310.0, fill = -999.0;
  // column 0: halfway from 500 to 850 hPa, the value halfway between 2 and 1
  // column 3: two thirds of the way from 300 to 500 hPa, 8 + (2 - 8) * 2 / 3
  const std::vector<double> want = {1.5, fill, fill, 4.0};

  std::vector<double> out(4);
  double lo, hi;
  ASSERT_EQ(compute_field_isentropic_pv(out.data(), &lo, &hi, vals, keys, level_p, target, fill,
                                        3, 4, 1), 0);
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(out[k], want[k], 1e-12) << k;
  EXPECT_NEAR(lo, 1.5, 1e-12);  // filled points stay out of the range
  EXPECT_NEAR(hi, 4.0, 1e-12);

  // the height of a PV surface takes its key from the first set of levels
  std::vector<double> swapped(4);
  ASSERT_EQ(compute_field_height_pvunit(swapped.data(), &lo, &hi, keys, vals, level_p, target,
                                        fill, 3, 4, 1), 0);
  EXPECT_EQ(swapped, out);

  // a stack with no levels has no crossing anywhere
  ASSERT_EQ(compute_field_isentropic_pv(out.data(), &lo, &hi, vals, keys, level_p, target, fill,
                                        0, 4, 1), 0);
  for (double x : out) EXPECT_EQ(x, fill);
  EXPECT_EQ(lo, DBL_MAX);
}

TEST(SurfaceInterpolation, FailureCodes) {
  const std::vector<double> a(2, 1.0);
  const double* levels[] = {a.data(), nullptr};
  const double* good[] = {a.data(), a.data()};
  const double p[] = {500.0, 700.0};
  std::vector<double> out(2, -5.0);
  double lo, hi;
  EXPECT_EQ(compute_field_isentropic_pv(out.data(), &lo, &hi, good, levels, p, 0, 0, 2, 2, 1), 1);
  EXPECT_EQ(compute_field_height_pvunit(out.data(), &lo, &hi, good, good, nullptr, 0, 0, 2, 2, 1),
            1);
  EXPECT_EQ(compute_field_height_pvunit(nullptr, &lo, &hi, good, good, p, 0, 0, 2, 2, 1), 1);
  EXPECT_EQ(out[0], -5.0);
  EXPECT_EQ(compute_field_isop_pv(out.data(), &lo, &hi, nullptr, a.data(), a.data(), a.data(), 700.0, 500.0,
                                  2, 1, 0.0, -1.0, 0.0, 1.0, 1.0), 1);
  EXPECT_EQ(out[0], -5.0);
}

}  // namespace
