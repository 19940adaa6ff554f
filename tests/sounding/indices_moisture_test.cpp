#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

using tervik::test::make_level;

namespace {

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

// Temperature falling 6.5 K per km from 15 deg C at 0 m, levels every 500 m to 12 km,
// with the 850, 700 and 500 hPa levels at round heights so they are reported exactly.
std::vector<tag_tlogp_layer> standard_lapse() {
  std::vector<tag_tlogp_layer> v;
  for (int k = 0; k <= 24; ++k) {
    const double z = 500.0 * k;
    const double p = 1013.25 * std::pow(1.0 - 0.0065 * z / 288.15, 5.2559);
    const double t = 15.0 - 0.0065 * z;
    v.push_back(make_level(p, z, t, t - 4.0, 250.0, 5.0 + z / 1000.0));
  }
  v[3].p = 850.0;
  v[6].p = 700.0;
  v[11].p = 500.0;
  return v;
}

}  // namespace

TEST(IsothermDepths, TwentyKelvinOfAConstantLapseRate) {
  auto v = standard_lapse();
  // 20 K at 6.5 K/km, whichever pair of isotherms.
  EXPECT_NEAR(Hd0_20(v.data(), size_of(v)), 20.0 / 0.0065, 1e-6);
  EXPECT_NEAR(Hd20_40(v.data(), size_of(v)), 20.0 / 0.0065, 1e-6);
  // A ground colder than 0 deg C has no 0 deg C crossing.
  for (auto& l : v) l.t -= 20.0;
  EXPECT_EQ(Hd0_20(v.data(), size_of(v)), 9999.0);
  EXPECT_NE(Hd20_40(v.data(), size_of(v)), 9999.0);
}

TEST(ColumnMoisture, TrapezoidsOverTheValidRecordsWithHeights) {
  auto v = standard_lapse();
  const double full = IntQ(v.data(), size_of(v));
  ASSERT_NE(full, 9999.0);
  // Records without a height or not valid are passed over as if absent.
  auto gappy = v;
  gappy[4].z = 9999.0;
  gappy[9].valid = false;
  std::vector<tag_tlogp_layer> removed;
  for (int i = 0; i < size_of(v); ++i) {
    if (i != 4 && i != 9) removed.push_back(v[i]);
  }
  EXPECT_DOUBLE_EQ(IntQ(gappy.data(), size_of(gappy)), IntQ(removed.data(), size_of(removed)));
  EXPECT_LT(IntQ(removed.data(), size_of(removed)), full * 1.05);
  // A column needs two heights: the only height on the last record is not a column.
  auto lone = v;
  for (auto& l : lone) l.z = 9999.0;
  lone.back().z = 12000.0;
  EXPECT_EQ(IntQ(lone.data(), size_of(lone)), 9999.0);
  lone.back().z = 9999.0;
  lone[size_of(lone) - 2].z = 11500.0;  // one height not on the last record: empty sum
  EXPECT_EQ(IntQ(lone.data(), size_of(lone)), 0.0);
}

TEST(EquivalentTemperatureIndices, LevelChoices) {
  auto v = standard_lapse();
  const int n = size_of(v);
  const double with850 = Iconve(v.data(), n);
  ASSERT_NE(with850, 9999.0);
  v[3].p = 851.0;  // no 850 hPa: the lower level becomes 700 hPa
  const double with700 = Iconve(v.data(), n);
  EXPECT_DOUBLE_EQ(with700, theta_se(500.0, v[11].t, v[11].td) - theta_se(700.0, v[6].t, v[6].td));
  v[6].p = 701.0;
  EXPECT_EQ(Iconve(v.data(), n), 9999.0);
  EXPECT_EQ(Icondi_conve(v.data(), n), 9999.0);
  // Icondi insists on record 0 itself.
  v = standard_lapse();
  EXPECT_NE(Icondi(v.data(), n), 9999.0);
  EXPECT_DOUBLE_EQ(Icondi_conve(v.data(), n), Icondi(v.data(), n) + Iconve(v.data(), n));
  v[0].valid = false;
  EXPECT_EQ(Icondi(v.data(), n), 9999.0);
}

TEST(EquivalentTemperatureIndices, MdpiSpreadOverTheValidRecords) {
  auto v = standard_lapse();
  std::vector<tag_tlogp_layer> one(v.begin(), v.begin() + 1);
  EXPECT_EQ(MDPI(one.data(), 1), 0.0);
  one[0].valid = false;
  EXPECT_EQ(MDPI(one.data(), 1), 9999.0);
  // A record marked invalid does not widen the spread, however odd its values.
  const double mdpi = MDPI(v.data(), size_of(v));
  v[8].td = v[8].t = 60.0;
  v[8].valid = false;
  EXPECT_EQ(MDPI(v.data(), size_of(v)), mdpi);
}

TEST(StaticEnergyIndices, SamplesNeedHeightsAndWinds) {
  auto v = standard_lapse();
  const int n = size_of(v);
  for (auto f : {sigma_D, sigma_L, sigma_S}) EXPECT_NE(f(v.data(), n), 9999.0);
  // Dry static energy rises with height in any atmosphere lapsing slower than 9.8 K/km.
  EXPECT_GT(sigma_D(v.data(), n), 0.0);
  for (auto& l : v) l.wind_speed = 9999.0;  // no level can be sampled
  for (auto f : {sigma_D, sigma_L, sigma_S}) EXPECT_EQ(f(v.data(), n), 9999.0);
}

TEST(ConvectiveTrigger, HeatedThermalCondensesAtItsOwnLcl) {
  // A dry-adiabatic boundary layer up to 700 hPa: any heating sends the thermal up to
  // its condensation level, which the 1 hPa search finds to within a step.
  std::vector<tag_tlogp_layer> v;
  const double theta_k = (25.0 + 273.15) * std::pow(1000.0 / 1000.0, 0.286);
  for (double p = 1000.0; p >= 700.0; p -= 25.0) {
    const double t = theta_k / std::pow(1000.0 / p, 0.286) - 273.15;
    v.push_back(make_level(p, 9999.0, t, 10.0));
  }
  v.push_back(make_level(600.0, 9999.0, 5.0, -20.0));  // warm air aloft stops it
  const int n = size_of(v);
  const double dt = 1.0;
  double p_lcl = 0.0, t_lcl = 0.0;
  pt_LCL(1000.0, 25.0 + dt, 10.0, &p_lcl, &t_lcl);
  const double ct = CT(v.data(), n, dt);
  ASSERT_NE(ct, 9999.0);
  EXPECT_NEAR(ct, 1000.0 - p_lcl, 1.0);
  // Without heating the ground air is no warmer than its surroundings: no thermal.
  EXPECT_EQ(CT(v.data(), n, 0.0), 9999.0);
}

TEST(VerticalVelocityIndex, UsesRecordZeroEvenWhenInvalid) {
  auto v = standard_lapse();
  const int n = size_of(v);
  const double vv = VV(v.data(), n);
  ASSERT_NE(vv, 9999.0);
  v[0].valid = false;  // record 0's pressure still anchors the adiabat
  const double p0c = interpolate_p_at_t(v.data(), n, 0.0);
  EXPECT_DOUBLE_EQ(VV(v.data(), n),
                   2.0 * (Tc(v.data(), n) - t_wet_adiabat(v[0].p, theta_se_s(p0c, 0.0))));
}
