// Indices read from reported levels and layers: totals, SWEAT, column moisture, isotherm
// depths, shear and helicity.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

namespace {

using tervik::test::make_level;

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

double call(double (*f)(tag_tlogp_layer*, int), std::vector<tag_tlogp_layer>& v) {
  return f(v.data(), size_of(v));
}

// Round numbers so that every index can be worked out by hand: t850 20, td850 15,
// t700 8, td700 2, t500 -10, td500 -20.
std::vector<tag_tlogp_layer> mandatory_profile() {
  return {make_level(1000, 100, 26, 18, 180, 5), make_level(925, 760, 22, 16, 190, 6),
          make_level(850, 1460, 20, 15, 200, 10), make_level(700, 3010, 8, 2, 230, 15),
          make_level(500, 5600, -10, -20, 250, 25), make_level(300, 9200, -40, -50, 260, 35)};
}

// 6.5 K per km from 15 deg C at 0 m, levels every 500 m to 12 km.
std::vector<tag_tlogp_layer> standard_lapse() {
  std::vector<tag_tlogp_layer> v;
  for (double z = 0.0; z <= 12000.0; z += 500.0) {
    const double t = 15.0 - 0.0065 * z;
    v.push_back(make_level(1013.25 * std::pow(1.0 - 0.0065 * z / 288.15, 5.2559), z, t, t - 4.0,
                           250.0, 5.0 + z / 1000.0));
  }
  return v;
}

// Westerly wind growing by `per_km` m/s per km from 5 m/s at the ground (z = 200 m),
// levels every 100 m, isothermal so that density falls with pressure alone.
std::vector<tag_tlogp_layer> westerly_shear(double per_km) {
  std::vector<tag_tlogp_layer> v;
  for (double z = 200.0; z <= 8200.0; z += 100.0) {
    v.push_back(make_level(1000.0 * std::exp(-(z - 200.0) / 8000.0), z, 10.0, 0.0, 270.0,
                           5.0 + per_km * (z - 200.0) / 1000.0));
  }
  return v;
}

TEST(TotalsIndices, HandWorkedValuesFromExactlyReportedLevels) {
  auto v = mandatory_profile();
  struct Case { const char* name; double (*f)(tag_tlogp_layer*, int); double expected; };
  const Case cases[] = {
      {"TT", TT, 20 + 15 + 20},
      {"K", K, (20 + 10) + 15 - (8 - 2)},
      {"A", A, (20 + 10) - ((20 - 15) + (8 - 2) + (-10 + 20))},
      {"TTmod", TTmod, (68.0 + 49.0) / 3.0 + 20},  // means of the records up to 850 hPa
      {"Kmod", Kmod, 68.0 / 3.0 + 49.0 / 3.0 + 10 + (2 - 8)},
      {"Kmod2", Kmod2, 0.5 * (15 + 18) + 0.5 * (20 + 26) + 10 + (2 - 8)}};
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(call(c.f, v), c.expected) << c.name;
  v[1].valid = false;  // TTmod skips an invalid low record, Kmod stops at it
  EXPECT_DOUBLE_EQ(call(TTmod, v), (46.0 + 33.0) / 2.0 + 20);
  EXPECT_EQ(call(Kmod, v), 9999.0);
  v[2].td = 9999.0;  // a 9999.0 stored in a level that is present enters the arithmetic
  EXPECT_DOUBLE_EQ(call(TT, v), 20 + 9999.0 + 20);
  v[2].p = 850.5;  // a near miss is not 850 hPa
  for (auto f : {TT, K, A, TTmod, Kmod2, SWEAT}) EXPECT_EQ(call(f, v), 9999.0);
  v = mandatory_profile();
  v[3].valid = false;  // 700 hPa present but not valid
  for (auto f : {K, A, Kmod, Kmod2}) EXPECT_EQ(call(f, v), 9999.0);
  EXPECT_EQ(call(TT, v), 55.0);  // TT does not need 700 hPa
}

TEST(Sweat, TermsSwitchOnTheirThresholds) {
  struct Case { const char* what; double td850, dd850, ff850, dd500, veer; };
  // TT = 40 + td850: the dew-point and totals terms are 12 td850 + 20 (TT - 49) when moist.
  const double kt = 1.944, moist = 12 * 15.0 + 20 * 6.0;
  const Case cases[] = {{"dry 850: no dew-point or totals term", -1.0, 200, 10, 250, 50},
                        {"moist 850 and TT 55", 15.0, 200, 10, 250, 50},
                        {"no veering", 15.0, 250, 10, 250, -1},
                        {"850 wind below 15 kt", 15.0, 200, 7.7, 250, -1},
                        {"850 direction outside 130-250", 15.0, 120, 10, 250, -1},
                        {"500 direction outside 210-310", 15.0, 200, 10, 320, -1},
                        {"slight veering still adds the base term", 15.0, 249, 10, 250, 1}};
  for (const auto& c : cases) {
    auto v = mandatory_profile();
    v[2].td = c.td850;
    v[2].wind_dir = c.dd850;
    v[2].wind_speed = c.ff850;
    v[4].wind_dir = c.dd500;
    const double shear = c.veer < 0 ? 0.0 : 125 * (std::sin(c.veer * 0.017453292519943) + 0.2);
    const double expected = (c.td850 > 0 ? moist : 0.0) + (2 * c.ff850 + 25) * kt + shear;
    EXPECT_NEAR(call(SWEAT, v), expected, 1e-9) << c.what;
  }
  auto v = mandatory_profile();
  v[4].wind_dir = 9999.0;
  EXPECT_EQ(call(SWEAT, v), 9999.0);
}

TEST(ColumnIndices, IsothermDepthsAndMoistureColumn) {
  auto v = standard_lapse();
  // 20 K at 6.5 K/km, whichever pair of isotherms.
  EXPECT_NEAR(call(Hd0_20, v), 20.0 / 0.0065, 1e-6);
  EXPECT_NEAR(call(Hd20_40, v), 20.0 / 0.0065, 1e-6);
  // Records without a height or not valid are passed over as if absent.
  auto gappy = v, removed = v;
  gappy[4].z = 9999.0;
  gappy[9].valid = false;
  removed.erase(removed.begin() + 9);
  removed.erase(removed.begin() + 4);
  EXPECT_DOUBLE_EQ(call(IntQ, gappy), call(IntQ, removed));
  EXPECT_LT(call(IntQ, removed), call(IntQ, v) * 1.05);
  for (auto& l : v) l.t -= 20.0;  // a ground colder than 0 deg C has no 0 deg C crossing
  EXPECT_EQ(call(Hd0_20, v), 9999.0);
  EXPECT_NE(call(Hd20_40, v), 9999.0);
}

TEST(BulkShear, LinearProfileGivesJustUnderHalfTheEndDifference) {
  // A linear wind's layer mean lies halfway; weighting by density (higher near the
  // bottom) pulls it towards the bottom wind. The mean is linear in the winds.
  auto v = westerly_shear(4.0), half = westerly_shear(2.0);
  const int n = size_of(v);
  const double shr = Shr(v.data(), n, 1000.0, 5000.0);  // 16 m/s across the layer
  EXPECT_TRUE(shr > 7.0 && shr < 8.0) << shr;
  EXPECT_NEAR(Shr(half.data(), n, 1000.0, 5000.0), shr / 2.0, 1e-9);
  // A bottom below the ground means the ground; the top must lie inside the profile.
  EXPECT_EQ(Shr(v.data(), n, 0.0, 3000.0), Shr(v.data(), n, 200.0, 3000.0));
  EXPECT_EQ(Shr(v.data(), n, 0.0, 9000.0), 9999.0);
  EXPECT_EQ(Shr(v.data(), n, 3000.0, 3000.0), 9999.0);
  // An unstable column without shear: nothing to divide the CAPE by.
  auto c = tervik::test::convective_sounding();
  for (auto& l : c) {
    l.wind_dir = 250.0;
    l.wind_speed = 12.0;
  }
  ASSERT_NE(call(CAPE, c), 9999.0);
  EXPECT_EQ(call(BRN, c), 9999.0);
  EXPECT_EQ(call(SSI, c), 9999.0);
}

TEST(Helicity, VeeringWindAgainstAStillStormIsPositive) {
  // No wind between 400 and 850 hPa, so the storm stands still. The wind veers from
  // southerly to westerly at 10 m/s within the lowest 300 m: the helicity is 10 x 10.
  std::vector<tag_tlogp_layer> v{
      make_level(1000, 100, 20, 10, 180, 10), make_level(980, 250, 19, 9, 270, 10),
      make_level(950, 500, 17, 8, 270, 10),   make_level(900, 950, 14, 6, 270, 10),
      make_level(700, 3000, 0, -5),           make_level(500, 5600, -15, -25)};
  EXPECT_NEAR(call(SRH, v), 100.0, 1e-9);
  v[0].wind_dir = 0.0;  // backing instead turns the sign
  EXPECT_NEAR(call(SRH, v), -100.0, 1e-9);
}

TEST(WindDifference, ReportedLevelsAsTheyStandOthersSampled) {
  std::vector<tag_tlogp_layer> v{
      make_level(1000, 100, 20, 10, 270, 5), make_level(850, 1500, 12, 5, 270, 10),
      make_level(400, 7200, -25, -35, 270, 20), make_level(200, 11800, -55, -65, 270, 40)};
  // 300 hPa is not reported: sampled linearly in pressure halfway, 30 m/s.
  EXPECT_NEAR(call(TQG, v), 20.0 * 20.0, 1e-9);
  v[1].wind_speed = 9999.0;  // a reported level's wind is used as it stands
  EXPECT_GT(call(TQG, v), 1e7);
  v[1].wind_speed = 10.0;
  v[3].wind_dir = 9999.0;  // the sample at 300 hPa cannot be made
  EXPECT_EQ(call(TQG, v), 9999.0);
}

}  // namespace
