// Characteristic levels on synthetic profiles: each level checked against its definition
// through the public primitives, and every bad profile failing fast.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"

namespace {

using tervik::test::convective_profile;
using tervik::test::make_level;

// Parcel minus environment at p, or NaN where the profile gives no environment.
double buoyancy(std::vector<tag_tlogp_layer>& L, double p, double theta_se) {
  double te, td;
  if (!interpolate_t_at_p_near(L.data(), static_cast<int>(L.size()), p, &te, &td))
    return std::numeric_limits<double>::quiet_NaN();
  return t_wet_adiabat(p, theta_se) - te;
}

TEST(ConvectiveProfile, LclIsTheFirstValidLevelsParcel) {
  auto L = convective_profile();
  L.insert(L.begin(), make_level(1020.0, 0.0, 35.0, 10.0, 0.0, 0.0, false));
  const int n = static_cast<int>(L.size());
  double p = 0, t = 0, p_ref = 0, t_ref = 0;
  ASSERT_TRUE(LCL(L.data(), n, &p, &t));
  pt_LCL(1000.0, 30.0, 22.0, &p_ref, &t_ref);
  EXPECT_EQ(p, p_ref);
  EXPECT_EQ(t, t_ref);
}

TEST(ConvectiveProfile, LfcIsTheFirstNonNegativeBuoyancyAboveTheLcl) {
  auto L = convective_profile();
  const int n = static_cast<int>(L.size());
  double p_lcl, t_lcl, p, t, td;
  ASSERT_TRUE(LCL(L.data(), n, &p_lcl, &t_lcl));
  ASSERT_TRUE(LFC(L.data(), n, &p, &t, &td));
  const double th = theta_se_s(p_lcl, t_lcl);
  // every 0.1 hPa step from the LCL below it is negatively buoyant (the cap), then it
  // turns: the profile's cap must make this walk long
  double pc = p_lcl;
  int steps = 0;
  while (pc != p && pc > 0) {
    EXPECT_LT(buoyancy(L, pc, th), 0.0) << pc;
    pc -= 0.1;
    ++steps;
  }
  EXPECT_GT(steps, 100);
  EXPECT_EQ(pc, p);
  EXPECT_GE(buoyancy(L, p, th), 0.0);
  EXPECT_EQ(t, t_wet_adiabat(p, th));
  double t_far, td_far;
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), n, p, &t_far, &td_far));
  EXPECT_EQ(td, td_far);
}

TEST(ConvectiveProfile, ElIsTheLastBuoyantStepOnTheLatchParity) {
  // Tropopauses a little apart end the buoyant run on different steps; both parities of
  // the run's length must be met for the latch to be seen at work.
  bool seen_odd = false, seen_even = false;
  for (int k = 0; k < 12; ++k) {
    auto L = convective_profile(-58.0 + 0.013 * k);
    const int n = static_cast<int>(L.size());
    double p_lfc, t_lfc, td_lfc;
    ASSERT_TRUE(LFC(L.data(), n, &p_lfc, &t_lfc, &td_lfc));
    const double th = theta_se_s(p_lfc, t_lfc);
    // The steps of the walk from the LFC; the last buoyant run [first, last] decides.
    std::vector<double> steps;
    int run_first = -1, run_last = -1;
    for (double pc = p_lfc; pc > 0; pc -= 0.1) {
      const double b = buoyancy(L, pc, th);
      if (std::isnan(b)) break;
      steps.push_back(pc);
      const int i = static_cast<int>(steps.size()) - 1;
      if (b > 0) {
        if (run_last != i - 1) run_first = i;
        run_last = i;
      }
    }
    ASSERT_GE(run_last, 0);
    EXPECT_LT(steps[run_last], 300.0);  // the parcel rises into the upper troposphere
    // Within a run the latch writes the first step and then every second one.
    const int length = run_last - run_first + 1;
    (length % 2 ? seen_odd : seen_even) = true;
    const int expected = run_first + 2 * ((length - 1) / 2);
    double p = -1, t = -1, td = -1;
    ASSERT_TRUE(EL(L.data(), n, &p, &t, &td));
    EXPECT_EQ(p, steps[expected]) << "run of " << length;
    double t_far, td_far;
    ASSERT_TRUE(interpolate_t_at_p_far(L.data(), n, p, &t_far, &td_far));
    EXPECT_EQ(t, t_far);  // the environment there, not the parcel
    EXPECT_EQ(td, td_far);
  }
  EXPECT_TRUE(seen_odd);
  EXPECT_TRUE(seen_even);
}

TEST(ConvectiveProfile, ParcelAsWarmAsTheAirAtTheGroundIsItsOwnLfc) {
  // A saturated ground level whose temperature is a midpoint of the pseudo-adiabat's last
  // bisection bracket: the parcel there equals the environment exactly. Above it the air
  // warms (an inversion), so nothing is ever buoyant: EL succeeds without writing.
  const double t0 = -100.0 + 2253.0 * (200.0 / 4096.0);  // 10.009765625
  std::vector<tag_tlogp_layer> L = {make_level(950.0, 500.0, t0, t0),
                                    make_level(800.0, 1900.0, 14.0, 0.0),
                                    make_level(600.0, 4300.0, 12.0, -20.0)};
  double p = 0, t = 0, td = 0;
  ASSERT_TRUE(LFC(L.data(), 3, &p, &t, &td));
  EXPECT_EQ(p, 950.0);
  EXPECT_EQ(t, t0);
  EXPECT_EQ(td, t0);
  p = t = td = -1;
  EXPECT_TRUE(EL(L.data(), 3, &p, &t, &td));
  EXPECT_EQ(p, -1.0);
  EXPECT_EQ(t, -1.0);
}

