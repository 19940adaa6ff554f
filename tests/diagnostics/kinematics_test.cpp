// Divergence, vorticity and advection on analytic winds whose derivatives are known, the
// one-sided borders, the pole rows and the undefined value flowing through.

#include <cfloat>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

#include "diagnostics/geo_grid.h"
#include "diagnostics/stencil.h"

namespace {

using tervik::test::GeoGrid;

constexpr double kU = 9999.0;
const GeoGrid kMidLatitudes{9, 7, 43.0, -1.0, 100.0, 1.0};

std::size_t at(const GeoGrid& g, int i, int j) { return static_cast<std::size_t>(j) * g.nx + i; }

TEST(Kinematics, SolidBodyRotationHasUniformVorticityTwiceItsAngularVelocity) {
  // Rotation about the grid centre (4, 3): x = (i-4) dx eastward, y = (3-j) dy northward,
  // u = -W y, v = W x. Linear along every row and column, so even the borders are exact.
  const GeoGrid& g = kMidLatitudes;
  const double w = 2e-5;
  const auto u = g.field([&](int, int j) { return -w * (3 - j) * g.dy(); });
  const auto v = g.field([&](int i, int j) { return w * (i - 4) * g.dx(j); });
  std::vector<double> vor(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1e5), 0);
  for (double value : vor) EXPECT_NEAR(value, 2 * w * 1e5, 1e-9);
  EXPECT_NEAR(lo, 2 * w * 1e5, 1e-9);
  EXPECT_NEAR(hi, 2 * w * 1e5, 1e-9);
}

TEST(Kinematics, RadialOutflowHasUniformDivergence) {
  const GeoGrid& g = kMidLatitudes;
  const double d = 3e-5;
  const auto u = g.field([&](int i, int j) { return d * (i - 4) * g.dx(j); });
  const auto v = g.field([&](int, int j) { return d * (3 - j) * g.dy(); });
  std::vector<double> div(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_div(div.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1.0), 0);
  for (double value : div) EXPECT_NEAR(value, 2 * d, 1e-15);
  // reversed, it converges
  std::vector<double> neg_u(u), neg_v(v);
  for (auto& x : neg_u) x = -x;
  for (auto& x : neg_v) x = -x;
  ASSERT_EQ(compute_field_div(div.data(), &lo, &hi, neg_u.data(), neg_v.data(), g.nx, g.ny,
                              g.lat0, g.dlat, g.lon0, g.dlon, 1.0), 0);
  EXPECT_NEAR(hi, -2 * d, 1e-15);
}

TEST(Kinematics, BordersAreOneSidedAndTheInteriorCentred) {
  // A quadratic tells the difference: v = i^2 has forward, centred and backward
  // differences 1, 2i and 2nx - 3 (over dx); u = j^2 likewise down the rows, with y
  // counted northward (row j-1 minus row j+1).
  const GeoGrid& g = kMidLatitudes;
  const auto v = g.field([](int i, int) { return double(i * i); });
  const auto u = g.field([](int, int j) { return double(j * j); });
  const auto zero = g.field([](int, int) { return 0.0; });
  std::vector<double> dvdx(g.size()), dudy(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_vor(dvdx.data(), &lo, &hi, zero.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1.0), 0);
  ASSERT_EQ(compute_field_vor(dudy.data(), &lo, &hi, u.data(), zero.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, -1.0), 0);
  for (int j = 0; j < g.ny; ++j) {
    for (int i = 0; i < g.nx; ++i) {
      const double x_steps = i == 0 ? 1.0 : i == g.nx - 1 ? 2.0 * g.nx - 3 : 2.0 * i;
      const double y_steps = j == 0 ? -1.0 : j == g.ny - 1 ? -(2.0 * g.ny - 3) : -2.0 * j;
      EXPECT_NEAR(dvdx[at(g, i, j)] * g.dx(j), x_steps, 1e-9) << i << "," << j;
      EXPECT_NEAR(dudy[at(g, i, j)] * g.dy(), y_steps, 1e-9) << i << "," << j;
    }
  }
}

