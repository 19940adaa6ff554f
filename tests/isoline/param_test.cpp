#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include <tervik/isoline.h>

#include "support/paths.h"

namespace {

std::string write_text(const isoline_analysis_param& p, int precision = 0) {
  const std::string path = tervik::test::scratch_dir() + "/param.txt";
  {
    std::ofstream out(path);
    if (precision > 0) out << std::setprecision(precision);
    out << p;
  }
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// Reads `text` through a file stream; returns whether the stream is still good afterwards.
bool read_text(const std::string& text, isoline_analysis_param& p) {
  const std::string path = tervik::test::scratch_dir() + "/param.txt";
  std::ofstream(path) << text;
  std::ifstream in(path);
  in >> p;
  return !in.fail();
}

isoline_analysis_param interval_param() {
  isoline_analysis_param p;
  p.area_set = true;
  p.first_lon = 70;
  p.last_lon = 140.5;
  p.first_lat = 55;
  p.last_lat = 15;
  p.lon_step = 0.5;
  p.lat_step = -0.25;
  p.use_interval = true;
  p.level_start = 4;
  p.level_interval = 2;
  p.level_end = 12;
  p.levels = {7, 8};  // not written in the interval form
  p.shade = true;
  p.spline = false;
  p.shade_spline = true;
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

TEST(IsolineParamText, WritesOneLineOfNumbers) {
  isoline_analysis_param p = interval_param();
  EXPECT_EQ(write_text(p), "1 70 140.5 55 15 0.5 -0.25 0 4 2 12 1 0 1 3");
  p.use_interval = false;
  p.levels = {1.25, -3, 1.0 / 3};
  p.area_set = false;
  // the stream's default format: six significant digits
  EXPECT_EQ(write_text(p), "0 70 140.5 55 15 0.5 -0.25 3 1.25 -3 0.333333 1 0 1 3");
  p.levels.clear();  // an empty list is written as the interval form
  EXPECT_EQ(write_text(p), "0 70 140.5 55 15 0.5 -0.25 0 4 2 12 1 0 1 3");
}

TEST(IsolineParamText, RoundTripsAtFullPrecision) {
  isoline_analysis_param p = interval_param();
  p.first_lon = 70.123456789012345;
  p.level_interval = 0.1;
  p.levels.clear();
  isoline_analysis_param back;
  back.levels.clear();
  ASSERT_TRUE(read_text(write_text(p, 17), back));
  EXPECT_TRUE(same(p, back));

  p.use_interval = false;
  p.levels = {1e-300, -2.5, 1e300};
  back = isoline_analysis_param();
  ASSERT_TRUE(read_text(write_text(p, 17), back));
  back.level_start = p.level_start;  // not part of the list form
  back.level_interval = p.level_interval;
  back.level_end = p.level_end;
  EXPECT_TRUE(same(p, back));
}

TEST(IsolineParamText, ReaderAppendsLevelsAndKeepsWhatTheTextLeavesOut) {
  isoline_analysis_param p;
  p.levels = {100};
  p.level_start = -1;
  p.level_interval = -2;
  p.level_end = -3;
  // flags are true only when exactly 1
  ASSERT_TRUE(read_text("2 0 10 0 10 1 1  2 5 6  1 2 -1 2", p));
  EXPECT_FALSE(p.area_set);
  EXPECT_FALSE(p.use_interval);
  EXPECT_EQ(p.levels, (std::vector<double>{100, 5, 6}));
  EXPECT_EQ(p.level_start, -1);
  EXPECT_EQ(p.level_interval, -2);
  EXPECT_EQ(p.level_end, -3);
  EXPECT_TRUE(p.shade);
  EXPECT_FALSE(p.spline);
  EXPECT_FALSE(p.shade_spline);
  EXPECT_EQ(p.smoothing, 2);

  ASSERT_TRUE(read_text("1\n0 10 0 10 1 1\n0 0 5 50\n0 1 0 0\n", p));
  EXPECT_TRUE(p.area_set);
  EXPECT_TRUE(p.use_interval);
  EXPECT_EQ(p.levels, (std::vector<double>{100, 5, 6}));
  EXPECT_EQ(p.level_interval, 5);
  EXPECT_TRUE(p.spline);
}

TEST(IsolineParamText, BadTextFailsAndLeavesTheRecordAlone) {
  const char* cases[] = {
      "",
      "1 0 10 0 10 1",                     // cut inside the area
      "1 0 10 0 10 1 1 0 0 5",             // cut inside the interval
      "1 0 10 0 10 1 1 3 1 2",             // fewer levels than counted
      "1 0 10 0 10 1 1 2 1 2 1 1",         // cut inside the flags
      "1 0 10 0 10 1 1 -1 1 2 3 1 1 1 0",  // negative count
      "1 0 10 0 10 1 1 10000001 1 1 1 0",  // absurd count
      "1 0 10 0 10 1 1 2000000000 1 2 3",  // absurd count, few levels
      "1 0 10 0 ten 1 1 0 0 5 50 0 0 0 0",
      "1 0 10 0 10 1 1 2 1 x 1 1 1 0",
      "1 0 10 0 10 1 1 99999999999 1 1 1 0",  // count beyond int
  };
  for (const char* text : cases) {
    isoline_analysis_param p = interval_param();
    EXPECT_FALSE(read_text(text, p)) << text;
    EXPECT_TRUE(same(p, interval_param())) << text;
  }
}

}  // namespace
