#include <gtest/gtest.h>
#include <tervik/isoline.h>
#include <tervik/sounding.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "ensemble_fixture.h"

using tervik::test::ensemble;
using tervik::test::member;
using tervik::test::random_values;
using tervik::test::values_of;

namespace {

using speed_statistic = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int,
                                double, tervik_data4&);
using wind_statistic = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int,
                               double, tervik_data11&);

constexpr int nx = 6, ny = 4, points = nx * ny;

struct wind {
  double speed, dir;
};

// Pairs of U and V members at 500 hPa (U first in each pair), with a first member that is
// not wind and distractors at other levels. Returns each pair's speed and direction.
std::vector<std::vector<wind>> wind_ensemble(ensemble& e, int n, unsigned seed) {
  std::mt19937 rng(seed);
  e.add(1, member(nx, ny, 500, random_values(rng, points, 5000, 6000), "GH first 500hPa"));
  std::vector<std::vector<wind>> pairs;
  for (int i = 0; i < n; ++i) {
    const auto east = random_values(rng, points, -30, 30);
    const auto north = random_values(rng, points, -30, 30);
    e.add(5, member(nx, ny, 500, east, i == 0 ? "U first 500hPa" : "U 500hPa"));
    e.add(5, member(nx, ny, 850, random_values(rng, points, -30, 30), "U 850hPa"));
    e.add(6, member(nx, ny, 500, north, "V 500hPa"));
    std::vector<wind> w(points);
    for (int k = 0; k < points; ++k) uv2magdir(east[k], north[k], &w[k].speed, &w[k].dir);
    pairs.push_back(w);
  }
  return pairs;
}

std::vector<double> speeds_at(const std::vector<std::vector<wind>>& pairs, int k) {
  std::vector<double> s;
  for (const auto& p : pairs) s.push_back(p[k].speed);
  return s;
}

}  // namespace

TEST(WindStatistics, SpeedStatisticsMatchDirectComputation) {
  ensemble e;
  const auto w = wind_ensemble(e, 7, 1);
  tervik_data4 mean, var, mn, mx, med;
  ASSERT_EQ(compute_winddata_mean(e.members, e.codes, 8, 500, 0, mean), 0);
  ASSERT_EQ(compute_winddata_var(e.members, e.codes, 8, 500, 0, var), 0);
  ASSERT_EQ(compute_winddata_min(e.members, e.codes, 8, 500, 0, mn), 0);
  ASSERT_EQ(compute_winddata_max(e.members, e.codes, 8, 500, 0, mx), 0);
  ASSERT_EQ(compute_winddata_median(e.members, e.codes, 8, 500, 0.5, med), 0);
  for (int k = 0; k < points; ++k) {
    auto s = speeds_at(w, k);
    double sum = 0;
    for (double x : s) sum += x;
    const double avg = sum / s.size();
    double dev = 0;
    for (double x : s) dev += (x - avg) * (x - avg);
    EXPECT_DOUBLE_EQ(mean.data()[k], avg);
    EXPECT_NEAR(var.data()[k], dev / s.size(), 1e-9);
    EXPECT_EQ(mn.data()[k], *std::min_element(s.begin(), s.end()));
    EXPECT_EQ(mx.data()[k], *std::max_element(s.begin(), s.end()));
    std::sort(s.begin(), s.end());
    EXPECT_EQ(med.data()[k], s[3]);
  }
}

TEST(WindStatistics, TitlesHeaderAndContours) {
  ensemble e;
  wind_ensemble(e, 3, 2);
  const struct {
    speed_statistic fn;
    const char* title;
  } cases[] = {{compute_winddata_mean, "U first 500hPaMeanIsotachs"},
               {compute_winddata_var, "U first 500hPaVarIsotachs"},
               {compute_winddata_min, "U first 500hPaMinIsotachs"},
               {compute_winddata_max, "U first 500hPaMaxIsotachs"},
               {compute_winddata_median, "U first 500hPaMedianWind"}};
  for (const auto& c : cases) {
    tervik_data4 out;
    ASSERT_EQ(c.fn(e.members, e.codes, 8, 500, 0.5, out), 0);
    EXPECT_STREQ(out.description, c.title);
    if (c.fn == compute_winddata_var) {
      const auto r = values_of(out);
      double start = 0, interval = 0, end = 0;
      find_isoline_values(*std::min_element(r.begin(), r.end()),
                          *std::max_element(r.begin(), r.end()), &start, &interval, &end);
      EXPECT_EQ(out.contour_interval, interval);
      EXPECT_EQ(out.contour_start, start);
      EXPECT_EQ(out.contour_end, end);
    } else {
      EXPECT_EQ(out.contour_interval, 4);  // the U member's
    }
  }
  const struct {
    wind_statistic fn;
    const char* title;
  } records[] = {{compute_winddata_mean, "U first 500hPaMeanWind"},
                 {compute_winddata_min, "U first 500hPaMinWind"},
                 {compute_winddata_max, "U first 500hPaMaxWind"},
                 {compute_winddata_median, "U first 500hPaMedianWind"}};
  for (const auto& c : records) {
    tervik_data11 out;
    ASSERT_EQ(c.fn(e.members, e.codes, 10, 500, 0.5, out), 0);
    EXPECT_STREQ(out.description, c.title);
    EXPECT_EQ(out.level, 500);
    EXPECT_EQ(out.nx, nx);
    EXPECT_EQ(out.ny, ny);
    EXPECT_EQ(out.first_lat, 50.0);
    EXPECT_EQ(out.lat_step, -1.0);
  }
}

