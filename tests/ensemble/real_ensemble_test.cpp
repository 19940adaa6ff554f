// The real point-forecast ensemble at /work/shared/data/ensemble: ten members and their
// published mean over 49 hourly times. Each member's quantity becomes a grid of 39 model
// levels (columns) by 49 times (rows).

#include <gtest/gtest.h>
#include <tervik/sounding.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>

#include "ensemble_fixture.h"
#include "support/paths.h"

using tervik::test::ensemble;
using tervik::test::member;

namespace {

constexpr int levels = 39, times = 49, points = levels * times;
enum column { temp = 2, dewp = 3, east = 4, north = 5 };

struct member_grids {
  std::vector<std::vector<double>> cols =
      std::vector<std::vector<double>>(6, std::vector<double>(points));
  int time = -1;
  int level = 0;
};

// Member name -> its columns. Rows after the "PRES, ..." header are the levels of one time.
std::map<std::string, member_grids> read_ensemble(const std::string& path) {
  std::map<std::string, member_grids> out;
  std::ifstream in(path);
  std::string line;
  member_grids* cur = nullptr;
  while (std::getline(in, line)) {
    if (line.rfind("MEM = ", 0) == 0) {
      cur = &out[line.substr(6)];
      ++cur->time;
      cur->level = 0;
      continue;
    }
    double v[7];
    if (!cur || std::sscanf(line.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf", &v[0], &v[1], &v[2], &v[3],
                            &v[4], &v[5], &v[6]) != 7)
      continue;
    if (cur->time < times && cur->level < levels)
      for (int c = 0; c < 6; ++c) cur->cols[c][cur->time * levels + cur->level] = v[c];
    ++cur->level;
  }
  return out;
}

}  // namespace

TEST(RealEnsemble, StatisticsAgreeWithThePublishedMeanAndWithEachOther) {
  TERVIK_REQUIRE_SHARED_DATA(path, "ensemble/OUN.txt");
  const auto data = read_ensemble(path);
  ASSERT_EQ(data.size(), 11u);
  ASSERT_TRUE(data.count("MEAN"));

  ensemble e;
  for (const auto& [name, g] : data) {
    if (name == "MEAN") continue;
    ASSERT_EQ(g.time, times - 1) << name;
    e.add(2, member(levels, times, 0, g.cols[temp], "OUN 160212 0"));
    e.add(4, member(levels, times, 0, g.cols[dewp], "OUN 160212 0"));
    e.add(5, member(levels, times, 0, g.cols[east], "OUN 160212 0"));
    e.add(6, member(levels, times, 0, g.cols[north], "OUN 160212 0"));
  }
  const auto& mean = data.at("MEAN").cols;

  tervik_data4 t_mean;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 2, 0, 0, t_mean), 0);
  EXPECT_STREQ(t_mean.description, "OUN 160212 MeanT");
  for (int k = 0; k < points; ++k) EXPECT_NEAR(t_mean.data()[k], mean[temp][k], 1e-4) << k;

  // Relative humidity of the pairs lies within 0..100 (dew point never above temperature)
  tervik_data4 rh_min, rh_max, rh_mean;
  ASSERT_EQ(compute_griddata_min(e.members, e.codes, 14, 0, 0, rh_min), 0);
  ASSERT_EQ(compute_griddata_max(e.members, e.codes, 14, 0, 0, rh_max), 0);
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 14, 0, 0, rh_mean), 0);
  for (int k = 0; k < points; ++k) {
    EXPECT_GT(rh_min.data()[k], 0.0);
    EXPECT_LE(rh_max.data()[k], 100.0 + 1e-9);
    EXPECT_LE(rh_min.data()[k], rh_mean.data()[k] + 1e-12);
    EXPECT_LE(rh_mean.data()[k], rh_max.data()[k] + 1e-12);
  }

  // The mean speed is at least the speed of the mean wind, and lies between the extremes
  tervik_data4 s_mean, s_min, s_max, s_med;
  ASSERT_EQ(compute_winddata_mean(e.members, e.codes, 8, 0, 0, s_mean), 0);
  ASSERT_EQ(compute_winddata_min(e.members, e.codes, 8, 0, 0, s_min), 0);
  ASSERT_EQ(compute_winddata_max(e.members, e.codes, 8, 0, 0, s_max), 0);
  ASSERT_EQ(compute_winddata_median(e.members, e.codes, 8, 0, 0.5, s_med), 0);
  for (int k = 0; k < points; ++k) {
    const double mean_wind = std::hypot(mean[east][k], mean[north][k]);
    EXPECT_GE(s_mean.data()[k], mean_wind - 1e-3) << k;
    EXPECT_LE(s_min.data()[k], s_mean.data()[k] + 1e-12);
    EXPECT_LE(s_mean.data()[k], s_max.data()[k] + 1e-12);
    EXPECT_LE(s_min.data()[k], s_med.data()[k]);
    EXPECT_LE(s_med.data()[k], s_max.data()[k]);
  }
}
