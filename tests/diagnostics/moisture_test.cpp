// Water-vapour flux and its divergence.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/geo_grid.h"

namespace {

using tervik::test::GeoGrid;

TEST(MoistureFlux, DivergenceOfAStretchingFlowIsUniformAndDividedBy100) {
  // u grows linearly eastward across every row: the flux u q / g does too, so its
  // divergence is c q / g everywhere; the field and its range come out divided by 100.
  const GeoGrid g{6, 5, 30.0, -2.0, 90.0, 2.0};
  const double c = 2e-5, p = 850.0, scale = 1e6;
  const auto u = g.field([&](int i, int j) { return c * (i + 1) * g.dx(j); });
  const auto v = g.field([](int, int) { return 0.0; });
  const auto t = g.field([](int, int) { return 15.0; });
  const auto rh = g.field([](int, int) { return 80.0; });
  const double specific = q(p, 15.0) * 80.0 / 100.0 / 9.81;  // flux per m/s of wind
  std::vector<double> div(g.size());
  double lo, hi;
  ASSERT_EQ(compute_field_qdiv(div.data(), &lo, &hi, u.data(), v.data(), t.data(), rh.data(), p,
                               g.nx, g.ny, g.lat0, g.dlat, g.lon0, g.dlon, scale), 0);
  const double want = c * specific * scale / 100.0;
  for (double value : div) EXPECT_NEAR(value, want, want * 1e-12);
  EXPECT_NEAR(lo, want, want * 1e-12);
  EXPECT_NEAR(hi, want, want * 1e-12);

  // Each flux component is a magnitude: the reversed flow has the same field.
  auto reversed = u;
  for (auto& x : reversed) x = -x;
  std::vector<double> again(g.size());
  ASSERT_EQ(compute_field_qdiv(again.data(), &lo, &hi, reversed.data(), v.data(), t.data(),
                               rh.data(), p, g.nx, g.ny, g.lat0, g.dlat, g.lon0, g.dlon, scale),
            0);
  EXPECT_EQ(again, div);
}

TEST(MoistureFlux, FailureCodes) {
  const std::vector<double> a(4, 1.0);
  std::vector<double> out(4, -1.0);
  double lo = 0, hi = 0;
  EXPECT_EQ(compute_field_qdiv(nullptr, &lo, &hi, a.data(), a.data(), a.data(), a.data(), 850,
                               2, 2, 0, 1, 0, 1, 1), 1);
  EXPECT_EQ(compute_field_qdiv(out.data(), &lo, &hi, a.data(), a.data(), nullptr, a.data(), 850,
                               2, 2, 0, 1, 0, 1, 1), 1);
  EXPECT_EQ(compute_field_qflux(out.data(), &lo, &hi, a.data(), a.data(), a.data(), nullptr, 850,
                                2, 2, 1), 1);
  EXPECT_EQ(out[0], -1.0);
  // an empty grid leaves the range at its initial values, not divided by 100
  EXPECT_EQ(compute_field_qdiv(out.data(), &lo, &hi, a.data(), a.data(), a.data(), a.data(), 850,
                               0, 2, 0, 1, 0, 1, 1), 0);
  EXPECT_EQ(lo, 1.7976931348623157e308);
  EXPECT_EQ(hi, -1.7976931348623157e308);
}

}  // namespace

namespace {

TEST(WorkBuffers, AGridTooLargeToAllocateFailsWithNothingWritten) {
  // INT_MAX x INT_MAX points need more bytes than a size_t holds: the work grids of these
  // fields cannot exist, and nothing of the (small) arrays passed is touched.
  const int huge = 2147483647;
  std::vector<double> a(4, 1.0), out(4, -1.0);
  double lo = 0, hi = 0;
  EXPECT_EQ(compute_field_qdiv(out.data(), &lo, &hi, a.data(), a.data(), a.data(), a.data(), 850,
                               huge, huge, 0, 1, 0, 1, 1), 1);
  EXPECT_EQ(compute_field_voradv(out.data(), &lo, &hi, a.data(), a.data(), huge, huge, 0, 1, 0, 1,
                                 1), 1);
  EXPECT_EQ(compute_field_isop_pv(out.data(), &lo, &hi, a.data(), a.data(), a.data(), a.data(),
                                  700, 500, huge, huge, 0, 1, 0, 1, 1), 1);
  for (double x : out) EXPECT_EQ(x, -1.0);
}

}  // namespace