TEST(Kinematics, AdvectionOfALinearFieldByAUniformWind) {
  // f rises 2 per column eastward and 3 per row southward; a wind of (5, 7) m/s carries
  // lower values from the west (cooling) and higher ones from the south (warming).
  const GeoGrid& g = kMidLatitudes;
  const auto f = g.field([](int i, int j) { return 2.0 * i + 3.0 * j; });
  const auto u = g.field([](int, int) { return 5.0; });
  const auto v = g.field([](int, int) { return 7.0; });
  std::vector<double> adv(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_adv(adv.data(), &lo, &hi, f.data(), u.data(), v.data(), g.nx, g.ny,
                              g.lat0, g.dlat, g.lon0, g.dlon, 3600.0), 0);
  for (int j = 0; j < g.ny; ++j)
    for (int i = 0; i < g.nx; ++i)
      EXPECT_NEAR(adv[at(g, i, j)], -(5.0 * 2.0 / g.dx(j) - 7.0 * 3.0 / g.dy()) * 3600.0, 1e-12);
  // rows further north are narrower, so the zonal term and the cooling grow northward
  EXPECT_NEAR(lo, adv[at(g, 0, 0)], 1e-15);
  EXPECT_NEAR(hi, adv[at(g, 0, g.ny - 1)], 1e-15);
}

TEST(Kinematics, VorticityAdvectionIsTheAdvectionOfTheUnscaledVorticity) {
  const GeoGrid& g = kMidLatitudes;
  const auto u = g.field([](int i, int j) { return 10.0 * std::sin(0.7 * i + 0.3 * j); });
  const auto v = g.field([](int i, int j) { return 8.0 * std::cos(0.4 * i - 0.9 * j); });
  std::vector<double> vor(g.size()), expected(g.size()), got(g.size());
  double lo, hi, want_lo, want_hi;
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1.0), 0);
  ASSERT_EQ(compute_field_adv(expected.data(), &want_lo, &want_hi, vor.data(), u.data(),
                              v.data(), g.nx, g.ny, g.lat0, g.dlat, g.lon0, g.dlon, 1e9), 0);
  ASSERT_EQ(compute_field_voradv(got.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                                 g.dlat, g.lon0, g.dlon, 1e9), 0);
  EXPECT_EQ(got, expected);
  EXPECT_EQ(lo, want_lo);
  EXPECT_EQ(hi, want_hi);
  EXPECT_LT(lo, hi);  // a field that tells a wrong scale or a missing term apart
}

TEST(Kinematics, AbsoluteVorticityAddsTheCoriolisParameterButReportsTheRelativeRange) {
  const GeoGrid& g = kMidLatitudes;
  const double w = 1e-5;
  const auto u = g.field([&](int, int j) { return -w * (3 - j) * g.dy(); });
  const auto v = g.field([&](int i, int j) { return w * (i - 4) * g.dx(j); });
  std::vector<double> absvor(g.size());
  double lo, hi;
  // the scale argument is not applied
  ASSERT_EQ(compute_field_absvor(absvor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny,
                                 g.lat0, g.dlat, g.lon0, g.dlon, 1e5), 0);
  for (int j = 0; j < g.ny; ++j) {
    const double f = 0.0001458423 * std::sin(g.lat(j) * 0.017453292519943);
    for (int i = 0; i < g.nx; ++i) EXPECT_NEAR(absvor[at(g, i, j)], 2 * w + f, 1e-17);
  }
  EXPECT_NEAR(lo, 2 * w, 1e-17);
  EXPECT_NEAR(hi, 2 * w, 1e-17);
}

TEST(Kinematics, UndefinedValuesAreDifferencedLikeAnyOtherNumber) {
  const GeoGrid& g = kMidLatitudes;
  auto u = g.field([](int, int) { return 0.0; });
  const auto v = u;
  u[at(g, 4, 3)] = kU;
  std::vector<double> vor(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1.0), 0);
  // north of the bad point du/dy = (0 - 9999) / 2dy; south of it the opposite
  EXPECT_DOUBLE_EQ(vor[at(g, 4, 2)], kU / (2 * g.dy()));
  EXPECT_DOUBLE_EQ(vor[at(g, 4, 4)], -kU / (2 * g.dy()));
  EXPECT_EQ(vor[at(g, 4, 3)], 0.0);
  EXPECT_DOUBLE_EQ(hi, kU / (2 * g.dy()));
  EXPECT_DOUBLE_EQ(lo, -kU / (2 * g.dy()));
}

