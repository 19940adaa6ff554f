// Fields of a geostrophic streamfunction: height, the hydrostatic temperature between two
// levels, and the non-divergent wind.

#include <cfloat>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

namespace {

constexpr double kU = 9999.0;
constexpr double kKappa = 0.28583299663031597;
constexpr double kR = 1004.842 * kKappa;  // gas constant of dry air, J/(kg K)

TEST(Streamfunction, HeightIsFPsiOverG) {
  const std::vector<double> psi = {9.81e5, kU, -4.905e5};
  std::vector<double> h(3);
  double lo, hi;
  ASSERT_EQ(compute_field_psi2h(h.data(), &lo, &hi, psi.data(), 3, 1), 0);
  EXPECT_DOUBLE_EQ(h[0], 1.0);
  EXPECT_EQ(h[1], kU);
  EXPECT_DOUBLE_EQ(h[2], -0.5);
  EXPECT_DOUBLE_EQ(lo, -0.5);
  EXPECT_DOUBLE_EQ(hi, 1.0);
}

TEST(Streamfunction, HydrostaticThicknessGivesBackTheLayerTemperature) {
  // Streamfunctions of a layer at temperature T around p: psi = g z / f with the
  // hypsometric thickness z1 - z2 = -(R T / g) (p1 - p2) / p.
  const double p = 500.0, p1 = 550.0, p2 = 450.0, f0 = 1e-4;
  const double temps[] = {220.0, 250.0, 285.0};
  std::vector<double> psi1, psi2;
  for (double t : temps) {
    psi2.push_back(5.0e7);
    psi1.push_back(5.0e7 - kR * t * (p1 - p2) / (f0 * p));
  }
  psi1.push_back(kU);
  psi2.push_back(1.0);
  std::vector<double> th(4), t(4);
  double lo, hi;
  ASSERT_EQ(compute_field_psi2theta(th.data(), &lo, &hi, psi1.data(), psi2.data(), p, p1, p2, 4,
                                    1), 0);
  const double exner = std::pow(p / 1000.0, kKappa);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(th[k], temps[k] / exner, 1e-9) << k;
  EXPECT_EQ(th[3], kU);
  EXPECT_NEAR(lo, temps[0] / exner, 1e-9);
  EXPECT_NEAR(hi, temps[2] / exner, 1e-9);

  ASSERT_EQ(compute_field_psi2t(t.data(), &lo, &hi, psi1.data(), psi2.data(), p, p1, p2, 4, 1),
            0);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(t[k], temps[k] - 273.15, 1e-9) << k;
  EXPECT_EQ(t[3], kU);
  // the range is that of the temperatures (deg C), not of the potential temperatures
  EXPECT_NEAR(lo, 220.0 - 273.15, 1e-9);
  EXPECT_NEAR(hi, 285.0 - 273.15, 1e-9);
}

TEST(Streamfunction, WindOfALinearStreamfunctionUsesTheXSpacingForBothComponents) {
  // psi = a i + b j on a grid of 1 by 0.5 degree steps (90 and 45 km): v = a / 90 km, and
  // u = -dpsi/dy with y northward (row j-1 minus row j+1) over the x spacing, b / 90 km.
  const int nx = 4, ny = 3;
  const double a = 9.0e5, b = 4.5e5;
  std::vector<double> psi(nx * ny), u(nx * ny), v(nx * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) psi[j * nx + i] = a * i + b * j;
  ASSERT_EQ(compute_field_psi2wind(u.data(), v.data(), psi.data(), nx, ny, 50.0, -0.5, 0.0, 1.0),
            0);
  for (int k = 0; k < nx * ny; ++k) {
    EXPECT_DOUBLE_EQ(v[k], 10.0) << k;
    EXPECT_DOUBLE_EQ(u[k], 5.0) << k;
  }
}

TEST(Streamfunction, WindIsUndefinedWhereADifferenceReadsTheUndefinedValue) {
  // 3 x 3 with the centre missing: the centre's own centred differences skip it, its four
  // neighbours read it in one direction each, and -9999 is never written.
  std::vector<double> psi = {0, 1, 2, 3, kU, 5, 6, 7, 8};
  std::vector<double> u(9), v(9);
  ASSERT_EQ(compute_field_psi2wind(u.data(), v.data(), psi.data(), 3, 3, 0.0, -1.0, 0.0, 1.0), 0);
  EXPECT_EQ(u[1], kU);  // north of the hole, one-sided down to it
  EXPECT_EQ(u[7], kU);
  EXPECT_EQ(v[3], kU);  // west of it
  EXPECT_EQ(v[5], kU);
  EXPECT_NE(u[4], kU);
  EXPECT_NE(v[4], kU);
  EXPECT_NE(u[3], kU);
  EXPECT_NE(v[1], kU);
  for (int k = 0; k < 9; ++k) {
    EXPECT_NE(u[k], -kU);
    EXPECT_NE(v[k], -kU);
  }
}

TEST(Streamfunction, FailureCodes) {
  const std::vector<double> psi(4, 1.0);
  std::vector<double> u(4, -2.0), v(4, -2.0);
  EXPECT_EQ(compute_field_psi2wind(nullptr, v.data(), psi.data(), 2, 2, 0, 1, 0, 1), 1);
  EXPECT_EQ(compute_field_psi2wind(u.data(), v.data(), nullptr, 2, 2, 0, 1, 0, 1), 1);
  EXPECT_EQ(compute_field_psi2wind(nullptr, nullptr, nullptr, 0, 2, 0, 1, 0, 1), 0);
  EXPECT_EQ(v[0], -2.0);
  double lo = 0, hi = 0;
  EXPECT_EQ(compute_field_psi2t(nullptr, &lo, &hi, psi.data(), psi.data(), 500, 600, 400, 2, 2),
            1);
  EXPECT_EQ(compute_field_psi2t(u.data(), &lo, &hi, psi.data(), psi.data(), 500, 600, 400, 0, 2),
            0);
  EXPECT_EQ(lo, DBL_MAX);
  EXPECT_EQ(hi, -DBL_MAX);
  EXPECT_EQ(u[0], -2.0);
}

}  // namespace
