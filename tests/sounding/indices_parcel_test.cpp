// Parcel indices: the CAPE and CIN areas, the lifted indices and the heated thermal.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

namespace {

using tervik::test::make_level;

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

// Saturated ground air at 1000 hPa under an environment `excess` deg C colder than the
// parcel's pseudo-adiabat from 980 to 200 hPa: the adiabat through the LFC the walk finds
// between 1000 and 990 hPa, since the bisection's 0.1 K lattice would shift any other.
std::vector<tag_tlogp_layer> offset_adiabat(double excess) {
  const double thse = theta_se_s(1000.0, 24.0);
  std::vector<tag_tlogp_layer> v{make_level(1000.0, 100.0, 24.0, 24.0)};
  for (double p = 990.0; p >= 200.0; p -= 10.0) {
    const double t = t_wet_adiabat(p, thse) - excess;
    v.push_back(make_level(p, 9999.0, t, t - 5.0));
  }
  double p_lfc = 0.0, t_lfc = 0.0, td_lfc = 0.0;
  if (!LFC(v.data(), static_cast<int>(v.size()), &p_lfc, &t_lfc, &td_lfc)) return {};
  const double through_lfc = theta_se_s(p_lfc, t_lfc);
  for (auto& l : v) {
    if (l.p <= 980.0) {
      l.t = t_wet_adiabat(l.p, through_lfc) - excess;
      l.td = l.t - 5.0;
    }
  }
  return v;
}

// A warm moist ground under a cold 500 hPa level: every lifted parcel ends warmer than
// its surroundings. Dew points at 850, 700 and 500 hPa are equal so that their mean is
// exactly the 850 hPa value.
std::vector<tag_tlogp_layer> unstable_profile() {
  return {make_level(1000, 100, 28, 22, 180, 5),  make_level(950, 540, 25, 20, 185, 6),
          make_level(900, 990, 22, 18, 190, 7),   make_level(850, 1460, 19, 15, 200, 10),
          make_level(800, 1950, 15, 15, 210, 12), make_level(700, 3010, 8, 15, 230, 15),
          make_level(600, 4200, 0, -10, 240, 20), make_level(500, 5600, -12, 15, 250, 25),
          make_level(400, 7200, -25, -35, 255, 30)};
}

TEST(Cape, MatchesTheAreaOfAConstantExcessAndScalesWithIt) {
  // With the parcel a constant 2 K warmer from just above the ground to 200 hPa the area
  // is Rd * 2 * ln(p_bottom / 200), less the first 10 hPa where the excess ramps up and
  // the one 2 hPa step each run loses.
  auto v = offset_adiabat(2.0), half = offset_adiabat(1.0);
  ASSERT_FALSE(v.empty() || half.empty());
  const double cape = CAPE(v.data(), size_of(v));
  const double expected = 287.05 * 2.0 * std::log(990.0 / 200.0);
  EXPECT_NEAR(cape, expected, 0.01 * expected);
  EXPECT_NEAR(cape / CAPE(half.data(), size_of(half)), 2.0, 0.02);
  // The LFC lies within the lowest 10 hPa: next to nothing inhibits the parcel.
  EXPECT_LT(CIN(v.data(), size_of(v)), 1.0);
  // A lid 3 K warmer between 900 and 800 hPa inhibits a parcel that must be pushed through.
  auto c = tervik::test::convective_sounding();
  const double cin0 = CIN(c.data(), size_of(c));
  for (auto& l : c) l.t += l.p <= 900.0 && l.p >= 800.0 ? 3.0 : 0.0;
  EXPECT_GT(CIN(c.data(), size_of(c)), cin0 + 10.0);
}

TEST(Cape, SingleBuoyantStepContributesNothing) {
  // The environment is 0.5 K warmer than the parcel everywhere except one 2 hPa step of
  // the walk (at 990 hPa, where the ground walk lands: 1000, 998, ..., 990) that is 3 K
  // colder: one buoyant step makes no pair, so no area.
  const double thse = theta_se_s(1000.0, 24.0);
  std::vector<tag_tlogp_layer> v{make_level(1000.0, 100.0, 24.0, 24.0)};
  for (double p = 999.0; p >= 300.0; p -= 1.0) {
    const double t = t_wet_adiabat(p, thse) - (p == 990.0 ? 3.0 : -0.5);
    v.push_back(make_level(p, 9999.0, t, t - 5.0));
  }
  EXPECT_EQ(CAPE(v.data(), size_of(v)), 0.0);
}

TEST(LiftedIndices, UnstableProfileHasNegativeIndicesAndTheyAgree) {
  auto v = unstable_profile();
  const int n = size_of(v);
  const double si = SI(v.data(), n), li = LI(v.data(), n);
  EXPECT_LT(si, 0.0);
  EXPECT_LT(li, si);  // the ground parcel is warmer and moister than the 850 hPa one
  EXPECT_LE(BLI(v.data(), n), li);  // the best lifted index includes the ground parcel
  // Faust lifts 850 hPa air with the mean 850, 700, 500 hPa dew point: here SI's parcel.
  EXPECT_DOUBLE_EQ(Faust(v.data(), n), -12.0 - si);
  EXPECT_NE(SLW(v.data(), n), 9999.0);
  v[0].td = -60.0;  // a bone-dry ground parcel condenses above 500 hPa
  EXPECT_EQ(SLW(v.data(), n), 9999.0);
}

TEST(LiftedIndices, BliStepsFiftyHectopascalsFromTheGroundAbove700) {
  // Only the parcel at 1000 - 50 = 950 hPa is moist; a BLI tied to fixed mandatory levels
  // (1000, 850, 700) would miss it.
  auto v = unstable_profile();
  for (auto& l : v) l.td = l.t - 25.0;
  v[1].td = v[1].t;
  EXPECT_DOUBLE_EQ(BLI(v.data(), size_of(v)), -12.0 - t_lift2p(950.0, v[1].t, v[1].td, 500.0));
  std::vector<tag_tlogp_layer> high(v.begin() + 6, v.end());  // ground at 600 hPa
  EXPECT_EQ(BLI(high.data(), size_of(high)), 1000.0);
  high[1].p = 501.0;  // no 500 hPa level: the lookup comes before the ground test
  EXPECT_EQ(BLI(high.data(), size_of(high)), 9999.0);
}

TEST(JeffersonIndex, UsesTheSecondRecordWhateverItsPressure) {
  auto v = unstable_profile();
  EXPECT_DOUBLE_EQ(JI(v.data(), size_of(v)), 1.6 * theta_se_s(950.0, 25.0) + 12.0 - 11.0);
  EXPECT_EQ(JI(v.data(), 1), 9999.0);
  v[1].valid = false;  // no skipping to the next valid record
  EXPECT_EQ(JI(v.data(), size_of(v)), 9999.0);
  EXPECT_EQ(mJI(v.data(), size_of(v)), 9999.0);
}

TEST(ConvectiveTrigger, HeatedThermalCondensesAtItsOwnLcl) {
  // A dry-adiabatic boundary layer up to 700 hPa: any heating sends the thermal up to
  // its condensation level, which the 1 hPa search finds to within a step.
  std::vector<tag_tlogp_layer> v;
  for (double p = 1000.0; p >= 700.0; p -= 25.0)
    v.push_back(make_level(p, 9999.0, t_dry_adiabat(p, 25.0), 10.0));
  v.push_back(make_level(600.0, 9999.0, 5.0, -20.0));  // warm air aloft stops it
  const int n = size_of(v);
  double p_lcl = 0.0, t_lcl = 0.0;
  pt_LCL(1000.0, 26.0, 10.0, &p_lcl, &t_lcl);
  EXPECT_NEAR(CT(v.data(), n, 1.0), 1000.0 - p_lcl, 1.0);
  // Without heating the ground air is no warmer than its surroundings: no thermal.
  EXPECT_EQ(CT(v.data(), n, 0.0), 9999.0);
}

}  // namespace
