#include <iconv.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "support/paths.h"

namespace {

// The keys the report prints, in order.
const char* const kKeys =
    "A Tc IQ TT LI SI K mK DCI SLW Wd_C Wd_D Wd_L Wd_P Wd_S BLI BI BIC Faust IC ICC ILC JI "
    "TMJ Teffer ChTT mKO Shr Ls w_cape w_cin Wm MDPI VV SWEAT SSI SWISS00 SWISS12 TQG SRH Dm "
    "BRN CAPE CIN GCAPE EHI WCAPE Dc aa4 aa8 ZH Zm20H Zm30H TCL_P TCL_T ELC_P ELC_T LFC_P "
    "LFC_T CCL_P CCL_T CCL_mod YDC_P YDC_T Wd_EL Ld_EL Hd_020 Hd_204";

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

std::string read_file(const std::string& path) {
  std::ifstream in(path);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

}  // namespace

TEST(PhysicsTable, KeysAreInReportOrder) {
  std::istringstream expected(kKeys);
  std::string key;
  int k = 0;
  while (expected >> key) {
    ASSERT_LT(k, 68);
    EXPECT_EQ(key, tervik_physics_table[k].key) << "slot " << k;
    ++k;
  }
  EXPECT_EQ(k, 68);
}

TEST(PhysicsTable, LabelsAreGbkTextWithTwoSharedPairs) {
  struct LabelCase { int slot; const char* utf8; };
  const LabelCase cases[] = {
      {0, "A指数"}, {5, "Showalter指数"}, {9, "斯拉维 Index"}, {20, "Barber对流不稳定度指数"},
      {42, "对流有效位能"}, {66, "混合相层BB增长层（0度与-20度的位势高度差）"},
      {67, "BB增长层(-20度与-40度的位势高度差)"}};
  for (const auto& c : cases) {
    EXPECT_EQ(gbk_to_utf8(tervik_physics_table[c.slot].label), c.utf8) << c.slot;
  }
  std::set<std::string> distinct;
  for (const auto& e : tervik_physics_table) {
    const std::string text = gbk_to_utf8(e.label);
    EXPECT_EQ(text.find('<'), std::string::npos) << e.key << " is not GBK";
    distinct.insert(e.label);
  }
  EXPECT_EQ(distinct.size(), 66u);  // BLI/BI and aa4/aa8 share their labels
  EXPECT_STREQ(tervik_physics_table[15].label, tervik_physics_table[16].label);
  EXPECT_STREQ(tervik_physics_table[48].label, tervik_physics_table[49].label);
}

TEST(PhysicsTable, UnitScalesLeadThenZeros) {
  const double lead[] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0.001, 1.0, 1e-06, 1e-05, 1e-05,
                         1e-05, 0.0, 1, 1, 1, 1, 0.0001, 0.0, 0.0, 1e-06, 1e-06, 1e-06,
                         1, 1, 1, 1, 1, 1, 1, 1};
  const int n_lead = sizeof(lead) / sizeof(lead[0]);
  for (int k = 0; k < 68; ++k) {
    EXPECT_EQ(tervik_physics_unit[k], k < n_lead ? lead[k] : 0.0) << k;
  }
}

TEST(PhysicsRecord, StartsInTheInitialState) {
  const tag_physics_station r;
  for (int h : r.header) EXPECT_EQ(h, 0);
  for (const auto& l : r.levels) {
    EXPECT_FALSE(l.valid);
    EXPECT_EQ(l.p, 9999.0);
    EXPECT_EQ(l.wind_speed, 9999.0);
  }
  for (double e : r.extra) EXPECT_EQ(e, 0.0);
  for (double v : r.index) EXPECT_EQ(v, 9999.0);
}

TEST(PhysicsReport, WritesOneFormattedLinePerKey) {
  tag_physics_station r;
  r.index[0] = 1.23456;      // rounds to four decimals
  r.index[42] = -1234.5;     // CAPE slot, negative to check the sign column
  r.index[67] = 123456789.0; // wider than the field: printed in full
  const std::string path = tervik::test::scratch_dir() + "/report.txt";
  ASSERT_EQ(write_physics_station(path.c_str(), r), 0);
  // The writer leaves its stream open; flush every stream to read the report back.
  std::fflush(nullptr);
  const std::string text = read_file(path);
  std::istringstream lines(text);
  std::string line;
  std::vector<std::string> all;
  while (std::getline(lines, line)) all.push_back(line);
  ASSERT_EQ(all.size(), 68u);
  EXPECT_EQ(all[0], "        A       1.2346");
  EXPECT_EQ(all[1], "       Tc    9999.0000");
  EXPECT_EQ(all[42], "     CAPE   -1234.5000");
  EXPECT_EQ(all[36], "  SWISS00    9999.0000");
  EXPECT_EQ(all[67], "   Hd_204 123456789.0000");
  EXPECT_EQ(text.back(), '\n');
}

TEST(PhysicsReport, NullPathWritesToStandardOutput) {
  tag_physics_station r;
  r.index[3] = 52.5;
  testing::internal::CaptureStdout();
  const int rc = write_physics_station(nullptr, r);
  std::fflush(stdout);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 68);
  EXPECT_NE(out.find("       TT      52.5000\n"), std::string::npos);
}

TEST(PhysicsReport, UnwritablePathFailsWithMessage) {
  tag_physics_station r;
  const std::string path = tervik::test::scratch_dir() + "/no/such/dir/report.txt";
  testing::internal::CaptureStderr();
  const int rc = write_physics_station(path.c_str(), r);
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(rc, -1);
  EXPECT_EQ(err, "Fail to open file " + path + ".\n");
}
