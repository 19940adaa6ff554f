// Every index against its record slot, and input outside the contract: indices answer
// 9999.0, profile functions fail leaving their outputs alone, and no search walks forever.

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"

namespace {

using tervik::test::convective_sounding;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

double call(double (*f)(tag_tlogp_layer*, int), std::vector<tag_tlogp_layer>& v) {
  return f(v.data(), static_cast<int>(v.size()));
}

double shr06(tag_tlogp_layer* l, int n) { return Shr(l, n, 0.0, 600.0); }
double ct2(tag_tlogp_layer* l, int n) { return CT(l, n, 2.0); }

// Every index with the key of its slot in the physics record ("" when it has none).
struct Index { const char* key; double (*f)(tag_tlogp_layer*, int); };

const Index kIndices[] = {
    {"A", A}, {"Tc", Tc}, {"IQ", IntQ}, {"TT", TT}, {"LI", LI}, {"SI", SI}, {"K", K},
    {"mK", Kmod}, {"DCI", DCI}, {"SLW", SLW}, {"Wd_D", sigma_D}, {"Wd_L", sigma_L},
    {"Wd_S", sigma_S}, {"BLI", BLI}, {"Faust", Faust}, {"IC", Iconve}, {"ILC", Icondi_conve},
    {"JI", JI}, {"TMJ", mJI}, {"Teffer", Teffer}, {"ChTT", TTmod}, {"mKO", Kmod2},
    {"Shr", shr06}, {"w_cape", w_cape}, {"w_cin", w_cin}, {"Wm", Wm}, {"MDPI", MDPI},
    {"VV", VV}, {"SWEAT", SWEAT}, {"SSI", SSI}, {"SWISS00", SWISS00}, {"SWISS12", SWISS12},
    {"TQG", TQG}, {"SRH", SRH}, {"Dm", Dm}, {"BRN", BRN}, {"CAPE", CAPE}, {"CIN", CIN},
    {"EHI", EHI}, {"ZH", z_t0}, {"Zm20H", z_tm20}, {"Zm30H", z_tm30}, {"Hd_020", Hd0_20},
    {"Hd_204", Hd20_40}, {"", Icondi}, {"", ct2}};

struct BadProfile { const char* what; void (*edit)(std::vector<tag_tlogp_layer>&); };

const BadProfile kBadProfiles[] = {
    {"empty", [](auto& v) { v.clear(); }},
    {"all invalid", [](auto& v) { for (auto& l : v) l.valid = false; }},
    {"unsorted", [](auto& v) { std::swap(v[3], v[10]); }},
    {"NaN dew point at the ground", [](auto& v) { v[0].td = kNaN; }},
    {"NaN pressure", [](auto& v) { v[4].p = kNaN; }},
    {"infinite height", [](auto& v) { v[6].z = kInf; }},
    {"NaN wind", [](auto& v) { v[2].wind_speed = kNaN; }},
    {"ground above 1100 hPa", [](auto& v) { v[0].p = 1100.5; }},
    {"zero pressure aloft", [](auto& v) { v.back().p = 0.0; }}};

TEST(IndicesBadInput, UnusableProfilesGiveUndefinedEverywhere) {
  for (const auto& idx : kIndices) EXPECT_EQ(idx.f(nullptr, 5), 9999.0) << idx.key;
  for (const auto& bad : kBadProfiles) {
    auto v = convective_sounding();
    bad.edit(v);
    for (const auto& idx : kIndices) {
      // Helicity reads heights and winds whatever the valid flags; the profile functions
      // behind the level slots take a profile as it comes.
      if (idx.f == SRH && std::string(bad.what) == "all invalid") continue;
      if (idx.f == Tc || idx.f == z_t0 || idx.f == z_tm20 || idx.f == z_tm30) continue;
      EXPECT_EQ(call(idx.f, v), 9999.0) << idx.key << ": " << bad.what;
    }
  }
  // The unedited sounding is not rejected: everything is defined but the reserved Teffer
  // entry point and CT (its heated thermal stops below its LCL).
  auto v = convective_sounding();
  int defined = 0;
  for (const auto& idx : kIndices) defined += call(idx.f, v) != 9999.0;
  EXPECT_EQ(defined, static_cast<int>(std::size(kIndices)) - 2);
}

// The record finds the characteristic levels once; its slots must still hold exactly what
// the index functions return.
TEST(PhysicsRecord, SlotsEqualTheirIndexFunctions) {
  for (auto levels : {convective_sounding(), tervik::test::convective_profile()}) {
    tag_physics_station r;
    compute_tlogp_physics(tag_tlogp_station{7, levels}, r);
    for (const auto& idx : kIndices) {
      if (*idx.key == '\0') continue;
      int k = 0;
      while (k < 67 && idx.key != std::string(tervik_physics_table[k].key)) ++k;
      EXPECT_EQ(idx.key, std::string(tervik_physics_table[k].key));
      EXPECT_EQ(r.index[k], call(idx.f, levels)) << idx.key;
    }
  }
}

// Every profile function on a profile it cannot use.
void expect_all_fail(tag_tlogp_layer* L, int n) {
  double a = -1, b = -1, c = -1;
  EXPECT_EQ(get_layer_p(L, n, 850.0), -1);
  EXPECT_FALSE(interpolate_t_at_p_far(L, n, 850.0, &a, &b) ||
               interpolate_t_at_p_near(L, n, 850.0, &a, &b));
  EXPECT_FALSE(interpolate_layer_at_z(L, n, 1000.0).valid);
  EXPECT_FALSE(LCL(L, n, &a, &b) || CCL(L, n, &a, &b));
  EXPECT_FALSE(LFC(L, n, &a, &b, &c) || EL(L, n, &a, &b, &c));
  for (double x : {interpolate_p_at_t(L, n, 0.0), interpolate_p_at_z(L, n, 1000.0), Tc(L, n)})
    EXPECT_EQ(x, 9999.0);
  EXPECT_TRUE(a == -1.0 && b == -1.0 && c == -1.0);
}

TEST(ProfileBadInput, EmptyNullInvalidAndAbsurdProfilesFailFast) {
  auto L = tervik::test::convective_profile();
  expect_all_fail(nullptr, 40);
  expect_all_fail(L.data(), -3);
  double p = 7, t = 7, td = 7;
  EXPECT_FALSE(LFC(L.data(), 40, &p, &t, nullptr));
  EXPECT_FALSE(pt_LCL(1000.0, 20.0, 10.0, &p, nullptr));
  // Pressures where 0.1 hPa steps vanish in rounding, or that never compare, end at once.
  EXPECT_FALSE(pt_LCL(1e300, 20.0, 10.0, &p, &t) || pt_LCL(kInf, 20.0, 10.0, &p, &t));
  EXPECT_TRUE(p == 7.0 && t == 7.0);
  EXPECT_EQ(theta_se(1e300, 20.0, 10.0), 9999.0);
  EXPECT_EQ(t_lift2p(1e300, 20.0, 10.0, 500.0), 9999.0);
  for (double p0 : {0.0, -50.0, kNaN, 1e5, 1e300, kInf}) {
    auto G = L;
    G[0].p = p0;
    EXPECT_FALSE(CCL(G.data(), 40, &p, &t)) << p0;
    EXPECT_FALSE(LFC(G.data(), 40, &p, &t, &td) || EL(G.data(), 40, &p, &t, &td)) << p0;
    G[0].td = G[0].t;  // saturated ground air starts the LFC walk right there
    EXPECT_FALSE(LFC(G.data(), 40, &p, &t, &td)) << p0;
    EXPECT_EQ(p, 7.0);
  }
  for (auto& l : L) l.valid = false;
  expect_all_fail(L.data(), 40);
}

}  // namespace
