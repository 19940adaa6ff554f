#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

using tervik::test::make_level;

namespace {

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

// Saturated ground air at 1000 hPa (its own LCL) under an environment that is `excess`
// deg C colder than the parcel's pseudo-adiabat at every level from 980 to 200 hPa. The
// moist adiabat is a bisection on a 0.1 K lattice, so the levels above 990 hPa are built
// on the very adiabat that the walks use: the one through the LFC the library finds
// between 1000 and 990 hPa (which those levels cannot move).
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

}  // namespace

TEST(Cape, MatchesTheAreaOfAConstantExcess) {
  // With the parcel a constant 2 K warmer from just above the ground to 200 hPa the area
  // is Rd * 2 * ln(p_bottom / 200), less the first 10 hPa where the excess ramps up and
  // the one 2 hPa step each run loses.
  auto v = offset_adiabat(2.0);
  ASSERT_FALSE(v.empty());
  const double cape = CAPE(v.data(), size_of(v));
  const double expected = 287.05 * 2.0 * std::log(990.0 / 200.0);
  EXPECT_NEAR(cape, expected, 0.01 * expected);
  EXPECT_DOUBLE_EQ(w_cape(v.data(), size_of(v)), std::sqrt(2.0 * cape));
  // The LFC lies within the lowest 10 hPa: next to nothing inhibits the parcel.
  EXPECT_LT(CIN(v.data(), size_of(v)), 1.0);
}

TEST(Cape, DoublingTheExcessDoublesTheArea) {
  auto a = offset_adiabat(1.0), b = offset_adiabat(2.0);
  ASSERT_FALSE(a.empty() || b.empty());
  const double ca = CAPE(a.data(), size_of(a)), cb = CAPE(b.data(), size_of(b));
  EXPECT_NEAR(cb / ca, 2.0, 0.02);
}

TEST(Cape, StableProfileHasNoLfcAndEverythingIsUndefined) {
  auto v = tervik::test::stable_sounding();
  const int n = size_of(v);
  for (auto f : {CAPE, w_cape, CIN, w_cin, Wm, Dm}) EXPECT_EQ(f(v.data(), n), 9999.0);
}

TEST(Cin, CappingInversionInhibitsAndCapeStillCounts) {
  auto v = tervik::test::convective_sounding();
  const int n = size_of(v);
  const double cape0 = CAPE(v.data(), n), cin0 = CIN(v.data(), n);
  ASSERT_NE(cape0, 9999.0);
  ASSERT_NE(cin0, 9999.0);
  // Warm the air between 900 and 800 hPa by 3 K: a lid the parcel must be pushed through.
  for (auto& l : v) {
    if (l.p <= 900.0 && l.p >= 800.0) l.t += 3.0;
  }
  const double cin1 = CIN(v.data(), n);
  ASSERT_NE(cin1, 9999.0);
  EXPECT_GT(cin1, cin0 + 10.0);
  EXPECT_DOUBLE_EQ(w_cin(v.data(), n), std::sqrt(2.0 * cin1));
}

TEST(Cape, ConvectiveSoundingIsStronglyUnstable) {
  // The analytic convective sounding holds a few thousand J/kg for a surface parcel.
  auto v = tervik::test::convective_sounding();
  const int n = size_of(v);
  const double cape = CAPE(v.data(), n);
  EXPECT_GT(cape, 1500.0);
  EXPECT_LT(cape, 4500.0);
  const double wm = Wm(v.data(), n);
  ASSERT_NE(wm, 9999.0);
  EXPECT_GT(wm, 10.0);
  EXPECT_DOUBLE_EQ(Dm(v.data(), n), wm * 2.0 * wm / 484.0);
}

TEST(Cape, SingleBuoyantStepContributesNothing) {
  // The environment is 0.5 K warmer than the parcel everywhere except one 2 hPa step of
  // the walk (at 990 hPa, where the ground walk lands: 1000, 998, ..., 990) that is 3 K
  // colder: one buoyant step makes no pair, so no area.
  const double thse = theta_se_s(1000.0, 24.0);
  std::vector<tag_tlogp_layer> v{make_level(1000.0, 100.0, 24.0, 24.0)};
  for (double p = 999.0; p >= 300.0; p -= 1.0) {
    const double excess = p == 990.0 ? 3.0 : -0.5;
    const double t = t_wet_adiabat(p, thse) - excess;
    v.push_back(make_level(p, 9999.0, t, t - 5.0));
  }
  EXPECT_EQ(CAPE(v.data(), size_of(v)), 0.0);
}