TEST(WindStatistics, ListsStopAtOneHundredTwentyEightMembers) {
  // U and V alternate: the U list fills at the 255th member, when V holds 127
  ensemble alt;
  for (int i = 0; i < 130; ++i) {
    alt.add(5, member(1, 1, 500, {static_cast<double>(i % 7)}));
    alt.add(6, member(1, 1, 500, {1.0}));
  }
  tervik_data4 out;
  testing::internal::CaptureStderr();
  ASSERT_EQ(compute_winddata_max(alt.members, alt.codes, 8, 500, 0, out), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_mean(): too many wind element(128) exceeds upper limit (128)\n"
            "compute_winddata_max(): element=8, level=500, member_cnt=127\n");

  // V first: the V list fills while U holds 127; the limit message gives the U count
  ensemble v_first;
  for (int i = 0; i < 130; ++i) {
    v_first.add(6, member(1, 1, 500, {0.0}));
    v_first.add(5, member(1, 1, 500, {i < 126 ? 1.0 : 50.0}));
  }
  tervik_data11 rec;
  testing::internal::CaptureStderr();
  ASSERT_EQ(compute_winddata_max(v_first.members, v_first.codes, 10, 500, 0, rec), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_mean(): too many wind element(127) exceeds upper limit (128)\n"
            "compute_winddata_max(): element=10, level=500, member_cnt=127\n");
  EXPECT_NEAR(rec.u()[0], 50.0, 1e-9);  // pair 126 (the 127th) still counts

  // all U first: the scan stops before any V member, so no pair
  ensemble u_first;
  for (int i = 0; i < 130; ++i) u_first.add(5, member(1, 1, 500, {1.0}));
  for (int i = 0; i < 130; ++i) u_first.add(6, member(1, 1, 500, {1.0}));
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_winddata_mean(u_first.members, u_first.codes, 8, 500, 0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_mean(): too many wind element(128) exceeds upper limit (128)\n"
            "compute_winddata_mean(): element(8) not found\n");
}

TEST(WindStatistics, MessagesNameTheFunctionExceptTheSharedOnes) {
  ensemble no_v;
  no_v.add(5, member(1, 1, 500, {1.0}));
  ensemble no_u;
  no_u.add(6, member(1, 1, 500, {1.0}));
  const struct {
    speed_statistic fn;
    const char* name;
  } cases[] = {{compute_winddata_mean, "compute_winddata_mean"},
               {compute_winddata_var, "compute_winddata_var"},
               {compute_winddata_min, "compute_winddata_min"},
               {compute_winddata_max, "compute_winddata_max"},
               {compute_winddata_median, "compute_winddata_median"}};
  for (const auto& c : cases) {
    tervik_data4 out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.fn(no_u.members, no_u.codes, 8, 500, 0.5, out), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(c.name) + "(): element(8) not found\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.fn(no_v.members, no_v.codes, 8, 500, 0.5, out), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "compute_winddata_mean(): element(8) not found\n");
  }
  tervik_data11 rec;
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_winddata_min(no_u.members, no_u.codes, 10, 500, 0, rec), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_min(): element(10) not found\n");
  testing::internal::CaptureStderr();
  EXPECT_EQ(
      compute_winddata_median(std::vector<tervik_data4>{}, std::vector<int>{}, 10, 500, 0.5, rec),
      -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_mean(): element(10) not found\n");
}

TEST(WindStatistics, FailureAfterTheFirstCopyLeavesMemberZerosHeader) {
  ensemble e;
  e.add(1, member(1, 1, 300, {5500.0}, "GH 300hPa"));
  e.add(6, member(1, 1, 500, {1.0}));
  tervik_data4 out = member(1, 1, 999, {42.0}, "untouched");
  const double* before = out.data();
  EXPECT_EQ(compute_winddata_mean(e.members, e.codes, 8, 500, 0, out), -1);
  EXPECT_STREQ(out.description, "GH 300hPa");
  EXPECT_EQ(out.level, 300);
  EXPECT_EQ(out.data(), before);  // the values stay

  tervik_data11 rec;
  rec.level = 999;
  EXPECT_EQ(compute_winddata_mean(e.members, e.codes, 10, 500, 0, rec), -1);
  EXPECT_EQ(rec.level, 999);  // the wind-record form copies nothing before it finds U
}

TEST(WindStatistics, BadInputIsReportedBeforeAnythingIsWritten) {
  ensemble good;
  good.add(5, member(2, 1, 500, {1, 2}));
  good.add(6, member(2, 1, 500, {1, 2}));
  ensemble size_mismatch = good;
  size_mismatch.add(5, member(2, 1, 500, {1, 2}));
  size_mismatch.add(6, member(1, 2, 500, {1, 2}));
  ensemble no_values = good;
  no_values.members[1].set_gridPtr(nullptr);
  ensemble lengths = good;
  lengths.codes.pop_back();
  const struct {
    const ensemble* e;
    const char* message;
  } cases[] = {{&size_mismatch, "(): member 3 grid is 1x2, not 2x1\n"},
               {&no_values, "(): member 1 has no values\n"},
               {&lengths, "(): 1 element codes for 2 members\n"}};
  for (const auto& c : cases) {
    tervik_data4 out = member(1, 1, 999, {42.0}, "untouched");
    const double* before = out.data();
    testing::internal::CaptureStderr();
    EXPECT_EQ(compute_winddata_var(c.e->members, c.e->codes, 8, 500, 0, out), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("compute_winddata_var") + c.message);
    EXPECT_STREQ(out.description, "untouched");
    EXPECT_EQ(out.data(), before);

    tervik_data11 rec;
    testing::internal::CaptureStderr();
    EXPECT_EQ(compute_winddata_median(c.e->members, c.e->codes, 10, 500, 0.5, rec), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("compute_winddata_median") + c.message);
    EXPECT_EQ(rec.u(), nullptr);
    EXPECT_EQ(rec.nx, 0);
  }
}
