// How members pair up: temperature with dew point for relative humidity, U with V for wind
// in lists of at most 128 entries, and derived members that mark their pair used (44).

#include <gtest/gtest.h>
#include <tervik/diagnostics.h>

#include "ensemble_fixture.h"

using namespace tervik::test;

namespace {

std::vector<double> rh_of(const std::vector<double>& t, const std::vector<double>& td) {
  std::vector<double> rh(t.size());
  double lo, hi;
  compute_field_ttd2rh(rh.data(), &lo, &hi, t.data(), td.data(), static_cast<int>(t.size()), 1, 1);
  return rh;
}

TEST(RelativeHumidityStatistics, PairTheNthTemperatureWithTheNthDewPoint) {
  std::mt19937 rng(4);
  auto values = [&] { return random_values(rng, 12, -20, 10); };
  const auto t1 = values(), td1 = values(), td2 = values(), t2 = values();
  ensemble e;
  e.add(2, member(4, 3, 500, t1, "T 500hPa"));
  e.add(3, member(4, 3, 500, values(), "T3 500hPa"));  // code 3 does not pair
  e.add(4, member(4, 3, 500, td1, "Td first 500hPa"));
  e.add(2, member(4, 3, 700, values(), "T 700hPa"));  // other level
  e.add(4, member(4, 3, 500, td2, "Td second 500hPa"));
  e.add(2, member(4, 3, 500, t2, "T 500hPa"));
  e.add(2, member(4, 3, 500, values(), "T 500hPa"));  // unpaired at the end
  const auto rh1 = rh_of(t1, td1), rh2 = rh_of(t2, td2);
  tervik_data4 mean;
  testing::internal::CaptureStderr();
  ASSERT_EQ(compute_griddata_mean(e.members, e.codes, 14, 500, 0, mean), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_griddata_mean(): element=14, level=500, member_cnt=2\n");
  for (int k = 0; k < 12; ++k) EXPECT_DOUBLE_EQ(mean.data()[k], (rh1[k] + rh2[k]) / 2) << k;
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
  for (int i = 0; i < 260; ++i) u_first.add(i < 130 ? 5 : 6, member(1, 1, 500, {1.0}));
  testing::internal::CaptureStderr();
  EXPECT_EQ(compute_winddata_mean(u_first.members, u_first.codes, 8, 500, 0, out), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "compute_winddata_mean(): too many wind element(128) exceeds upper limit (128)\n"
            "compute_winddata_mean(): element(8) not found\n");
}

TEST(DerivedMembers, EachCallConsumesTheNextPair) {
  ensemble e;
  e.add(5, member(2, 1, 500, {3, 0}, "U one 500hPa"));
  e.add(6, member(2, 1, 500, {4, tervik_data4::undef}, "V one 500hPa ens"));
  e.add(5, member(2, 1, 850, {9, 9}));
  e.add(5, member(2, 1, 500, {6, 5}, "U two 500hPa"));
  e.add(6, member(2, 1, 500, {8, 12}, "V two 500hPa"));
  e.add(5, member(2, 1, 500, {1, 1}));  // a U without a V is used up all the same
  tervik_data4 out;
  ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), 0);
  EXPECT_EQ(values_of(out), (std::vector<double>{5, 9999.0}));
  EXPECT_STREQ(out.description, "V one 500hPaIsotachs(unit:m/s)");
  EXPECT_EQ(e.codes, (std::vector<int>{44, 44, 5, 5, 6, 5}));
  ASSERT_EQ(compute_wind_isotach(e.members, e.codes, 500, 2.0, out), 0);
  EXPECT_EQ(values_of(out), (std::vector<double>{5, 6.5}));  // divided by the scale
  EXPECT_EQ(e.codes, (std::vector<int>{44, 44, 5, 44, 44, 5}));
  EXPECT_EQ(compute_wind_isotach(e.members, e.codes, 500, 1.0, out), -1);
  EXPECT_EQ(e.codes, (std::vector<int>{44, 44, 5, 44, 44, 44}));

  // relative humidity from the first Td and the first T after it
  const std::vector<double> t{20, 0, -10}, td{10, -5, tervik_data4::undef};
  ensemble h;
  h.add(4, member(3, 1, 850, td, "Td 850hPa ens"));
  h.add(2, member(3, 1, 850, t));
  h.add(2, member(3, 1, 850, t));
  ASSERT_EQ(compute_rh(h.members, h.codes, 850, 0.0, out), 0);
  EXPECT_EQ(values_of(out), rh_of(t, td));
  EXPECT_STREQ(out.description, "Td 850hPaRH(unit:%)");
  EXPECT_EQ(h.codes, (std::vector<int>{44, 44, 2}));
  EXPECT_EQ(compute_rh(h.members, h.codes, 850, 0.0, out), -1);  // no Td left
  EXPECT_EQ(h.codes, (std::vector<int>{44, 44, 44}));
}

}  // namespace
