#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

using tervik::test::make_level;

namespace {

// Ground, 850, 700 and 500 hPa with round numbers so that every index can be worked out
// by hand: t850 20, td850 15, t700 8, td700 2, t500 -10, td500 -20.
std::vector<tag_tlogp_layer> mandatory_profile() {
  return {make_level(1000, 100, 26, 18, 180, 5), make_level(925, 760, 22, 16, 190, 6),
          make_level(850, 1460, 20, 15, 200, 10), make_level(700, 3010, 8, 2, 230, 15),
          make_level(500, 5600, -10, -20, 250, 25), make_level(300, 9200, -40, -50, 260, 35)};
}

double call(double (*f)(tag_tlogp_layer*, int), std::vector<tag_tlogp_layer>& v) {
  return f(v.data(), static_cast<int>(v.size()));
}

}  // namespace

TEST(TotalsIndices, HandWorkedValues) {
  auto v = mandatory_profile();
  struct Case { const char* name; double (*f)(tag_tlogp_layer*, int); double expected; };
  const Case cases[] = {
      {"TT", TT, 20 + 15 + 20},                             // 55
      {"K", K, (20 + 10) + 15 - (8 - 2)},                   // 39
      {"A", A, (20 + 10) - ((20 - 15) + (8 - 2) + (-10 + 20))},  // 9
      // mean t (26+22+20)/3, mean td (18+16+15)/3
      {"TTmod", TTmod, (68.0 + 49.0) / 3.0 + 20},
      {"Kmod", Kmod, 68.0 / 3.0 + 49.0 / 3.0 + 10 + (2 - 8)},
      {"Kmod2", Kmod2, 0.5 * (15 + 18) + 0.5 * (20 + 26) + 10 + (2 - 8)},
  };
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(call(c.f, v), c.expected) << c.name;
}

TEST(TotalsIndices, LevelsMustBeReportedExactly) {
  auto v = mandatory_profile();
  v[2].p = 850.5;  // a near miss is not 850 hPa
  for (auto f : {TT, K, A, TTmod, Kmod, Kmod2, SWEAT}) EXPECT_EQ(call(f, v), 9999.0);
  v = mandatory_profile();
  v[3].valid = false;  // 700 hPa present but not valid
  for (auto f : {K, A, Kmod, Kmod2}) EXPECT_EQ(call(f, v), 9999.0);
  EXPECT_EQ(call(TT, v), 35.0 + 20.0);  // TT does not need 700 hPa
}

TEST(TotalsIndices, InvalidLowRecordIsSkippedByTTmodButStopsKmod) {
  auto v = mandatory_profile();
  v[1].valid = false;
  EXPECT_DOUBLE_EQ(call(TTmod, v), (46.0 + 33.0) / 2.0 + 20);
  EXPECT_EQ(call(Kmod, v), 9999.0);
  v = mandatory_profile();
  v[0].valid = false;  // Kmod2 takes record 0 itself, it does not skip to the next
  EXPECT_EQ(call(Kmod2, v), 9999.0);
}

TEST(TotalsIndices, MissingTemperatureEntersTheArithmetic) {
  // A 9999.0 stored in a level that is present is not a missing level.
  auto v = mandatory_profile();
  v[2].td = 9999.0;
  EXPECT_DOUBLE_EQ(call(TT, v), 20 + 9999.0 + 20);
}

TEST(Sweat, TermsSwitchOnTheirThresholds) {
  struct Case {
    const char* what;
    double td850, dd850, ff850, dd500, ff500, expected;
  };
  const double kt = 1.944;
  // TT = 20 + td850 + 20, so the totals term is 20 (td850 - 9) when td850 >= 9.
  const Case cases[] = {
      {"dry 850: no dew-point or totals term", -1.0, 200, 10, 250, 20,
       40 * kt + 125 * (std::sin(50 * 0.017453292519943) + 0.2)},
      {"moist 850 and TT 55", 15.0, 200, 10, 250, 20,
       12 * 15.0 + 20 * 6.0 + 40 * kt + 125 * (std::sin(50 * 0.017453292519943) + 0.2)},
      {"no veering: same direction", 15.0, 250, 10, 250, 20, 12 * 15.0 + 20 * 6.0 + 40 * kt},
      {"850 wind below 15 kt", 15.0, 200, 7.7, 250, 20, 12 * 15.0 + 20 * 6.0 + 35.4 * kt},
      {"850 direction outside 130-250", 15.0, 120, 10, 250, 20, 12 * 15.0 + 20 * 6.0 + 40 * kt},
      {"500 direction outside 210-310", 15.0, 200, 10, 320, 20, 12 * 15.0 + 20 * 6.0 + 40 * kt},
      {"slight veering still adds the base term", 15.0, 249, 10, 250, 20,
       12 * 15.0 + 20 * 6.0 + 40 * kt + 125 * (std::sin(1 * 0.017453292519943) + 0.2)},
  };
  for (const auto& c : cases) {
    auto v = mandatory_profile();
    v[2].td = c.td850;
    v[2].wind_dir = c.dd850;
    v[2].wind_speed = c.ff850;
    v[4].wind_dir = c.dd500;
    v[4].wind_speed = c.ff500;
    EXPECT_NEAR(call(SWEAT, v), c.expected, 1e-9) << c.what;
  }
  auto v = mandatory_profile();
  v[4].wind_dir = 9999.0;
  EXPECT_EQ(call(SWEAT, v), 9999.0);
}
