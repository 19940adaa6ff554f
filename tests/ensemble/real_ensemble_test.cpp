// The real point-forecast ensemble: ten members and their published mean, each quantity
// a grid of 39 model levels (columns) by 49 hourly times (rows).

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>

#include "ensemble_fixture.h"
#include "support/paths.h"

using namespace tervik::test;

TEST(RealEnsemble, StatisticsAgreeWithThePublishedMean) {
  TERVIK_REQUIRE_SHARED_DATA(path, "ensemble/OUN.txt");
  constexpr int levels = 39, times = 49;
  // member name -> its temperature, dew point, U and V, filled time by time
  std::map<std::string, std::vector<std::vector<double>>> columns;
  std::ifstream in(path);
  std::vector<std::vector<double>>* cur = nullptr;
  for (std::string line; std::getline(in, line);) {
    double v[7];
    if (line.rfind("MEM = ", 0) == 0) {
      cur = &columns[line.substr(6)];
      cur->resize(4);
    } else if (cur && std::sscanf(line.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf", &v[0], &v[1],
                                  &v[2], &v[3], &v[4], &v[5], &v[6]) == 7) {
      for (int c = 0; c < 4; ++c) (*cur)[c].push_back(v[c + 2]);
    }
  }
  ASSERT_EQ(columns.size(), 11u);
  ensemble e;
  for (const auto& [name, c] : columns) {
    ASSERT_EQ(c[0].size(), std::size_t{levels * times}) << name;
    if (name == "MEAN") continue;
    for (int k = 0; k < 4; ++k)
      e.add(k == 0 ? 2 : k + 3, member(levels, times, 0, c[k], "OUN 160212 0"));
  }
  const auto& mean = columns.at("MEAN");
  tervik_data4 t, speed;
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 2, 0, 0, t), 0);
  ASSERT_EQ(compute_winddata_mean(e.members, e.codes, 8, 0, 0, speed), 0);
  EXPECT_STREQ(t.description, "OUN 160212 MeanT");
  for (int k = 0; k < levels * times; ++k) {
    EXPECT_NEAR(t.data()[k], mean[0][k], 1e-4) << k;
    // the mean speed is at least the speed of the mean wind
    EXPECT_GE(speed.data()[k], std::hypot(mean[2][k], mean[3][k]) - 1e-3) << k;
  }
}
