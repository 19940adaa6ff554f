#include <gtest/gtest.h>
#include <tervik/isoline.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include "support/paths.h"

namespace {

std::string written(const isoline_analysis_param& p, int precision = 6) {
  const std::string path = tervik::test::scratch_dir() + "/param.txt";
  {
    std::ofstream out(path);
    out << std::setprecision(precision);
    out << p;
  }
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// Reads `text` through a file stream; false when the stream failed.
bool read(const std::string& text, isoline_analysis_param& p) {
  const std::string path = tervik::test::scratch_dir() + "/param.txt";
  std::ofstream(path) << text;
  std::ifstream in(path);
  in >> p;
  return !in.fail();
}

isoline_analysis_param sample() {
  isoline_analysis_param p;
  p.area_set = true;
  p.first_lon = 70, p.last_lon = 140.5, p.first_lat = 55, p.last_lat = 15;
  p.lon_step = 0.5, p.lat_step = -0.25;
  p.level_start = 4, p.level_interval = 2, p.level_end = 12;
  p.levels = {7, 8};
  p.shade = p.shade_spline = true;
  p.smoothing = 3;
  return p;
}

bool same(const isoline_analysis_param& a, const isoline_analysis_param& b) {
  return a.area_set == b.area_set && a.first_lon == b.first_lon && a.last_lon == b.last_lon &&
         a.first_lat == b.first_lat && a.last_lat == b.last_lat && a.lon_step == b.lon_step &&
         a.lat_step == b.lat_step && a.use_interval == b.use_interval &&
         a.level_start == b.level_start && a.level_interval == b.level_interval &&
         a.level_end == b.level_end && a.levels == b.levels && a.shade == b.shade &&
         a.spline == b.spline && a.shade_spline == b.shade_spline && a.smoothing == b.smoothing;
}

TEST(IsolineParamText, WritesOneLineInTheStreamsFormat) {
  isoline_analysis_param p = sample();
  EXPECT_EQ(written(p), "1 70 140.5 55 15 0.5 -0.25 0 4 2 12 1 0 1 3");
  p.use_interval = false;
  p.levels = {1.25, -3, 1.0 / 3};
  EXPECT_EQ(written(p), "1 70 140.5 55 15 0.5 -0.25 3 1.25 -3 0.333333 1 0 1 3");
  p.levels.clear();  // an empty list goes out in the interval form
  EXPECT_EQ(written(p), "1 70 140.5 55 15 0.5 -0.25 0 4 2 12 1 0 1 3");

  p.levels = {1e-300, 0.1};
  p.first_lon = 70.123456789012345;
  isoline_analysis_param back = p;
  back.levels.clear();
  ASSERT_TRUE(read(written(p, 17), back));
  EXPECT_TRUE(same(p, back));
}

TEST(IsolineParamText, ReaderAppendsLevelsAndKeepsWhatTheTextLeavesOut) {
  isoline_analysis_param p = sample();
  ASSERT_TRUE(read("2 0 10 0 10 1 1  2 5 6  1 2 -1 2", p));  // flags are true only at 1
  isoline_analysis_param want = sample();
  want.area_set = want.spline = want.shade_spline = false;
  want.first_lon = want.first_lat = 0, want.last_lon = want.last_lat = 10;
  want.lon_step = want.lat_step = 1;
  want.use_interval = false;
  want.levels = {7, 8, 5, 6};
  want.smoothing = 2;
  EXPECT_TRUE(same(p, want));

  ASSERT_TRUE(read("1\n0 10 0 10 1 1\n0 0 5 50\n0 1 0 0\n", p));
  want.area_set = want.use_interval = want.spline = true;
  want.shade = false;
  want.level_start = 0, want.level_interval = 5, want.level_end = 50;
  want.smoothing = 0;
  EXPECT_TRUE(same(p, want));
}

TEST(IsolineParamText, BadTextFailsAndLeavesTheRecordAlone) {
  const char* cases[] = {
      "",
      "1 0 10 0 10 1",                        // cut inside the area
      "1 0 10 0 10 1 1 0 0 5",                // cut inside the interval
      "1 0 10 0 10 1 1 3 1 2",                // fewer levels than counted
      "1 0 10 0 10 1 1 2 1 2 1 1",            // cut inside the flags
      "1 0 10 0 10 1 1 -1 1 2 3 1 1 1 0",     // negative count
      "1 0 10 0 10 1 1 10000001 1 1 1 0",     // absurd count
      "1 0 10 0 10 1 1 2000000000 1 2 3",     // absurd count, few levels
      "1 0 10 0 10 1 1 99999999999 1 1 1 0",  // beyond int
      "1 0 10 0 ten 1 1 0 0 5 50 0 0 0 0",
      "1 0 10 0 10 1 1 2 1 x 1 1 1 0",
  };
  for (const char* text : cases) {
    isoline_analysis_param p = sample();
    EXPECT_FALSE(read(text, p)) << text;
    EXPECT_TRUE(same(p, sample())) << text;
  }
}

}  // namespace