TEST(ConvectiveCondensation, EnvironmentMeetsTheGroundMoistureLine) {
  auto L = convective_profile();
  const int n = static_cast<int>(L.size());
  double p = 0, t = 0;
  ASSERT_TRUE(CCL(L.data(), n, &p, &t));
  const double q0 = q(1000.0, 22.0);
  EXPECT_EQ(std::fmod(1000.0 - p, 1.0), 0.0);  // whole hectopascals from the ground
  double te, td;
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p, &te, &td));
  EXPECT_EQ(t, te);
  EXPECT_LE(te, t_iso_humidity(p, q0));
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p + 1.0, &te, &td));
  EXPECT_GT(te, t_iso_humidity(p + 1.0, q0));
  // The convective temperature is the CCL brought down its dry adiabat to the ground.
  const double tc = Tc(L.data(), n);
  EXPECT_NEAR(theta(1000.0, tc), theta(p, t), 1e-9);
  EXPECT_GT(tc, 30.0);  // the ground must warm past its morning temperature
}

TEST(ConvectiveCondensation, FailsOffTheTopAndForADryParcelAt10hPa) {
  auto L = convective_profile();
  double p = -1, t = -1;
  EXPECT_FALSE(CCL(L.data(), 5, &p, &t));  // the profile ends below the crossing
  EXPECT_EQ(Tc(L.data(), 5), 9999.0);
  // Bone-dry ground air under a cold isothermal column reaching 5 hPa: the moisture line
  // stays colder than the air up to 10 hPa.
  std::vector<tag_tlogp_layer> dry = {make_level(1000.0, 0.0, -50.0, -60.0),
                                      make_level(5.0, 40000.0, -50.0, -90.0)};
  EXPECT_FALSE(CCL(dry.data(), 2, &p, &t));
  EXPECT_EQ(p, -1.0);
  EXPECT_EQ(t, -1.0);
}

// Every profile function on a profile it cannot use.
void expect_all_fail(tag_tlogp_layer* L, int n) {
  double a = -1, b = -1, c = -1;
  EXPECT_EQ(get_layer_p(L, n, 850.0), -1);
  EXPECT_EQ(get_layer_n(L, n, 0), -1);
  EXPECT_FALSE(interpolate_t_at_p_far(L, n, 850.0, &a, &b));
  EXPECT_FALSE(interpolate_t_at_p_near(L, n, 850.0, &a, &b));
  EXPECT_EQ(interpolate_z_at_t(L, n, 0.0), 9999.0);
  EXPECT_EQ(interpolate_p_at_t(L, n, 0.0), 9999.0);
  EXPECT_EQ(interpolate_p_at_z(L, n, 1000.0), 9999.0);
  EXPECT_FALSE(interpolate_layer_at_p(L, n, 850.0).valid);
  EXPECT_FALSE(interpolate_layer_at_z(L, n, 1000.0).valid);
  EXPECT_FALSE(LCL(L, n, &a, &b));
  EXPECT_FALSE(CCL(L, n, &a, &b));
  EXPECT_EQ(Tc(L, n), 9999.0);
  EXPECT_FALSE(LFC(L, n, &a, &b, &c));
  EXPECT_FALSE(EL(L, n, &a, &b, &c));
  for (double x : {z_t0(L, n), z_tm20(L, n), z_tm30(L, n), p_t0(L, n), p_tm20(L, n),
                   p_tm30(L, n)})
    EXPECT_EQ(x, 9999.0);
  EXPECT_EQ(a, -1.0);
  EXPECT_EQ(b, -1.0);
  EXPECT_EQ(c, -1.0);
}

TEST(BadProfiles, EmptyNullAndAllInvalidFailEverywhere) {
  auto L = convective_profile();
  expect_all_fail(nullptr, 0);
  expect_all_fail(nullptr, 40);
  expect_all_fail(L.data(), 0);
  expect_all_fail(L.data(), -3);
  for (auto& l : L) l.valid = false;
  expect_all_fail(L.data(), 40);
}

TEST(BadProfiles, AbsurdGroundPressuresEndQuickly) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (double p0 : {0.0, -50.0, nan, 1e5, 1e300, std::numeric_limits<double>::infinity()}) {
    auto L = convective_profile();
    L[0].p = p0;
    double p = -1, t = -1, td = -1;
    EXPECT_FALSE(CCL(L.data(), 40, &p, &t)) << p0;
    EXPECT_EQ(Tc(L.data(), 40), 9999.0) << p0;
    EXPECT_FALSE(LFC(L.data(), 40, &p, &t, &td)) << p0;
    EXPECT_FALSE(EL(L.data(), 40, &p, &t, &td)) << p0;
    // saturated ground air skips the LCL search and starts the LFC walk right there
    L[0].td = L[0].t;
    EXPECT_FALSE(LFC(L.data(), 40, &p, &t, &td)) << p0;
    EXPECT_EQ(p, -1.0);
  }
}

TEST(BadProfiles, NullOutputsFail) {
  auto L = convective_profile();
  double a;
  EXPECT_FALSE(LCL(L.data(), 40, &a, nullptr));
  EXPECT_FALSE(CCL(L.data(), 40, nullptr, &a));
  EXPECT_FALSE(LFC(L.data(), 40, &a, &a, nullptr));
  EXPECT_FALSE(EL(L.data(), 40, nullptr, &a, &a));
}

}  // namespace
