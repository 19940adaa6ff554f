// Profiles outside the contract: every index answers at once with 9999.0.

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

namespace {

using Index = double (*)(tag_tlogp_layer*, int);

struct Named {
  const char* name;
  Index f;
};

double shr06(tag_tlogp_layer* l, int n) { return Shr(l, n, 0.0, 600.0); }
double ct2(tag_tlogp_layer* l, int n) { return CT(l, n, 2.0); }

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
  std::vector<tag_tlogp_layer> levels;
};

std::vector<BadProfile> bad_profiles() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<BadProfile> out;
  auto edit = [&](const char* what, auto change) {
    std::vector<tag_tlogp_layer> v = tervik::test::convective_sounding();
    change(v);
    out.push_back({what, v});
  };
  edit("all invalid", [](auto& v) { for (auto& l : v) l.valid = false; });
  edit("unsorted", [](auto& v) { std::swap(v[3], v[10]); });
  edit("NaN temperature", [&](auto& v) { v[5].t = nan; });
  edit("NaN dew point at the ground", [&](auto& v) { v[0].td = nan; });
  edit("NaN pressure", [&](auto& v) { v[4].p = nan; });
  edit("infinite height", [&](auto& v) { v[6].z = inf; });
  edit("NaN wind", [&](auto& v) { v[2].wind_speed = nan; });
  edit("ground at 1e9 hPa", [](auto& v) { v[0].p = 1e9; });
  edit("ground above 1100 hPa", [](auto& v) { v[0].p = 1100.5; });
  edit("zero pressure aloft", [](auto& v) { v.back().p = 0.0; });
  edit("negative pressure aloft", [](auto& v) { v.back().p = -5.0; });
  return out;
}

}  // namespace

TEST(IndicesBadInput, NullEmptyAndNegativeCounts) {
  tag_tlogp_layer one = tervik::test::make_level(1000, 0, 20, 10, 180, 5);
  for (const auto& idx : kIndices) {
    EXPECT_EQ(idx.f(nullptr, 5), 9999.0) << idx.name;
    EXPECT_EQ(idx.f(&one, 0), 9999.0) << idx.name;
    EXPECT_EQ(idx.f(&one, -3), 9999.0) << idx.name;
  }
}

TEST(IndicesBadInput, UnusableProfilesGiveUndefinedEverywhere) {
  for (auto& bad : bad_profiles()) {
    const int n = static_cast<int>(bad.levels.size());
    for (const auto& idx : kIndices) {
      // Helicity reads records by their heights and winds, not their valid flags: a
      // profile marked all invalid still has a helicity.
      if (idx.f == SRH && std::string(bad.what) == "all invalid") continue;
      EXPECT_EQ(idx.f(bad.levels.data(), n), 9999.0) << idx.name << ": " << bad.what;
    }
  }
}

TEST(IndicesBadInput, SoundProfileIsNotRejected) {
  // The same sounding unedited: the check must not reject what the indices can handle.
  auto v = tervik::test::convective_sounding();
  const int n = static_cast<int>(v.size());
  int defined = 0;
  for (const auto& idx : kIndices) defined += idx.f(v.data(), n) != 9999.0;
  // Everything but the reserved Teffer entry point and CT (this sounding's heated
  // thermal stops below its condensation level).
  EXPECT_EQ(defined, static_cast<int>(std::size(kIndices)) - 4);
}

TEST(IndicesBadInput, InvalidRecordsMayHoldAnything) {
  // Garbage in records marked invalid is never walked on.
  auto v = tervik::test::convective_sounding();
  const int n = static_cast<int>(v.size());
  const double cape = CAPE(v.data(), n), k = K(v.data(), n);
  tag_tlogp_layer junk;
  junk.valid = false;
  junk.p = std::numeric_limits<double>::quiet_NaN();
  junk.t = -1e300;
  v.insert(v.begin() + 7, junk);
  EXPECT_EQ(CAPE(v.data(), n + 1), cape);
  EXPECT_EQ(K(v.data(), n + 1), k);
}

TEST(IndicesBadInput, TefferIsOneStubUnderThreeNames) {
  EXPECT_EQ(&sigma_C, &Teffer);
  EXPECT_EQ(&sigma_P, &Teffer);
}
