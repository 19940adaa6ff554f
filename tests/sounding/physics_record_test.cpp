#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/records.h>
#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

namespace {

using Index = double (*)(tag_tlogp_layer*, int);

int slot_of(const char* key) {
  for (int k = 0; k < 68; ++k) {
    if (std::string(tervik_physics_table[k].key) == key) return k;
  }
  return -1;
}

double shr06(tag_tlogp_layer* l, int n) { return Shr(l, n, 0.0, 600.0); }

tag_physics_station computed(const std::vector<tag_tlogp_layer>& levels, int station = 7) {
  tag_tlogp_station s{station, levels};
  tag_physics_station r;
  compute_tlogp_physics(s, r);
  return r;
}

}  // namespace

// The record finds the characteristic levels once and reuses them; every slot that has an
// index function must still hold exactly what that function returns.
TEST(PhysicsRecord, SlotsEqualTheirIndexFunctions) {
  struct Slot { const char* key; Index f; };
  const Slot slots[] = {
      {"A", A}, {"Tc", Tc}, {"IQ", IntQ}, {"TT", TT}, {"LI", LI}, {"SI", SI}, {"K", K},
      {"mK", Kmod}, {"DCI", DCI}, {"SLW", SLW}, {"Wd_D", sigma_D}, {"Wd_L", sigma_L},
      {"Wd_S", sigma_S}, {"BLI", BLI}, {"Faust", Faust}, {"IC", Iconve}, {"ILC", Icondi_conve},
      {"JI", JI}, {"TMJ", mJI}, {"Teffer", Teffer}, {"ChTT", TTmod}, {"mKO", Kmod2},
      {"Shr", shr06}, {"w_cape", w_cape}, {"w_cin", w_cin}, {"Wm", Wm}, {"MDPI", MDPI},
      {"VV", VV}, {"SWEAT", SWEAT}, {"SSI", SSI}, {"SWISS00", SWISS00}, {"SWISS12", SWISS12},
      {"TQG", TQG}, {"SRH", SRH}, {"Dm", Dm}, {"BRN", BRN}, {"CAPE", CAPE}, {"CIN", CIN},
      {"EHI", EHI}, {"ZH", z_t0}, {"Zm20H", z_tm20}, {"Zm30H", z_tm30}, {"Hd_020", Hd0_20},
      {"Hd_204", Hd20_40}};
  for (auto levels : {tervik::test::convective_sounding(), tervik::test::stable_sounding()}) {
    const tag_physics_station r = computed(levels);
    const int n = static_cast<int>(levels.size());
    for (const auto& s : slots) {
      const int k = slot_of(s.key);
      ASSERT_GE(k, 0) << s.key;
      EXPECT_EQ(r.index[k], s.f(levels.data(), n)) << s.key;
    }
  }
}

TEST(PhysicsRecord, CharacteristicLevelsFillTheirSlotsAndTheLevelArray) {
  auto v = tervik::test::convective_sounding();
  const int n = static_cast<int>(v.size());
  const tag_physics_station r = computed(v, 72357);
  EXPECT_EQ(r.header[0], 72357);
  double p = 0, t = 0, td = 0;
  ASSERT_TRUE(LCL(v.data(), n, &p, &t));
  EXPECT_EQ(r.index[slot_of("TCL_P")], p);
  EXPECT_EQ(r.index[slot_of("TCL_T")], t);
  EXPECT_EQ(r.levels[1].p, p);
  ASSERT_TRUE(LFC(v.data(), n, &p, &t, &td));
  EXPECT_EQ(r.index[slot_of("LFC_P")], p);
  EXPECT_EQ(r.index[slot_of("LFC_T")], t);
  EXPECT_EQ(r.levels[2].td, td);
  p = t = td = 9999.0;
  ASSERT_TRUE(EL(v.data(), n, &p, &t, &td));
  EXPECT_EQ(r.index[slot_of("ELC_P")], p);
  EXPECT_EQ(r.index[slot_of("ELC_T")], t);
  ASSERT_TRUE(CCL(v.data(), n, &p, &t));
  EXPECT_EQ(r.index[slot_of("CCL_P")], p);
  EXPECT_EQ(r.index[slot_of("CCL_T")], t);
  EXPECT_TRUE(r.levels[0].valid);
  EXPECT_EQ(r.levels[0].p, v[0].p);
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(r.levels[k].valid) << k;
  // The isotherm slots: pressure and height of 0, -20 and -30 deg C.
  EXPECT_EQ(r.levels[5].p, p_t0(v.data(), n));
  EXPECT_EQ(r.levels[6].z, z_tm20(v.data(), n));
  EXPECT_EQ(r.levels[7].t, -30.0);
  // Heights of the parcel levels rise from the LCL through the LFC to the EL.
  EXPECT_LT(r.levels[1].z, r.levels[2].z);
  EXPECT_LT(r.levels[2].z, r.levels[3].z);
}

