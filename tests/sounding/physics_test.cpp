// The physics record: its key table (order, GBK labels, unit scales), the slots it fills
// from one pass over a sounding, the batch driver and the text report.

#include <iconv.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/records.h>
#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"
#include "support/paths.h"

namespace {

using Index = double (*)(tag_tlogp_layer*, int);

// The keys the report prints, in order.
const char* const kKeys =
    "A Tc IQ TT LI SI K mK DCI SLW Wd_C Wd_D Wd_L Wd_P Wd_S BLI BI BIC Faust IC ICC ILC JI "
    "TMJ Teffer ChTT mKO Shr Ls w_cape w_cin Wm MDPI VV SWEAT SSI SWISS00 SWISS12 TQG SRH Dm "
    "BRN CAPE CIN GCAPE EHI WCAPE Dc aa4 aa8 ZH Zm20H Zm30H TCL_P TCL_T ELC_P ELC_T LFC_P "
    "LFC_T CCL_P CCL_T CCL_mod YDC_P YDC_T Wd_EL Ld_EL Hd_020 Hd_204";

int slot_of(const char* key) {
  for (int k = 0; k < 68; ++k) {
    if (std::string(tervik_physics_table[k].key) == key) return k;
  }
  return -1;
}

double shr06(tag_tlogp_layer* l, int n) { return Shr(l, n, 0.0, 600.0); }

tag_physics_station computed(const std::vector<tag_tlogp_layer>& levels, int station = 7) {
  tag_physics_station r;
  compute_tlogp_physics(tag_tlogp_station{station, levels}, r);
  return r;
}

std::string gbk_to_utf8(const char* in) {
  iconv_t cd = iconv_open("UTF-8", "GBK");
  if (cd == reinterpret_cast<iconv_t>(-1)) return "<no GBK converter>";
  std::string src(in), out(4 * src.size() + 4, '\0');
  char* ip = &src[0];
  char* op = &out[0];
  size_t il = src.size(), ol = out.size();
  const size_t rc = iconv(cd, &ip, &il, &op, &ol);
  iconv_close(cd);
  if (rc == static_cast<size_t>(-1)) return "<invalid GBK>";
  out.resize(out.size() - ol);
  return out;
}

}  // namespace

TEST(PhysicsTable, KeysLabelsAndUnitScales) {
  std::istringstream expected(kKeys);
  std::string key;
  int k = 0;
  for (; expected >> key; ++k) {
    ASSERT_LT(k, 68);
    EXPECT_EQ(key, tervik_physics_table[k].key) << "slot " << k;
  }
  EXPECT_EQ(k, 68);
  struct LabelCase { int slot; const char* utf8; };
  const LabelCase cases[] = {
      {0, "A指数"}, {5, "Showalter指数"}, {9, "斯拉维 Index"}, {20, "Barber对流不稳定度指数"},
      {42, "对流有效位能"}, {66, "混合相层BB增长层（0度与-20度的位势高度差）"},
      {67, "BB增长层(-20度与-40度的位势高度差)"}};
  for (const auto& c : cases) EXPECT_EQ(gbk_to_utf8(tervik_physics_table[c.slot].label), c.utf8);
  std::set<std::string> distinct;
  for (const auto& e : tervik_physics_table) distinct.insert(gbk_to_utf8(e.label));
  EXPECT_EQ(distinct.size(), 66u);  // BLI/BI and aa4/aa8 share their labels
  EXPECT_STREQ(tervik_physics_table[15].label, tervik_physics_table[16].label);
  EXPECT_STREQ(tervik_physics_table[48].label, tervik_physics_table[49].label);
  const double lead[] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0.001, 1.0, 1e-06, 1e-05, 1e-05,
                         1e-05, 0.0, 1, 1, 1, 1, 0.0001, 0.0, 0.0, 1e-06, 1e-06, 1e-06,
                         1, 1, 1, 1, 1, 1, 1, 1};
  const int n_lead = sizeof(lead) / sizeof(lead[0]);
  for (k = 0; k < 68; ++k) EXPECT_EQ(tervik_physics_unit[k], k < n_lead ? lead[k] : 0.0) << k;
}

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
  for (auto levels : {tervik::test::convective_sounding(), tervik::test::convective_profile()}) {
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
  ASSERT_TRUE(LFC(v.data(), n, &p, &t, &td));
  EXPECT_EQ(r.index[slot_of("LFC_T")], t);
  EXPECT_EQ(r.levels[2].td, td);
  ASSERT_TRUE(EL(v.data(), n, &p, &t, &td));
  EXPECT_EQ(r.index[slot_of("ELC_P")], p);
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(r.levels[k].valid) << k;
  EXPECT_LT(r.levels[1].z, r.levels[2].z);  // LCL, LFC, EL going up
  EXPECT_LT(r.levels[2].z, r.levels[3].z);
  // The net LFC-EL area of a sounding without mid-level dry pockets is its CAPE.
  EXPECT_NEAR(r.index[slot_of("WCAPE")], r.index[slot_of("CAPE")], 0.02 * r.index[slot_of("CAPE")]);
  // Nothing usable: every slot undefined, every level invalid.
  for (auto levels : {std::vector<tag_tlogp_layer>{}, std::vector<tag_tlogp_layer>(3)}) {
    const tag_physics_station u = computed(levels, 5);
    EXPECT_EQ(u.header[0], 5);
    for (double i : u.index) EXPECT_EQ(i, 9999.0);
    for (const auto& l : u.levels) EXPECT_FALSE(l.valid);
  }
}