TEST(Kinematics, SingleColumnAndSingleRowGridsStayInsideTheirArrays) {
  double lo, hi;
  // nx = 1: the forward x-difference reads the next row's point; the last point has none.
  const GeoGrid column{1, 3, 10.0, -1.0, 0.0, 1.0};
  const std::vector<double> zero3(3, 0.0);
  const std::vector<double> v = {1.0, 2.0, 4.0};
  std::vector<double> vor(3);
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, zero3.data(), v.data(), 1, 3, column.lat0,
                              column.dlat, column.lon0, column.dlon, 1.0), 0);
  EXPECT_DOUBLE_EQ(vor[0], 1.0 / column.dx(0));
  EXPECT_DOUBLE_EQ(vor[1], 2.0 / column.dx(1));
  EXPECT_EQ(vor[2], 0.0);
  // ny = 1: no row to difference against, so no y-contribution
  const std::vector<double> u = {5.0, 6.0, 8.0};
  std::vector<double> div(3);
  ASSERT_EQ(compute_field_div(div.data(), &lo, &hi, u.data(), zero3.data(), 3, 1, 10.0, -1.0,
                              0.0, 1.0, 1.0), 0);
  const double dx = column.dx(0);
  EXPECT_DOUBLE_EQ(div[0], 1.0 / dx);
  EXPECT_DOUBLE_EQ(div[1], 3.0 / (dx + dx));
  EXPECT_DOUBLE_EQ(div[2], 2.0 / dx);
  // a single point
  double one = 0;
  ASSERT_EQ(compute_field_adv(&one, &lo, &hi, u.data(), u.data(), u.data(), 1, 1, 0.0, 1.0, 0.0,
                              1.0, 1.0), 0);
  EXPECT_EQ(one, 0.0);
}

TEST(Kinematics, FailureCodes) {
  const GeoGrid& g = kMidLatitudes;
  const auto u = g.field([](int i, int) { return double(i); });
  std::vector<double> out(g.size(), -3.0);
  double lo = 0, hi = 0;
  // the range is initialised before a null output is noticed
  EXPECT_EQ(compute_field_vor(nullptr, &lo, &hi, u.data(), u.data(), g.nx, g.ny, g.lat0, g.dlat,
                              g.lon0, g.dlon, 1.0), 1);
  EXPECT_EQ(lo, DBL_MAX);
  EXPECT_EQ(hi, -DBL_MAX);
  EXPECT_EQ(compute_field_div(out.data(), &lo, &hi, u.data(), nullptr, g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1.0), 1);
  EXPECT_EQ(compute_field_adv(out.data(), nullptr, &hi, u.data(), u.data(), u.data(), g.nx,
                              g.ny, g.lat0, g.dlat, g.lon0, g.dlon, 1.0), 1);
  EXPECT_EQ(compute_field_voradv(nullptr, &lo, &hi, u.data(), u.data(), g.nx, g.ny, g.lat0,
                                 g.dlat, g.lon0, g.dlon, 1.0), 1);
  EXPECT_EQ(compute_field_absvor(out.data(), &lo, &hi, nullptr, u.data(), g.nx, g.ny, g.lat0,
                                 g.dlat, g.lon0, g.dlon, 1.0), 1);
  for (double x : out) ASSERT_EQ(x, -3.0);
  // empty grids succeed with the range initialised, whatever the pointers
  lo = hi = 0;
  EXPECT_EQ(compute_field_voradv(nullptr, &lo, &hi, nullptr, nullptr, 0, 4, 0, 1, 0, 1, 1), 0);
  EXPECT_EQ(lo, DBL_MAX);
  lo = hi = 0;
  EXPECT_EQ(compute_field_absvor(nullptr, &lo, &hi, nullptr, nullptr, 4, -1, 0, 1, 0, 1, 1), 0);
  EXPECT_EQ(hi, -DBL_MAX);
}

// ---- grid spacing and the undefined-aware gradients ----

