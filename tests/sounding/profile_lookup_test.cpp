// Lookups along a profile: which levels anchor an interpolation, and how each target
// outside the profile fails.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"

namespace {

using tervik::test::make_level;

// Ground at 1000 hPa behind an invalid record; an inversion between 850 and 700 hPa.
std::vector<tag_tlogp_layer> small_profile() {
  return {make_level(1013.0, 0.0, 40.0, 40.0, 0.0, 0.0, false),
          make_level(1000.0, 100.0, 20.0, 15.0, 180.0, 5.0),
          make_level(850.0, 1500.0, 10.0, 5.0, 200.0, 10.0),
          make_level(700.0, 3100.0, 12.0, -10.0, 250.0, 20.0),
          make_level(500.0, 5700.0, -20.0, -30.0, 270.0, 30.0)};
}

// What a straight line in ln p between two levels gives at p.
double in_log_p(double a, double b, double p, double pa, double pb) {
  return a + (b - a) * (std::log(p) - std::log(pa)) / (std::log(pb) - std::log(pa));
}

TEST(LayerIndex, ExactValidMatchesOnly) {
  auto L = small_profile();
  EXPECT_EQ(get_layer_p(L.data(), 5, 850.0), 2);
  EXPECT_EQ(get_layer_p(L.data(), 5, 850.5), -1);   // no nearest-level search
  EXPECT_EQ(get_layer_p(L.data(), 5, 1013.0), -1);  // present but not valid
  EXPECT_EQ(get_layer_p(L.data(), 2, 850.0), -1);   // beyond n
  L[3].p = 850.0;                                   // a repeated pressure: the first wins
  EXPECT_EQ(get_layer_p(L.data(), 5, 850.0), 2);
  const int cases[][2] = {{0, -1}, {1, 1}, {4, 4}, {5, -1}, {-1, -1}};
  for (const auto& c : cases) EXPECT_EQ(get_layer_n(L.data(), 5, c[0]), c[1]) << c[0];
}

TEST(TemperatureAtPressure, NearUsesTheEnclosingLevelsFarTheGround) {
  auto L = small_profile();
  double t = 0, td = 0;
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), 5, 775.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(10.0, 12.0, 775.0, 850.0, 700.0), 1e-12);
  EXPECT_NEAR(td, in_log_p(5.0, -10.0, 775.0, 850.0, 700.0), 1e-12);
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), 5, 775.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(20.0, 12.0, 775.0, 1000.0, 700.0), 1e-12);
  EXPECT_NEAR(td, in_log_p(15.0, -10.0, 775.0, 1000.0, 700.0), 1e-12);
  // a level's own pressure returns its values; the ground too
  for (int i : {1, 2, 3, 4}) {
    ASSERT_TRUE(interpolate_t_at_p_near(L.data(), 5, L[i].p, &t, &td));
    EXPECT_EQ(t, L[i].t);
    EXPECT_EQ(td, L[i].td);
  }
}