TEST(PhysicsDriver, OneEntryPerSoundingComputedWhenSelected) {
  tag_tervik_data5 data;
  data.soundings = {{101, tervik::test::convective_sounding()},
                    {202, tervik::test::convective_sounding()}};
  data.sounding_count = 2;
  std::vector<tag_physics_station> out(9);  // emptied first
  const int tt = slot_of("TT");
  create_tlogp_physics(data, out, 0);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[1].header[0], 202);
  create_tlogp_physics(data, out, 202);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].index[tt], 9999.0);
  EXPECT_EQ(out[0].header[0], 0);
  EXPECT_NE(out[1].index[tt], 9999.0);
  data.sounding_count = 4;  // a count beyond the sequence is not followed
  create_tlogp_physics(data, out, 0);
  EXPECT_EQ(out.size(), 2u);
  data.sounding_count = -2;
  create_tlogp_physics(data, out, 0);
  EXPECT_TRUE(out.empty());
}

TEST(PhysicsReport, WritesOneFormattedLinePerKey) {
  tag_physics_station r;
  r.index[0] = 1.23456;       // rounds to four decimals
  r.index[42] = -1234.5;      // CAPE slot, negative to check the sign column
  r.index[67] = 123456789.0;  // wider than the field: printed in full
  const std::string path = tervik::test::scratch_dir() + "/report.txt";
  ASSERT_EQ(write_physics_station(path.c_str(), r), 0);
  std::fflush(nullptr);  // the writer leaves its stream open
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  std::vector<std::string> all;
  for (std::string line; std::getline(text, line);) all.push_back(line);
  ASSERT_EQ(all.size(), 68u);
  EXPECT_EQ(all[0], "        A       1.2346");
  EXPECT_EQ(all[1], "       Tc    9999.0000");
  EXPECT_EQ(all[42], "     CAPE   -1234.5000");
  EXPECT_EQ(all[67], "   Hd_204 123456789.0000");
  // A null path writes the same text to standard output.
  testing::internal::CaptureStdout();
  EXPECT_EQ(write_physics_station(nullptr, r), 0);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), text.str());
  const std::string bad = tervik::test::scratch_dir() + "/no/such/dir/report.txt";
  testing::internal::CaptureStderr();
  EXPECT_EQ(write_physics_station(bad.c_str(), r), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Fail to open file " + bad + ".\n");
}
