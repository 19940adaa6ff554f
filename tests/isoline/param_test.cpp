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
  std::ofstream(path) << std::setprecision(precision) << p;
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
  p.area_set = p.shade = p.shade_spline = true;
  p.first_lon = 70, p.last_lon = 140.5, p.first_lat = 55, p.last_lat = 15;
  p.lon_step = 0.5, p.lat_step = -0.25;
  p.level_start = 4, p.level_interval = 2, p.level_end = 12;
  p.levels = {7, 8};
  p.smoothing = 3;
  return p;
}

// Equal as far as the text form and the level list tell.
bool same(const isoline_analysis_param& a, const isoline_analysis_param& b) {
  return written(a, 17) == written(b, 17) && a.levels == b.levels;
}

TEST(IsolineParamText, WritesOneLineAndReadsItBack) {
  isoline_analysis_param p = sample();
  EXPECT_EQ(written(p), "1 70 140.5 55 15 0.5 -0.25 0 4 2 12 1 0 1 3");
  p.use_interval = false;
  p.levels = {1.25, -3, 1.0 / 3};
  EXPECT_EQ(written(p), "1 70 140.5 55 15 0.5 -0.25 3 1.25 -3 0.333333 1 0 1 3");

  p.levels = {1e-300, 0.1};
  p.first_lon = 70.123456789012345;
  isoline_analysis_param back = p;
  back.levels.clear();
  ASSERT_TRUE(read(written(p, 17), back));
  EXPECT_TRUE(same(p, back));
}

TEST(IsolineParamText, BadTextFailsAndLeavesTheRecordAlone) {
  const char* cases[] = {
      "",
      "1 0 10 0 10 1",                        // cut inside the area
      "1 0 10 0 10 1 1 3 1 2",                // fewer levels than counted
      "1 0 10 0 10 1 1 2 1 2 1 1",            // cut inside the flags
      "1 0 10 0 10 1 1 2000000000 1 2 3",     // absurd count, few levels
      "1 0 10 0 10 1 1 99999999999 1 1 1 0",  // beyond int
      "1 0 10 0 10 1 1 2 1 x 1 1 1 0",
  };
  for (const char* text : cases) {
    isoline_analysis_param p = sample();
    EXPECT_FALSE(read(text, p)) << text;
    EXPECT_TRUE(same(p, sample())) << text;
  }
}

}  // namespace
