// Input outside the contract: every index answers at once with 9999.0, every profile
// function fails without touching its outputs, and no search walks forever.

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

namespace {

using tervik::test::convective_sounding;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

double shr06(tag_tlogp_layer* l, int n) { return Shr(l, n, 0.0, 600.0); }
double ct2(tag_tlogp_layer* l, int n) { return CT(l, n, 2.0); }

struct Named {
  const char* name;
  double (*f)(tag_tlogp_layer*, int);
};

const Named kIndices[] = {
    {"SI", SI}, {"LI", LI}, {"BLI", BLI}, {"DCI", DCI}, {"SLW", SLW}, {"TT", TT},
    {"TTmod", TTmod}, {"K", K}, {"Kmod", Kmod}, {"Kmod2", Kmod2}, {"Faust", Faust},
    {"JI", JI}, {"mJI", mJI}, {"A", A}, {"SWEAT", SWEAT}, {"CAPE", CAPE}, {"w_cape", w_cape},
    {"CIN", CIN}, {"w_cin", w_cin}, {"SSI", SSI}, {"SWISS00", SWISS00}, {"SWISS12", SWISS12},
    {"BRN", BRN}, {"SRH", SRH}, {"EHI", EHI}, {"Hd0_20", Hd0_20}, {"Hd20_40", Hd20_40},
    {"Iconve", Iconve}, {"Icondi", Icondi}, {"Icondi_conve", Icondi_conve}, {"VV", VV},
    {"Wm", Wm}, {"Dm", Dm}, {"MDPI", MDPI}, {"sigma_S", sigma_S}, {"sigma_D", sigma_D},
    {"sigma_L", sigma_L}, {"TQG", TQG}, {"IntQ", IntQ}, {"Teffer", Teffer},
    {"sigma_C", sigma_C}, {"sigma_P", sigma_P}, {"Shr", shr06}, {"CT", ct2}};

struct BadProfile {
  const char* what;
  void (*edit)(std::vector<tag_tlogp_layer>&);
};

const BadProfile kBadProfiles[] = {
    {"all invalid", [](auto& v) { for (auto& l : v) l.valid = false; }},
    {"unsorted", [](auto& v) { std::swap(v[3], v[10]); }},
    {"NaN temperature", [](auto& v) { v[5].t = kNaN; }},
    {"NaN dew point at the ground", [](auto& v) { v[0].td = kNaN; }},
    {"NaN pressure", [](auto& v) { v[4].p = kNaN; }},
    {"infinite height", [](auto& v) { v[6].z = kInf; }},
    {"NaN wind", [](auto& v) { v[2].wind_speed = kNaN; }},
    {"ground at 1e9 hPa", [](auto& v) { v[0].p = 1e9; }},
    {"ground above 1100 hPa", [](auto& v) { v[0].p = 1100.5; }},
    {"zero pressure aloft", [](auto& v) { v.back().p = 0.0; }},
    {"negative pressure aloft", [](auto& v) { v.back().p = -5.0; }}};

TEST(IndicesBadInput, UnusableProfilesGiveUndefinedEverywhere) {
  tag_tlogp_layer one = tervik::test::make_level(1000, 0, 20, 10, 180, 5);
  for (const auto& idx : kIndices) {
    EXPECT_EQ(idx.f(nullptr, 5), 9999.0) << idx.name;
    EXPECT_EQ(idx.f(&one, 0), 9999.0) << idx.name;
    EXPECT_EQ(idx.f(&one, -3), 9999.0) << idx.name;
  }
  for (const auto& bad : kBadProfiles) {
    auto v = convective_sounding();
    bad.edit(v);
    for (const auto& idx : kIndices) {
      // Helicity reads records by their heights and winds, not their valid flags.
      if (idx.f == SRH && std::string(bad.what) == "all invalid") continue;
      EXPECT_EQ(idx.f(v.data(), static_cast<int>(v.size())), 9999.0)
          << idx.name << ": " << bad.what;
    }
  }
  // The unedited sounding is not rejected: everything is defined but the reserved Teffer
  // entry point under its three names and CT (its heated thermal stops below its LCL).
  auto v = convective_sounding();
  int defined = 0;
  for (const auto& idx : kIndices) defined += idx.f(v.data(), static_cast<int>(v.size())) != 9999.0;
  EXPECT_EQ(defined, static_cast<int>(std::size(kIndices)) - 4);
}

// Every profile function on a profile it cannot use.
void expect_all_fail(tag_tlogp_layer* L, int n) {
  double a = -1, b = -1, c = -1;
  EXPECT_EQ(get_layer_p(L, n, 850.0), -1);
  EXPECT_FALSE(interpolate_t_at_p_far(L, n, 850.0, &a, &b));
  EXPECT_FALSE(interpolate_t_at_p_near(L, n, 850.0, &a, &b));
  EXPECT_FALSE(interpolate_layer_at_z(L, n, 1000.0).valid);
  EXPECT_FALSE(LCL(L, n, &a, &b));
  EXPECT_FALSE(CCL(L, n, &a, &b));
  EXPECT_FALSE(LFC(L, n, &a, &b, &c));
  EXPECT_FALSE(EL(L, n, &a, &b, &c));
  for (double x : {interpolate_p_at_t(L, n, 0.0), interpolate_p_at_z(L, n, 1000.0), Tc(L, n)})
    EXPECT_EQ(x, 9999.0);
  EXPECT_TRUE(a == -1.0 && b == -1.0 && c == -1.0);
}

TEST(ProfileBadInput, EmptyNullInvalidAndAbsurdProfilesFailFast) {
  auto L = tervik::test::convective_profile();
  expect_all_fail(nullptr, 40);
  expect_all_fail(L.data(), 0);
  expect_all_fail(L.data(), -3);
  double a = 0, b = 0;
  EXPECT_FALSE(LFC(L.data(), 40, &a, &b, nullptr));
  // Pressures where 0.1 hPa steps vanish in rounding, or that never compare, end at once.
  for (double p0 : {0.0, -50.0, kNaN, 1e5, 1e300, kInf}) {
    auto G = tervik::test::convective_profile();
    G[0].p = p0;
    double p = -1, t = -1, td = -1;
    EXPECT_FALSE(CCL(G.data(), 40, &p, &t)) << p0;
    EXPECT_FALSE(LFC(G.data(), 40, &p, &t, &td)) << p0;
    EXPECT_FALSE(EL(G.data(), 40, &p, &t, &td)) << p0;
    G[0].td = G[0].t;  // saturated ground air starts the LFC walk right there
    EXPECT_FALSE(LFC(G.data(), 40, &p, &t, &td)) << p0;
    EXPECT_EQ(p, -1.0);
  }
  for (auto& l : L) l.valid = false;
  expect_all_fail(L.data(), 40);
  double p = 7, t = 7;
  EXPECT_FALSE(pt_LCL(1e300, 20.0, 10.0, &p, &t));
  EXPECT_FALSE(pt_LCL(kInf, 20.0, 10.0, &p, &t));
  EXPECT_FALSE(pt_LCL(1000.0, 20.0, 10.0, &p, nullptr));
  EXPECT_TRUE(p == 7.0 && t == 7.0);
  EXPECT_EQ(theta_se(1e300, 20.0, 10.0), 9999.0);
  EXPECT_EQ(t_lift2p(1e300, 20.0, 10.0, 500.0), 9999.0);
}

}  // namespace
