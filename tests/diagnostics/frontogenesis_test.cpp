// Frontogenesis of the equivalent potential temperature: confluence across a baroclinic
// zone sharpens it, a uniform or steady situation does nothing, and a flat field is left
// alone however strong the deformation.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/geo_grid.h"

namespace {

using tervik::test::GeoGrid;

const GeoGrid kGrid{7, 6, 50.0, -1.0, 0.0, 1.0};
constexpr double kP0 = 850.0, kPu = 700.0, kPl = 925.0;

double theta_k(double p, double t) { return t2T(theta_se_s(p, t)); }

struct Fields {
  std::vector<double> t0, t1, tu, tl, u, v, omega;
};

// Colder to the north; no wind, no vertical motion, no change in time.
Fields baroclinic_zone() {
  const GeoGrid& g = kGrid;
  Fields f;
  f.t1 = g.field([](int i, int j) { return 4.0 + 1.5 * j + 0.1 * i; });
  f.t0 = f.t1;
  f.tu = g.field([&](int i, int j) { return f.t1[j * g.nx + i] - 12.0; });
  f.tl = g.field([&](int i, int j) { return f.t1[j * g.nx + i] + 5.0; });
  f.u = g.field([](int, int) { return 0.0; });
  f.v = f.u;
  f.omega = f.u;
  return f;
}

int frontogen(const Fields& f, std::vector<double>& out, double* lo, double* hi, int dt,
              double scale) {
  const GeoGrid& g = kGrid;
  out.assign(g.size(), -1.0);
  return compute_field_frontogen(out.data(), lo, hi, f.t0.data(), f.t1.data(), f.tu.data(),
                                 f.tl.data(), f.u.data(), f.v.data(), f.omega.data(), kP0, kPu,
                                 kPl, g.nx, g.ny, dt, g.lat0, g.dlat, g.lon0, g.dlon, scale);
}

TEST(Frontogenesis, NothingHappensWithoutDeformationTiltingOrTendency) {
  Fields f = baroclinic_zone();
  for (auto& x : f.u) x = 12.0;  // a uniform wind only moves the zone along
  for (auto& x : f.v) x = -4.0;
  for (auto& x : f.omega) x = -0.3;
  std::vector<double> out;
  double lo, hi;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, 3600, 1e9), 0);
  for (double x : out) EXPECT_EQ(x, 0.0);
  EXPECT_EQ(lo, 0.0);
  EXPECT_EQ(hi, 0.0);
}

TEST(Frontogenesis, ConfluenceAcrossTheZoneSharpensIt) {
  // v = -c y (y northward from the middle row): air converges on the zone from both sides
  // and the gradient tightens at the rate |d(theta)/dy| * c.
  const GeoGrid& g = kGrid;
  Fields f = baroclinic_zone();
  f.t1 = g.field([](int, int j) { return 4.0 + 1.5 * j; });
  f.t0 = f.t1;
  const double c = 2e-5, scale = 1e9;
  f.v = g.field([&](int, int j) { return -c * (2.5 - j) * g.dy(); });
  std::vector<double> out;
  double lo, hi;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, 3600, scale), 0);
  for (int j = 1; j < g.ny - 1; ++j) {
    const double dtheta_dy =
        (theta_k(kP0, f.t1[(j - 1) * g.nx]) - theta_k(kP0, f.t1[(j + 1) * g.nx])) /
        (2 * g.dy());
    for (int i = 0; i < g.nx; ++i) {
      const double got = out[j * g.nx + i];
      EXPECT_NEAR(got, std::fabs(dtheta_dy) * c * scale, 1e-9 * std::fabs(got)) << i << "," << j;
      EXPECT_GT(got, 0.0);
    }
  }
  // reversed, the flow is diffluent and weakens the zone
  for (auto& x : f.v) x = -x;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, 3600, scale), 0);
  EXPECT_LT(hi, 0.0);
}