TEST(TemperatureAtPressure, FailsBelowGroundAboveTopAndOnALoneLevel) {
  auto L = small_profile();
  double t = 7, td = 7;
  for (double p : {1000.5, 499.9, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(interpolate_t_at_p_near(L.data(), 5, p, &t, &td)) << p;
    EXPECT_FALSE(interpolate_t_at_p_far(L.data(), 5, p, &t, &td)) << p;
  }
  // the first valid level is the last record: nothing to interpolate towards, not even
  // at its own pressure
  std::vector<tag_tlogp_layer> lone = {make_level(900.0, 0.0, 5.0, 1.0, 0.0, 0.0, false),
                                       make_level(850.0, 500.0, 3.0, 1.0)};
  EXPECT_FALSE(interpolate_t_at_p_near(lone.data(), 2, 850.0, &t, &td));
  EXPECT_FALSE(interpolate_t_at_p_far(lone.data(), 2, 850.0, &t, &td));
  EXPECT_FALSE(interpolate_t_at_p_near(L.data(), 5, 800.0, nullptr, &td));
  EXPECT_EQ(t, 7.0);
  EXPECT_EQ(td, 7.0);
}

TEST(TemperatureAtPressure, RepeatedPressureBecomesTheLowerAnchor) {
  auto L = small_profile();
  L[3] = make_level(850.0, 1500.0, 14.0, 0.0);  // a second report at 850 hPa
  double t = 0, td = 0;
  ASSERT_TRUE(interpolate_t_at_p_near(L.data(), 5, 700.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(14.0, -20.0, 700.0, 850.0, 500.0), 1e-12);
  // the far form skips it too and anchors on the ground
  ASSERT_TRUE(interpolate_t_at_p_far(L.data(), 5, 900.0, &t, &td));
  EXPECT_NEAR(t, in_log_p(20.0, 10.0, 900.0, 1000.0, 850.0), 1e-12);
}

TEST(IsothermLevels, FirstCrossingFromBelowLinearInTemperature) {
  auto L = small_profile();
  // 15 deg C lies between the ground (20) and 850 hPa (10)
  EXPECT_NEAR(interpolate_z_at_t(L.data(), 5, 15.0), 800.0, 1e-9);
  EXPECT_NEAR(interpolate_p_at_t(L.data(), 5, 15.0), 925.0, 1e-9);
  // 11 deg C is crossed below 850 hPa; the inversion's 11 deg C aloft is never seen
  EXPECT_NEAR(interpolate_p_at_t(L.data(), 5, 11.0), 865.0, 1e-9);
  // 0 deg C: from 12 at 700 to -20 at 500 hPa
  EXPECT_NEAR(z_t0(L.data(), 5), 3100.0 + 2600.0 * 12.0 / 32.0, 1e-9);
  EXPECT_NEAR(p_t0(L.data(), 5), 700.0 - 200.0 * 12.0 / 32.0, 1e-9);
  EXPECT_EQ(z_tm20(L.data(), 5), 5700.0);
  EXPECT_EQ(p_tm20(L.data(), 5), 500.0);
  EXPECT_EQ(z_tm30(L.data(), 5), 9999.0);  // never reached
  EXPECT_EQ(p_tm30(L.data(), 5), 9999.0);
  // warmer than the ground: undefined, even where a warmer layer aloft crosses it
  L[3].t = 25.0;
  EXPECT_EQ(interpolate_z_at_t(L.data(), 5, 22.0), 9999.0);
  EXPECT_EQ(interpolate_p_at_t(L.data(), 5, 22.0), 9999.0);
}

TEST(PressureAtHeight, SkipsLevelsWithoutHeight) {
  auto L = small_profile();
  L[2].z = 9999.0;
  EXPECT_NEAR(interpolate_p_at_z(L.data(), 5, 1600.0), 1000.0 - 300.0 * 1500.0 / 3000.0, 1e-9);
  EXPECT_EQ(interpolate_p_at_z(L.data(), 5, 50.0), 9999.0);    // below the first height
  EXPECT_EQ(interpolate_p_at_z(L.data(), 5, 6000.0), 9999.0);  // above the last
  EXPECT_EQ(interpolate_p_at_z(L.data(), 5, 100.0), 1000.0);
}

TEST(LayerSample, LinearInPressureOverCompleteLevels) {
  auto L = small_profile();
  L[2].wind_speed = 9999.0;  // 850 hPa lacks a wind: it does not count
  const layer_sample s = interpolate_layer_at_p(L.data(), 5, 850.0);
  ASSERT_TRUE(s.valid);
  const double w = (850.0 - 1000.0) / (700.0 - 1000.0);
  EXPECT_EQ(s.p, 850.0);
  EXPECT_NEAR(s.z, 100.0 + 3000.0 * w, 1e-9);
  EXPECT_NEAR(s.t, 20.0 - 8.0 * w, 1e-12);
  EXPECT_NEAR(s.td, 15.0 - 25.0 * w, 1e-12);
  EXPECT_NEAR(s.wind_dir, 180.0 + 70.0 * w, 1e-12);
  EXPECT_NEAR(s.wind_speed, 5.0 + 15.0 * w, 1e-12);
  // the same point found by its height
  const layer_sample h = interpolate_layer_at_z(L.data(), 5, s.z);
  ASSERT_TRUE(h.valid);
  EXPECT_NEAR(h.p, 850.0, 1e-9);
  EXPECT_NEAR(h.wind_speed, s.wind_speed, 1e-9);
  EXPECT_EQ(h.z, s.z);
}

TEST(LayerSample, DirectionIsAPlainNumberAcrossNorth) {
  std::vector<tag_tlogp_layer> L = {make_level(1000.0, 0.0, 10.0, 5.0, 350.0, 10.0),
                                    make_level(900.0, 900.0, 5.0, 0.0, 10.0, 10.0)};
  EXPECT_NEAR(interpolate_layer_at_p(L.data(), 2, 950.0).wind_dir, 180.0, 1e-12);
}

TEST(LayerSample, FailureIsInvalidWithEveryValueUndefined) {
  auto L = small_profile();
  const layer_sample failures[] = {
      interpolate_layer_at_p(L.data(), 5, 1001.0), interpolate_layer_at_p(L.data(), 5, 400.0),
      interpolate_layer_at_z(L.data(), 5, 50.0), interpolate_layer_at_z(L.data(), 5, 6000.0),
      interpolate_layer_at_p(L.data(), 5, std::numeric_limits<double>::quiet_NaN())};
  for (const auto& s : failures) {
    EXPECT_FALSE(s.valid);
    for (double x : {s.p, s.z, s.t, s.td, s.wind_dir, s.wind_speed}) EXPECT_EQ(x, 9999.0);
  }
  // the ground itself is a valid sample with its own values
  const layer_sample g = interpolate_layer_at_p(L.data(), 5, 1000.0);
  ASSERT_TRUE(g.valid);
  EXPECT_EQ(g.t, 20.0);
  EXPECT_EQ(g.wind_dir, 180.0);
}

}  // namespace
