// The physics record: its key table (order, GBK labels, unit scales), the batch driver
// that fills one record per sounding, and the text report.

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/records.h>
#include <tervik/sounding.h>

#include "sounding/convective_profile.h"
#include "support/paths.h"

namespace {

TEST(PhysicsTable, KeysInReportOrderGbkLabelsAndUnitScales) {
  std::istringstream expected(
      "A Tc IQ TT LI SI K mK DCI SLW Wd_C Wd_D Wd_L Wd_P Wd_S BLI BI BIC Faust IC ICC ILC JI "
      "TMJ Teffer ChTT mKO Shr Ls w_cape w_cin Wm MDPI VV SWEAT SSI SWISS00 SWISS12 TQG SRH Dm "
      "BRN CAPE CIN GCAPE EHI WCAPE Dc aa4 aa8 ZH Zm20H Zm30H TCL_P TCL_T ELC_P ELC_T LFC_P "
      "LFC_T CCL_P CCL_T CCL_mod YDC_P YDC_T Wd_EL Ld_EL Hd_020 Hd_204");
  int k = 0;
  for (std::string key; expected >> key; ++k) {
    ASSERT_LT(k, 68);
    EXPECT_EQ(key, tervik_physics_table[k].key) << "slot " << k;
  }
  EXPECT_EQ(k, 68);
  // The labels are GBK bytes: "A指数", "对流有效位能", "BB增长层(-20度与-40度的位势高度差)".
  EXPECT_STREQ(tervik_physics_table[0].label, "A\xd6\xb8\xca\xfd");
  EXPECT_STREQ(tervik_physics_table[42].label, "\xb6\xd4\xc1\xf7\xd3\xd0\xd0\xa7\xce\xbb\xc4\xdc");
  EXPECT_STREQ(tervik_physics_table[67].label,
               "BB\xd4\xf6\xb3\xa4\xb2\xe3(-20\xb6\xc8\xd3\xeb-40\xb6\xc8\xb5\xc4\xce\xbb\xca\xc6"
               "\xb8\xdf\xb6\xc8\xb2\xee)");
  EXPECT_STREQ(tervik_physics_table[15].label, tervik_physics_table[16].label);  // BLI, BI
  EXPECT_STREQ(tervik_physics_table[48].label, tervik_physics_table[49].label);  // aa4, aa8
  const double lead[38] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0.001, 1.0, 1e-06, 1e-05,
                           1e-05, 1e-05, 0.0, 1, 1, 1, 1, 0.0001, 0.0, 0.0, 1e-06, 1e-06,
                           1e-06, 1, 1, 1, 1, 1, 1, 1, 1};
  for (k = 0; k < 68; ++k) EXPECT_EQ(tervik_physics_unit[k], k < 38 ? lead[k] : 0.0) << k;
}

TEST(PhysicsDriver, OneRecordPerSelectedSoundingWithItsCharacteristicLevels) {
  auto v = tervik::test::convective_sounding();
  tag_tervik_data5 data;
  data.soundings = {{101, v}, {202, v}};
  data.sounding_count = 4;  // a count beyond the sequence is not followed
  std::vector<tag_physics_station> out(9);  // emptied first
  create_tlogp_physics(data, out, 202);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].header[0], 0);  // not selected: left in its initial state
  EXPECT_EQ(out[0].index[3], 9999.0);  // TT
  const tag_physics_station& r = out[1];
  EXPECT_EQ(r.header[0], 202);
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(r.levels[k].valid) << k;
  EXPECT_EQ(r.levels[3].p, r.index[55]);    // the EL, ELC_P
  EXPECT_LT(r.levels[1].z, r.levels[2].z);  // LCL, LFC, EL going up
  EXPECT_LT(r.levels[2].z, r.levels[3].z);
  // The net LFC-EL area of a sounding without mid-level dry pockets is its CAPE.
  EXPECT_NEAR(r.index[46], r.index[42], 0.02 * r.index[42]);  // WCAPE, CAPE
  data.soundings[1].layers.assign(3, tag_tlogp_layer{});  // nothing usable
  create_tlogp_physics(data, out, 0);  // station 0 selects every sounding
  EXPECT_NE(out[0].index[3], 9999.0);
  for (double x : out[1].index) EXPECT_EQ(x, 9999.0);
  for (const auto& l : out[1].levels) EXPECT_FALSE(l.valid);
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

}  // namespace
