// Profile lookups (which levels anchor an interpolation) and the characteristic levels
// against their definitions: the 0.1 hPa parcel walks, the EL latch, the 1 hPa CCL search.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"

namespace {

using tervik::test::convective_profile;
using tervik::test::make_level;

// Ground at 1000 hPa behind an invalid record; an inversion between 850 and 700 hPa.
std::vector<tag_tlogp_layer> small_profile() {
  return {make_level(1013, 0, 40, 40, 0, 0, false), make_level(1000, 100, 20, 15, 180, 5),
          make_level(850, 1500, 10, 5, 200, 10), make_level(700, 3100, 12, -10, 250, 20),
          make_level(500, 5700, -20, -30, 270, 30)};
}

// The temperature at p on a straight line in ln p through (pa, a) and (pb, b).
double in_log_p(double a, double b, double p, double pa, double pb) {
  return a + (b - a) * std::log(p / pa) / std::log(pb / pa);
}

// Parcel minus environment at p, or NaN where the profile gives no environment.
double buoyancy(std::vector<tag_tlogp_layer>& L, double p, double theta_se) {
  double te, td;
  if (!interpolate_t_at_p_near(L.data(), static_cast<int>(L.size()), p, &te, &td))
    return std::numeric_limits<double>::quiet_NaN();
  return t_wet_adiabat(p, theta_se) - te;
}

TEST(ProfileLookup, ExactLevelsAndTheAnchorsOfEachInterpolation) {
  auto L = small_profile();
  EXPECT_EQ(get_layer_p(L.data(), 5, 850.0), 2);
  EXPECT_EQ(get_layer_p(L.data(), 5, 850.5), -1);   // no nearest-level search
  EXPECT_EQ(get_layer_p(L.data(), 5, 1013.0), -1);  // present but not valid
  double t = 0, td = 0;
  // near: the enclosing levels; far: the ground and the level above
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), 5, 775.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(10.0, 12.0, 775.0, 850.0, 700.0), 1e-12);
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), 5, 775.0, &t, &td));
  EXPECT_NEAR(td, in_log_p(15.0, -10.0, 775.0, 1000.0, 700.0), 1e-12);
  EXPECT_FALSE(interpolate_t_at_p_far(L.data(), 5, 1000.5, &t, &td));
  // 0 deg C linearly in temperature from 12 at 700 to -20 at 500 hPa; 11 deg C is first
  // crossed below 850 hPa, the inversion's 11 deg C aloft is never seen.
  EXPECT_NEAR(z_t0(L.data(), 5), 3100.0 + 2600.0 * 12.0 / 32.0, 1e-9);
  EXPECT_NEAR(interpolate_p_at_t(L.data(), 5, 11.0), 865.0, 1e-9);
  // A layer sample is linear in pressure over the levels that have a wind.
  L[2].wind_speed = 9999.0;  // so 850 hPa does not count
  const layer_sample s = interpolate_layer_at_p(L.data(), 5, 850.0);
  EXPECT_NEAR(s.wind_dir, 180.0 + 70.0 * 0.5, 1e-12);
  EXPECT_NEAR(interpolate_layer_at_z(L.data(), 5, 100.0 + 3000.0 * 0.5).p, 850.0, 1e-9);
  const layer_sample f = interpolate_layer_at_z(L.data(), 5, 6000.0);
  for (double x : {f.p, f.z, f.t, f.td, f.wind_dir, f.wind_speed}) EXPECT_EQ(x, 9999.0);
  // A repeated pressure becomes the lower anchor of both forms.
  L[3] = make_level(850.0, 1500.0, 14.0, 0.0);
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), 5, 700.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(14.0, -20.0, 700.0, 850.0, 500.0), 1e-12);
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), 5, 900.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(20.0, 10.0, 900.0, 1000.0, 850.0), 1e-12);
}

