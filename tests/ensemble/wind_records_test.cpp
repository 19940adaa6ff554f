#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "ensemble_fixture.h"

using tervik::test::ensemble;
using tervik::test::member;

namespace {

struct wind {
  double speed, dir;
};

}  // namespace

TEST(WindRecordStatistics, MeanAveragesDirectionsAsPlainNumbers) {
  // 350 and 10 degrees average to 180: a wind from the south, not from the north
  ensemble e;
  e.add(5, member(1, 1, 500, {u(10, 350)}));
  e.add(6, member(1, 1, 500, {v(10, 350)}));
  e.add(5, member(1, 1, 500, {u(20, 10)}));
  e.add(6, member(1, 1, 500, {v(20, 10)}));
  tervik_data11 out;
  ASSERT_EQ(compute_winddata_mean(e.members, e.codes, 10, 500, 0, out), 0);
  double s = 0, d = 0;
  uv2magdir(out.u()[0], out.v()[0], &s, &d);
  EXPECT_NEAR(s, 15, 1e-9);
  EXPECT_NEAR(d, 180, 1e-6);
}

TEST(WindRecordStatistics, MinAndMaxKeepTheChosenPairsDirectionEarlierWinsTies) {
  ensemble e;
  const wind pairs[] = {{5, 90}, {12, 200}, {5, 270}, {12, 30}, {8, 135}};
  for (const wind& w : pairs) {
    e.add(5, member(1, 1, 500, {u(w.speed, w.dir)}));
    e.add(6, member(1, 1, 500, {v(w.speed, w.dir)}));
  }
  tervik_data11 mn, mx;
  ASSERT_EQ(compute_winddata_min(e.members, e.codes, 10, 500, 0, mn), 0);
  ASSERT_EQ(compute_winddata_max(e.members, e.codes, 10, 500, 0, mx), 0);
  // the values go through uv2magdir and back, so compare the recovered wind
  double s, d;
  uv2magdir(mn.u()[0], mn.v()[0], &s, &d);
  EXPECT_NEAR(s, 5, 1e-9);
  EXPECT_NEAR(d, 90, 1e-6);
  uv2magdir(mx.u()[0], mx.v()[0], &s, &d);
  EXPECT_NEAR(s, 12, 1e-9);
  EXPECT_NEAR(d, 200, 1e-6);
}

TEST(WindRecordStatistics, MedianKeepsTheSpeedWithItsOwnDirection) {
  ensemble e;
  const wind pairs[] = {{3, 10}, {9, 100}, {6, 250}, {1, 300}, {7, 45}};
  for (const wind& w : pairs) {
    e.add(5, member(1, 1, 500, {u(w.speed, w.dir)}));
    e.add(6, member(1, 1, 500, {v(w.speed, w.dir)}));
  }
  tervik_data11 out;
  ASSERT_EQ(compute_winddata_median(e.members, e.codes, 10, 500, 0.5, out), 0);
  double s, d;
  uv2magdir(out.u()[0], out.v()[0], &s, &d);
  EXPECT_NEAR(s, 6, 1e-9);
  EXPECT_NEAR(d, 250, 1e-6);
  ASSERT_EQ(compute_winddata_median(e.members, e.codes, 10, 500, 0.9, out), 0);  // rank 4
  uv2magdir(out.u()[0], out.v()[0], &s, &d);
  EXPECT_NEAR(s, 9, 1e-9);
  EXPECT_NEAR(d, 100, 1e-6);
}
