// Divergence, vorticity and advection on analytic winds whose derivatives are known, the
// one-sided borders, the single-column grid and the spacing of rows near a pole.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

#include "diagnostics/geo_grid.h"
#include "diagnostics/stencil.h"

namespace {

using tervik::test::GeoGrid;

const GeoGrid kMidLatitudes{9, 7, 43.0, -1.0, 100.0, 1.0};

std::size_t at(const GeoGrid& g, int i, int j) { return static_cast<std::size_t>(j) * g.nx + i; }

TEST(Kinematics, RotationAndOutflowHaveUniformVorticityAndDivergence) {
  // About the grid centre (4, 3): x = (i-4) dx eastward, y = (3-j) dy northward. Solid-body
  // rotation (-w y, w x) and radial outflow (d x, d y) are linear along every row and
  // column, so even the borders are exact: vorticity 2w, divergence 2d.
  const GeoGrid& g = kMidLatitudes;
  const double w = 2e-5, d = 3e-5;
  const auto u = g.field([&](int, int j) { return -w * (3 - j) * g.dy(); });
  const auto v = g.field([&](int i, int j) { return w * (i - 4) * g.dx(j); });
  const auto ud = g.field([&](int i, int j) { return d * (i - 4) * g.dx(j); });
  const auto vd = g.field([&](int, int j) { return d * (3 - j) * g.dy(); });
  std::vector<double> vor(g.size()), div(g.size()), absvor(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_div(div.data(), &lo, &hi, ud.data(), vd.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, -1.0), 0);
  for (double value : div) EXPECT_NEAR(value, -2 * d, 1e-15);
  EXPECT_NEAR(hi, -2 * d, 1e-15);
  ASSERT_EQ(compute_field_vor(vor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny, g.lat0,
                              g.dlat, g.lon0, g.dlon, 1e5), 0);
  for (double value : vor) EXPECT_NEAR(value, 2 * w * 1e5, 1e-9);
  EXPECT_NEAR(lo, 2 * w * 1e5, 1e-9);
  // absolute vorticity ignores the scale, adds f per row and reports the relative range
  ASSERT_EQ(compute_field_absvor(absvor.data(), &lo, &hi, u.data(), v.data(), g.nx, g.ny,
                                 g.lat0, g.dlat, g.lon0, g.dlon, 1e5), 0);
  for (int j = 0; j < g.ny; ++j) {
    const double f = 0.0001458423 * std::sin(g.lat(j) * 0.017453292519943);
    for (int i = 0; i < g.nx; ++i) EXPECT_NEAR(absvor[at(g, i, j)], 2 * w + f, 1e-17);
  }
  EXPECT_NEAR(lo, 2 * w, 1e-17);
  EXPECT_NEAR(hi, 2 * w, 1e-17);
}

TEST(Kinematics, BordersAreOneSidedAndTheInteriorCentred) {
  // v = i^2 has forward, centred and backward differences 1, 2i and 2nx - 3 (over dx);
  // u = j^2 likewise down the rows, y counted northward (row j-1 minus row j+1).
  const GeoGrid& g = kMidLatitudes;
  const auto v = g.field([](int i, int) { return double(i * i); });
  const auto u = g.field([](int, int j) { return double(j * j); });
  const std::vector<double> zero(g.size(), 0.0);
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
  const std::vector<double> u(g.size(), 5.0), v(g.size(), 7.0);
  std::vector<double> adv(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_adv(adv.data(), &lo, &hi, f.data(), u.data(), v.data(), g.nx, g.ny,
                              g.lat0, g.dlat, g.lon0, g.dlon, 3600.0), 0);
  for (int j = 0; j < g.ny; ++j)
    for (int i = 0; i < g.nx; ++i)
      EXPECT_NEAR(adv[at(g, i, j)], -(5.0 * 2.0 / g.dx(j) - 7.0 * 3.0 / g.dy()) * 3600.0, 1e-12);
}

TEST(Kinematics, SingleColumnAndSingleRowGridsStayInsideTheirArrays) {
  double lo, hi;
  // nx = 1: the forward x-difference reads the next row's point; the last point has none.
  const GeoGrid column{1, 3, 10.0, -1.0, 0.0, 1.0};
  const std::vector<double> zero3(3, 0.0), v = {1.0, 2.0, 4.0};
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
  EXPECT_EQ(div, (std::vector<double>{1.0 / dx, 3.0 / (dx + dx), 2.0 / dx}));
}

TEST(GridSpacing, RowsNearAPoleBorrowTheirNeighboursSpacingAndPlaneGridsStep90Km) {
  using tervik::detail::compute_grid_spacing;
  const struct {
    double lat0, dlat;
    bool first_borrows, last_borrows;
  } cases[] = {
      {90.0, -1.0, true, false},   // north pole first
      {89.0, -1.0, false, false},  // 89 itself is not beyond 89
      {-87.0, -1.0, false, true},  // ends at the south pole
      {-90.0, 1.0, true, false},   // south to north
      {88.0, 1.0, false, true},    // ...and ending at the north pole
  };
  for (const auto& c : cases) {
    const GeoGrid g{3, 4, c.lat0, c.dlat, 0.0, -2.0};
    double dx[4], dy[4];
    compute_grid_spacing(dx, dy, g.ny, g.lat0, g.dlat, g.dlon, true);
    for (int j = 0; j < g.ny; ++j) {
      const bool borrows = (j == 0 && c.first_borrows) || (j == g.ny - 1 && c.last_borrows);
      const int source = borrows ? (j == 0 ? 1 : g.ny - 2) : j;
      EXPECT_DOUBLE_EQ(dx[j], g.dx(source)) << c.lat0 << " row " << j;
      EXPECT_DOUBLE_EQ(dy[j], g.dy()) << c.lat0 << " row " << j;
    }
  }
  // a plane grid counts 90 km per step, keeping the signs of the steps
  double dx[3], dy[3];
  compute_grid_spacing(dx, dy, 3, 90.0, -0.5, 2.0, false);
  EXPECT_EQ(std::vector<double>(dx, dx + 3), std::vector<double>(3, 180000.0));
  EXPECT_EQ(std::vector<double>(dy, dy + 3), std::vector<double>(3, -45000.0));
}

}  // namespace