TEST(ConvectiveProfile, LfcIsTheFirstNonNegativeBuoyancyAboveTheFirstValidLevelsLcl) {
  auto L = convective_profile();
  L.insert(L.begin(), make_level(1020.0, 0.0, 35.0, 10.0, 0.0, 0.0, false));
  const int n = static_cast<int>(L.size());
  double p_lcl, t_lcl, p_ref, t_ref, p, t, td, t_far, td_far;
  ASSERT_TRUE(LCL(L.data(), n, &p_lcl, &t_lcl));
  pt_LCL(1000.0, 30.0, 22.0, &p_ref, &t_ref);
  EXPECT_TRUE(p_lcl == p_ref && t_lcl == t_ref);
  ASSERT_TRUE(LFC(L.data(), n, &p, &t, &td));
  const double th = theta_se_s(p_lcl, t_lcl);
  // every 0.1 hPa step from the LCL up to it is negatively buoyant (the cap makes it long)
  double pc = p_lcl;
  int steps = 0;
  for (; pc != p && pc > 0; pc -= 0.1, ++steps) EXPECT_LT(buoyancy(L, pc, th), 0.0) << pc;
  EXPECT_GT(steps, 100);
  EXPECT_GE(buoyancy(L, p, th), 0.0);
  EXPECT_EQ(t, t_wet_adiabat(p, th));
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), n, p, &t_far, &td_far));
  EXPECT_EQ(td, td_far);
}

TEST(ConvectiveProfile, ElIsTheLastBuoyantStepOnTheLatchParity) {
  // Tropopauses a little apart end the buoyant run on steps of both parities.
  bool seen_odd = false, seen_even = false;
  for (int k = 0; k < 12; ++k) {
    auto L = convective_profile(-58.0 + 0.013 * k);
    const int n = static_cast<int>(L.size());
    double p_lfc, t_lfc, td_lfc, p = -1, t = -1, td = -1, t_far, td_far;
    ASSERT_TRUE(LFC(L.data(), n, &p_lfc, &t_lfc, &td_lfc));
    const double th = theta_se_s(p_lfc, t_lfc);
    // The steps of the walk from the LFC; the last buoyant run [first, last] decides.
    std::vector<double> steps;
    int run_first = -1, run_last = -1;
    for (double pc = p_lfc; pc > 0 && !std::isnan(buoyancy(L, pc, th)); pc -= 0.1) {
      steps.push_back(pc);
      const int i = static_cast<int>(steps.size()) - 1;
      if (buoyancy(L, pc, th) <= 0) continue;
      if (run_last != i - 1) run_first = i;
      run_last = i;
    }
    ASSERT_GE(run_last, 0);
    // Within a run the latch writes the first step and then every second one.
    const int length = run_last - run_first + 1;
    (length % 2 ? seen_odd : seen_even) = true;
    ASSERT_TRUE(EL(L.data(), n, &p, &t, &td));
    EXPECT_EQ(p, steps[run_first + 2 * ((length - 1) / 2)]) << "run of " << length;
    ASSERT_TRUE(interpolate_t_at_p_far(L.data(), n, p, &t_far, &td_far));
    EXPECT_EQ(t, t_far);  // the environment there, not the parcel
  }
  EXPECT_TRUE(seen_odd && seen_even);
}

TEST(ConvectiveCondensation, EnvironmentMeetsTheGroundMoistureLine) {
  auto L = convective_profile();
  const int n = static_cast<int>(L.size());
  double p = 0, t = 0, te, td;
  ASSERT_TRUE(CCL(L.data(), n, &p, &t));
  const double q0 = q(1000.0, 22.0);
  EXPECT_EQ(std::fmod(1000.0 - p, 1.0), 0.0);  // whole hectopascals from the ground
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p, &te, &td));
  EXPECT_TRUE(t == te && te <= t_iso_humidity(p, q0));
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p + 1.0, &te, &td));
  EXPECT_GT(te, t_iso_humidity(p + 1.0, q0));
  // The convective temperature is the CCL brought down its dry adiabat to the ground.
  EXPECT_NEAR(theta(1000.0, Tc(L.data(), n)), theta(p, t), 1e-9);
}

}  // namespace