TEST(PhysicsRecord, DerivedQuantitiesAreConsistentWithTheirIngredients) {
  auto v = tervik::test::convective_sounding();
  const tag_physics_station r = computed(v);
  auto x = [&](const char* key) { return r.index[slot_of(key)]; };
  for (const char* key : {"BI", "BIC", "ICC", "Ls", "GCAPE", "WCAPE", "Dc", "aa4", "aa8",
                          "CCL_mod", "YDC_P", "YDC_T", "Wd_EL", "Ld_EL", "Wd_C", "Wd_P"}) {
    EXPECT_NE(x(key), 9999.0) << key;
  }
  EXPECT_DOUBLE_EQ(x("aa4"), x("LFC_P") - x("ELC_P"));
  EXPECT_DOUBLE_EQ(x("Ld_EL"), std::log(x("LFC_P") / x("ELC_P")));
  EXPECT_DOUBLE_EQ(x("GCAPE"), x("CAPE") / x("aa8"));
  EXPECT_GT(x("Dc"), x("aa8"));  // the cloud starts at the LCL, below the LFC
  // The best lifted index of the low levels includes the ground parcel; the best
  // convective index includes 850 hPa.
  EXPECT_LE(x("BI"), x("LI"));
  EXPECT_LE(x("BIC"), x("IC"));
  // The surface-based parcel reaches its excess maximum well above the LFC.
  EXPECT_GT(x("Wd_EL"), 3.0);
  // The net LFC-EL area of a sounding without mid-level dry pockets is its CAPE.
  EXPECT_NEAR(x("WCAPE"), x("CAPE"), 0.02 * x("CAPE"));
  // The cloud of the CCL parcel grows above its base.
  EXPECT_LT(x("YDC_P"), x("CCL_P") - 100.0);
}

TEST(PhysicsRecord, LidStrengthGrowsWithAWarmerLid) {
  auto v = tervik::test::convective_sounding();
  const double before = computed(v).index[slot_of("Ls")];
  for (auto& l : v) {
    if (l.p <= 900.0 && l.p >= 800.0) l.t += 3.0;
  }
  const double after = computed(v).index[slot_of("Ls")];
  // Saturated theta_se rises by well over 3 K for 3 K of warming at these temperatures.
  EXPECT_GT(after - before, 5.0);
}

TEST(PhysicsRecord, ModifiedCclEqualsTheCclWhenTheLowLayerIsUniformlyMoist) {
  // With the same specific humidity through the lowest 50 hPa the mean is the ground's,
  // and both searches walk the same 1 hPa steps.
  auto v = tervik::test::convective_sounding(100.0);
  const double q0 = q(v[0].p, v[0].td);
  for (auto& l : v) {
    if (l.p >= v[0].p - 50.0) l.td = t_iso_humidity(l.p, q0);
  }
  const tag_physics_station r = computed(v);
  EXPECT_EQ(r.index[slot_of("CCL_mod")], r.index[slot_of("CCL_P")]);
}

TEST(PhysicsRecord, UnusableProfileLeavesEverythingUndefined) {
  for (auto levels : {std::vector<tag_tlogp_layer>{}, std::vector<tag_tlogp_layer>(3)}) {
    const tag_physics_station r = computed(levels, 5);
    EXPECT_EQ(r.header[0], 5);
    for (double x : r.index) EXPECT_EQ(x, 9999.0);
    for (const auto& l : r.levels) EXPECT_FALSE(l.valid);
  }
}

TEST(PhysicsDriver, OneEntryPerSoundingComputedWhenSelected) {
  tag_tervik_data5 data;
  data.soundings = {{101, tervik::test::convective_sounding()},
                    {202, tervik::test::stable_sounding()},
                    {303, tervik::test::convective_sounding()}};
  data.sounding_count = 3;
  std::vector<tag_physics_station> out(9);  // emptied first
  const int tt = slot_of("TT");

  create_tlogp_physics(data, out, 0);
  ASSERT_EQ(out.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(out[i].header[0], data.soundings[i].station);
    EXPECT_NE(out[i].index[tt], 9999.0);
  }

  create_tlogp_physics(data, out, 202);
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0].index[tt], 9999.0);
  EXPECT_EQ(out[0].header[0], 0);
  EXPECT_NE(out[1].index[tt], 9999.0);
  EXPECT_EQ(out[2].index[tt], 9999.0);

  create_tlogp_physics(data, out, 999);
  ASSERT_EQ(out.size(), 3u);
  for (const auto& r : out) {
    for (double x : r.index) EXPECT_EQ(x, 9999.0);
  }
}

TEST(PhysicsDriver, CountBeyondTheSequenceIsNotFollowed) {
  tag_tervik_data5 data;
  data.soundings = {{1, tervik::test::stable_sounding()}};
  data.sounding_count = 4;
  std::vector<tag_physics_station> out;
  create_tlogp_physics(data, out, 0);
  EXPECT_EQ(out.size(), 1u);
  data.sounding_count = -2;
  create_tlogp_physics(data, out, 0);
  EXPECT_TRUE(out.empty());
}