TEST(GridSpacing, RowsNearAPoleBorrowTheirNeighboursSpacing) {
  using tervik::detail::compute_grid_spacing;
  struct Case {
    double lat0, dlat;
    bool first_borrows, last_borrows;
  };
  const Case cases[] = {
      {90.0, -1.0, true, false},    // north pole first
      {89.0, -1.0, false, false},   // 89 itself is not beyond 89
      {-87.0, -1.0, false, true},   // ends at the south pole
      {-90.0, 1.0, true, false},    // south to north
      {88.0, 1.0, false, true},     // ...and ending at the north pole
  };
  for (const auto& c : cases) {
    const GeoGrid g{3, 4, c.lat0, c.dlat, 0.0, -2.0};
    double dx[4], dy[4];
    compute_grid_spacing(dx, dy, g.ny, g.lat0, g.dlat, g.dlon, true);
    for (int j = 0; j < g.ny; ++j) {
      int source = j;
      if (j == 0 && c.first_borrows) source = 1;
      if (j == g.ny - 1 && c.last_borrows) source = g.ny - 2;
      EXPECT_DOUBLE_EQ(dx[j], g.dx(source)) << c.lat0 << " row " << j;
      EXPECT_DOUBLE_EQ(dy[j], g.dy()) << c.lat0 << " row " << j;
    }
  }
  // a single row has no neighbour to borrow from
  double dx, dy;
  compute_grid_spacing(&dx, &dy, 1, 90.0, -1.0, 1.0, true);
  EXPECT_LT(std::fabs(dx), 1e-3);
}

TEST(GridSpacing, PlaneGridsCount90KilometresPerStepWithSigns) {
  double dx[3], dy[3];
  tervik::detail::compute_grid_spacing(dx, dy, 3, 90.0, -0.5, 2.0, false);
  for (int j = 0; j < 3; ++j) {
    EXPECT_EQ(dx[j], 180000.0);
    EXPECT_EQ(dy[j], -45000.0);
  }
}

TEST(Gradients, UndefinedWhereEitherValueReadIsUndefined) {
  // 5 x 2: row 0 has a hole at column 1; row 1 is defined
  const std::vector<double> f = {1.0, kU, 3.0, 4.0, 6.0, 2.0, 2.0, 2.0, 2.0, 2.0};
  const double dx[2] = {10.0, 20.0};
  std::vector<double> gx(10), gy(10);
  tervik::detail::gradient_x(gx.data(), f.data(), 5, 2, dx);
  tervik::detail::gradient_y(gy.data(), f.data(), 5, 2, dx);
  const std::vector<double> want_x = {kU, (3.0 - 1.0) / 20.0, kU, (6.0 - 3.0) / 20.0,
                                      (6.0 - 4.0) / 10.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  EXPECT_EQ(gx, want_x);
  // one-sided in y on both rows of a two-row grid, by each row's own spacing
  const std::vector<double> want_y = {-1.0 / 10, kU, 0.1, 0.2, 0.4, -1.0 / 20, kU, 0.05, 0.1, 0.2};
  for (int k = 0; k < 10; ++k) EXPECT_DOUBLE_EQ(gy[k], want_y[k]) << k;
}

}  // namespace

namespace {

TEST(RangeOfARow, AgreesBitForBitWithAddingTheValuesOneByOne) {
  // Rows long enough for the wide path, with NaN, infinities and zeros of both signs
  // placed so that the extreme is reached in several lanes.
  const double specials[] = {0.0, -0.0, NAN, INFINITY, -INFINITY, 1e-300, -1e-300};
  unsigned seed = 12345;
  auto next = [&seed] { return (seed = seed * 1103515245u + 12345u) >> 8; };
  for (int trial = 0; trial < 400; ++trial) {
    std::vector<double> row(16 + next() % 40);
    const int kind = trial % 3;  // 0: anything; 1: nothing below zero; 2: nothing above
    for (double& x : row) {
      const unsigned pick = next() % 10;
      x = pick < 7 ? specials[pick] : (double(next() % 2001) - 1000.0) / 7.0;
      if (kind == 1 && !(x >= 0.0)) x = pick % 2 ? 0.0 : -0.0;
      if (kind == 2 && !(x <= 0.0)) x = pick % 2 ? 0.0 : -0.0;
    }
    tervik::detail::Range wide, one_by_one;
    if (trial % 5 == 0) wide.lo = one_by_one.lo = 1.0;  // a range that has seen values
    tervik::detail::add_to_range(wide, row.data(), row.size());
    for (double x : row) one_by_one.add(x);
    ASSERT_EQ(std::signbit(wide.lo), std::signbit(one_by_one.lo)) << trial;
    ASSERT_EQ(std::signbit(wide.hi), std::signbit(one_by_one.hi)) << trial;
    ASSERT_EQ(wide.lo, one_by_one.lo) << trial;
    ASSERT_EQ(wide.hi, one_by_one.hi) << trial;
  }
}

}  // namespace
