#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

using tervik::test::make_level;

namespace {

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

// Westerly wind growing by `per_km` m/s per km from 5 m/s at the ground (z = 200 m),
// levels every 100 m, isothermal so that density falls with pressure alone.
std::vector<tag_tlogp_layer> westerly_shear(double per_km) {
  std::vector<tag_tlogp_layer> v;
  for (int k = 0; k <= 80; ++k) {
    const double z = 200.0 + 100.0 * k;
    const double p = 1000.0 * std::exp(-(z - 200.0) / 8000.0);
    v.push_back(make_level(p, z, 10.0, 0.0, 270.0, 5.0 + per_km * (z - 200.0) / 1000.0));
  }
  return v;
}

}  // namespace

TEST(BulkShear, LinearProfileGivesJustUnderHalfTheEndDifference) {
  // A linear wind's layer mean lies halfway; weighting by density (higher near the
  // bottom) pulls it towards the bottom wind.
  auto v = westerly_shear(4.0);
  const double shr = Shr(v.data(), size_of(v), 1000.0, 5000.0);  // 16 m/s across the layer
  EXPECT_LT(shr, 8.0);
  EXPECT_GT(shr, 7.0);
  // Halving the shear halves the result (the layer mean is linear in the winds).
  auto half = westerly_shear(2.0);
  EXPECT_NEAR(Shr(half.data(), size_of(half), 1000.0, 5000.0), shr / 2.0, 1e-9);
}

TEST(BulkShear, BottomBelowTheGroundMeansTheGroundAndTopMustBeInside) {
  auto v = westerly_shear(4.0);
  const int n = size_of(v);
  EXPECT_EQ(Shr(v.data(), n, 0.0, 3000.0), Shr(v.data(), n, 200.0, 3000.0));
  EXPECT_EQ(Shr(v.data(), n, 0.0, 9000.0), 9999.0);   // above the top level (8200 m)
  EXPECT_EQ(Shr(v.data(), n, 3000.0, 3000.0), 9999.0);  // empty layer
  auto calm = westerly_shear(0.0);
  EXPECT_NEAR(Shr(calm.data(), n, 0.0, 3000.0), 0.0, 1e-12);
}

TEST(BulkShear, ZeroShearLeavesTheLogAndRichardsonIndicesUndefined) {
  // A saturated, unstable column with an unchanging wind has CAPE but no shear.
  auto v = tervik::test::convective_sounding();
  for (auto& l : v) {
    l.wind_dir = 250.0;
    l.wind_speed = 12.0;
  }
  const int n = size_of(v);
  ASSERT_NE(CAPE(v.data(), n), 9999.0);
  EXPECT_NEAR(Shr(v.data(), n, 0.0, 600.0), 0.0, 1e-12);
  EXPECT_EQ(BRN(v.data(), n), 9999.0);
  EXPECT_EQ(SSI(v.data(), n), 9999.0);
}

TEST(BulkShear, SwissIndicesUseTheirOwnLayers) {
  auto v = tervik::test::convective_sounding();
  const int n = size_of(v);
  // The Swiss indices: evening uses SI and the 300-600 shear, midday LI and 0-300.
  const layer_sample s600 = interpolate_layer_at_p(v.data(), n, 600.0);
  EXPECT_DOUBLE_EQ(SWISS00(v.data(), n), SI(v.data(), n) + 0.4 * Shr(v.data(), n, 300.0, 600.0) +
                                             0.1 * (s600.t - s600.td));
  const layer_sample s650 = interpolate_layer_at_p(v.data(), n, 650.0);
  EXPECT_DOUBLE_EQ(SWISS12(v.data(), n), LI(v.data(), n) + 0.3 * Shr(v.data(), n, 0.0, 300.0) +
                                             0.3 * (s650.t - s650.td));
}

TEST(Helicity, VeeringWindAgainstAStillStormIsPositive) {
  // No wind between 400 and 850 hPa, so the storm stands still. The wind veers from
  // southerly (blowing north) to westerly (blowing east) at 10 m/s within the lowest
  // 300 m: the helicity is the cross product 10 x 10.
  std::vector<tag_tlogp_layer> v{make_level(1000, 100, 20, 10, 180, 10),
                                 make_level(980, 250, 19, 9, 270, 10),
                                 make_level(950, 500, 17, 8, 270, 10),
                                 make_level(900, 950, 14, 6, 270, 10),
                                 make_level(700, 3000, 0, -5),
                                 make_level(500, 5600, -15, -25)};
  EXPECT_NEAR(SRH(v.data(), size_of(v)), 100.0, 1e-9);
  // Backing instead (northerly to westerly) turns the sign.
  v[0].wind_dir = 0.0;
  EXPECT_NEAR(SRH(v.data(), size_of(v)), -100.0, 1e-9);
}

TEST(Helicity, UniformWindHasNoneAndNoHeightIsUndefined) {
  auto v = tervik::test::convective_sounding();
  for (auto& l : v) {
    l.wind_dir = 230.0;
    l.wind_speed = 15.0;
  }
  EXPECT_NEAR(SRH(v.data(), size_of(v)), 0.0, 1e-9);
  for (auto& l : v) l.z = 9999.0;
  EXPECT_EQ(SRH(v.data(), size_of(v)), 9999.0);
}

TEST(WindDifference, ReportedLevelsAsTheyStandOthersSampled) {
  std::vector<tag_tlogp_layer> v{make_level(1000, 100, 20, 10, 270, 5),
                                 make_level(850, 1500, 12, 5, 270, 10),
                                 make_level(400, 7200, -25, -35, 270, 20),
                                 make_level(200, 11800, -55, -65, 270, 40)};
  // 300 hPa is not reported: sampled linearly in pressure halfway, 30 m/s.
  EXPECT_NEAR(TQG(v.data(), size_of(v)), 20.0 * 20.0, 1e-9);
  v[1].wind_speed = 9999.0;  // a reported level's wind is used as it stands
  EXPECT_GT(TQG(v.data(), size_of(v)), 1e7);
  v[1].wind_speed = 10.0;
  v[3].wind_dir = 9999.0;  // the sample at 300 hPa cannot be made
  EXPECT_EQ(TQG(v.data(), size_of(v)), 9999.0);
}
