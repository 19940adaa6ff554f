// Stability indices on soundings built so that each can be worked out by hand: the CAPE
// and CIN areas, lifted parcels, reported-level indices, shear and helicity. (TT, K,
// SWEAT and SI meet the published values of real soundings in wyoming_test.)

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"

namespace {

using tervik::test::make_level;

double call(double (*f)(tag_tlogp_layer*, int), std::vector<tag_tlogp_layer>& v) {
  return f(v.data(), static_cast<int>(v.size()));
}

// Saturated ground air at 1000 hPa; the environment `excess` deg C colder than the parcel,
// above 990 hPa along the very pseudo-adiabat the walks follow (through their LFC).
std::vector<tag_tlogp_layer> offset_adiabat(double excess) {
  const double t990 = t_wet_adiabat(990.0, theta_se_s(1000.0, 24.0)) - excess;
  std::vector<tag_tlogp_layer> v{make_level(1000.0, 100.0, 24.0, 24.0),
                                 make_level(990.0, 9999.0, t990, t990 - 5.0)};
  double p_lfc = 0.0, t_lfc = 0.0, td_lfc = 0.0;
  if (!LFC(v.data(), 2, &p_lfc, &t_lfc, &td_lfc)) return {};
  for (double p = 980.0; p >= 200.0; p -= 10.0) {
    const double t = t_wet_adiabat(p, theta_se_s(p_lfc, t_lfc)) - excess;
    v.push_back(make_level(p, 9999.0, t, t - 5.0));
  }
  return v;
}

// Isothermal levels every 100 m from the ground at 200 m to 8200 m (density falls with
// pressure alone), a westerly growing by `per_km` m/s per km from 5 m/s at the ground.
std::vector<tag_tlogp_layer> westerly_shear(double per_km) {
  std::vector<tag_tlogp_layer> v;
  for (double z = 200.0; z <= 8200.0; z += 100.0)
    v.push_back(make_level(1000.0 * std::exp(-(z - 200.0) / 8000.0), z, 10.0, 0.0, 270.0,
                           5.0 + per_km * (z - 200.0) / 1000.0));
  return v;
}

TEST(Cape, MatchesTheAreaOfAConstantExcess) {
  // A parcel 2 K warmer up to 200 hPa has an area of Rd * 2 * ln(p_bottom / 200), less
  // the ramp of the first 10 hPa and the 2 hPa step each run loses.
  auto v = offset_adiabat(2.0), half = offset_adiabat(1.0);
  const double expected = 287.05 * 2.0 * std::log(990.0 / 200.0);
  EXPECT_NEAR(call(CAPE, v), expected, 0.01 * expected);
  EXPECT_NEAR(call(CAPE, v) / call(CAPE, half), 2.0, 0.02);
  EXPECT_LT(call(CIN, v), 1.0);  // the LFC lies within the lowest 10 hPa
}

TEST(Cape, SingleBuoyantStepContributesNothing) {
  // The environment is 0.5 K warmer than the parcel except at 990 hPa, one 2 hPa step of
  // the walk (1000, 998, ..., 990), 3 K colder: one buoyant step makes no pair, no area.
  const double thse = theta_se_s(1000.0, 24.0);
  std::vector<tag_tlogp_layer> v{make_level(1000.0, 100.0, 24.0, 24.0)};
  for (double p = 999.0; p >= 300.0; p -= 1.0) {
    const double t = t_wet_adiabat(p, thse) - (p == 990.0 ? 3.0 : -0.5);
    v.push_back(make_level(p, 9999.0, t, t - 5.0));
  }
  EXPECT_EQ(call(CAPE, v), 0.0);
}

TEST(LiftedIndices, ParcelsFromTheGroundFrom850AndEveryFiftyHectopascals) {
  // Warm moist ground, cold 500 hPa; equal 850/700/500 dew points make Faust's parcel SI's.
  std::vector<tag_tlogp_layer> v{
      make_level(1000, 100, 28, 22, 180, 5),  make_level(950, 540, 25, 20, 185, 6),
      make_level(900, 990, 22, 18, 190, 7),   make_level(850, 1460, 19, 15, 200, 10),
      make_level(800, 1950, 15, 15, 210, 12), make_level(700, 3010, 8, 15, 230, 15),
      make_level(600, 4200, 0, -10, 240, 20), make_level(500, 5600, -12, 15, 250, 25),
      make_level(400, 7200, -25, -35, 255, 30)};
  const double si = call(SI, v);
  EXPECT_LT(call(LI, v), si);  // the ground parcel is warmer and moister than the 850 hPa one
  EXPECT_DOUBLE_EQ(call(Faust, v), -12.0 - si);
  // Only the parcel at 1000 - 50 hPa is moist: a BLI from fixed levels would miss it.
  for (auto& l : v) l.td = l.t - 25.0;
  v[1].td = v[1].t;
  EXPECT_DOUBLE_EQ(call(BLI, v), -12.0 - t_lift2p(950.0, 25.0, 25.0, 500.0));
  std::vector<tag_tlogp_layer> high(v.begin() + 6, v.end());  // ground at 600 hPa
  EXPECT_EQ(call(BLI, high), 1000.0);
  high[1].p = 501.0;  // no 500 hPa level: the lookup comes before the ground test
  EXPECT_EQ(call(BLI, high), 9999.0);
}

TEST(TotalsIndices, HandWorkedValuesFromExactlyReportedLevels) {
  // Round numbers: t850 20, td850 15, t700 8, td700 2, t500 -10, td500 -20.
  std::vector<tag_tlogp_layer> v{
      make_level(1000, 100, 26, 18, 180, 5),  make_level(925, 760, 22, 16, 190, 6),
      make_level(850, 1460, 20, 15, 200, 10), make_level(700, 3010, 8, 2, 230, 15),
      make_level(500, 5600, -10, -20, 250, 25), make_level(300, 9200, -40, -50, 260, 35)};
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
  v[3].valid = false;  // 700 hPa present but not valid: K needs it, TT does not
  EXPECT_EQ(call(K, v), 9999.0);
  EXPECT_NE(call(TT, v), 9999.0);
  v[2].p = 850.5;  // a near miss is not 850 hPa
  for (auto f : {TT, K, A, TTmod, Kmod2}) EXPECT_EQ(call(f, v), 9999.0);
}

TEST(BulkShear, LinearProfileGivesJustUnderHalfTheEndDifference) {
  // Weighting by density pulls a linear wind's layer mean from halfway towards the bottom.
  auto v = westerly_shear(4.0), half = westerly_shear(2.0);
  const int n = static_cast<int>(v.size());
  const double shr = Shr(v.data(), n, 1000.0, 5000.0);  // 16 m/s across the layer
  EXPECT_TRUE(shr > 7.0 && shr < 8.0) << shr;
  EXPECT_NEAR(Shr(half.data(), n, 1000.0, 5000.0), shr / 2.0, 1e-9);
  // A bottom below the ground means the ground; the top must lie inside the profile.
  EXPECT_EQ(Shr(v.data(), n, 0.0, 3000.0), Shr(v.data(), n, 200.0, 3000.0));
  EXPECT_EQ(Shr(v.data(), n, 0.0, 9000.0), 9999.0);
  EXPECT_EQ(Shr(v.data(), n, 3000.0, 3000.0), 9999.0);
  // An unstable column without shear: nothing to divide its CAPE by.
  auto c = tervik::test::convective_sounding();
  for (auto& l : c) l.wind_dir = 250.0;
  for (auto& l : c) l.wind_speed = 12.0;
  EXPECT_EQ(call(BRN, c), 9999.0);
  EXPECT_EQ(call(SSI, c), 9999.0);
}

TEST(Helicity, VeeringWindAgainstAStillStormIsPositive) {
  // Calm from 850 to 400 hPa keeps the storm still; a 10 m/s southerly veering to a
  // westerly in the lowest 300 m gives a helicity of 10 x 10.
  std::vector<tag_tlogp_layer> v{
      make_level(1000, 100, 20, 10, 180, 10), make_level(980, 250, 19, 9, 270, 10),
      make_level(950, 500, 17, 8, 270, 10),   make_level(900, 950, 14, 6, 270, 10),
      make_level(700, 3000, 0, -5),           make_level(500, 5600, -15, -25)};
  EXPECT_NEAR(call(SRH, v), 100.0, 1e-9);
  v[0].wind_dir = 0.0;  // backing instead turns the sign
  EXPECT_NEAR(call(SRH, v), -100.0, 1e-9);
}

}  // namespace