TEST(Frontogenesis, WarmingOnTheWarmSideCountsAsSharpening) {
  // No flow; between the two times the warm (south) side warmed more than the cold side,
  // so the gradient grew: the tendency term is positive, at the rate
  // d(theta tendency)/dy projected on the gradient direction.
  const GeoGrid& g = kGrid;
  Fields f = baroclinic_zone();
  f.t1 = g.field([](int, int j) { return 4.0 + 1.5 * j; });
  f.t0 = g.field([](int, int j) { return 4.0 + 1.0 * j; });
  f.tu = f.tl = f.t1;  // no vertical derivative at all
  const int dt = 21600;
  std::vector<double> out;
  double lo, hi;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, dt, 1.0), 0);
  auto tendency = [&](int j) {
    const double t1 = 4.0 + 1.5 * j, t0 = 4.0 + 1.0 * j;
    return (theta_k(kP0, t1) - theta_k(kP0, t0)) / dt;
  };
  for (int j = 1; j < g.ny - 1; ++j) {
    // theta falls northward (dtheta/dy < 0) and so does its tendency
    const double dtt_dy = (tendency(j - 1) - tendency(j + 1)) / (2 * g.dy());
    const double got = out[j * g.nx + 3];
    EXPECT_NEAR(got, -dtt_dy, 1e-9 * std::fabs(got)) << j;
    EXPECT_GT(got, 0.0);
  }
}

TEST(Frontogenesis, AFlatFieldHasNoFrontogenesisUnderAnyFlow) {
  const GeoGrid& g = kGrid;
  Fields f = baroclinic_zone();
  f.t1 = f.t0 = f.tu = f.tl = g.field([](int, int) { return 10.0; });
  f.u = g.field([](int i, int j) { return 30.0 * std::sin(i + j); });
  f.v = g.field([](int i, int j) { return 30.0 * std::cos(i * j); });
  std::vector<double> out;
  double lo, hi;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, 3600, 1e9), 0);
  for (double x : out) EXPECT_EQ(x, 0.0);
}

TEST(Frontogenesis, GradientsReadingTheUndefinedValueAreUndefinedAndUsedAsSuch) {
  // One undefined wind at (3, 2). East of it the x-gradient of u reads it and is 9999,
  // which then enters the stretching term as a number: -th_x^2 * 9999 / |grad th|.
  const GeoGrid& g = kGrid;
  Fields f = baroclinic_zone();
  f.u[2 * g.nx + 3] = 9999.0;
  std::vector<double> out;
  double lo, hi;
  ASSERT_EQ(frontogen(f, out, &lo, &hi, 3600, 1.0), 0);
  auto th = [&](int i, int j) { return theta_k(kP0, f.t1[j * g.nx + i]); };
  const double th_x = (th(5, 2) - th(3, 2)) / (2 * g.dx(2));
  const double th_y = (th(4, 1) - th(4, 3)) / (2 * g.dy());
  const double want = -(th_x * th_x * 9999.0) / std::hypot(th_x, th_y);
  EXPECT_NEAR(out[2 * g.nx + 4], want, 1e-9 * std::fabs(want));
  EXPECT_EQ(lo, std::fmin(out[2 * g.nx + 4], out[2 * g.nx + 2]));
}

TEST(Frontogenesis, FailureCodes) {
  const Fields f = baroclinic_zone();
  const GeoGrid& g = kGrid;
  double lo, hi;
  EXPECT_EQ(compute_field_frontogen(nullptr, &lo, &hi, f.t0.data(), f.t1.data(), f.tu.data(),
                                    f.tl.data(), f.u.data(), f.v.data(), f.omega.data(), kP0, kPu,
                                    kPl, g.nx, g.ny, 3600, g.lat0, g.dlat, g.lon0, g.dlon, 1.0),
            1);
  std::vector<double> out(g.size(), -2.0);
  EXPECT_EQ(compute_field_frontogen(out.data(), &lo, &hi, f.t0.data(), f.t1.data(), f.tu.data(),
                                    f.tl.data(), f.u.data(), f.v.data(), nullptr, kP0, kPu, kPl,
                                    g.nx, g.ny, 3600, g.lat0, g.dlat, g.lon0, g.dlon, 1.0),
            1);
  EXPECT_EQ(out[0], -2.0);
  EXPECT_EQ(compute_field_frontogen(out.data(), &lo, &hi, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, kP0, kPu, kPl, 0, 0, 3600, 0, 1, 0,
                                    1, 1.0),
            0);
  EXPECT_EQ(lo, 1.7976931348623157e308);
}

}  // namespace
