#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include <tervik/objective.h>

#include "objective/stations.h"

using namespace tervik::test;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

// 11 x 11 stations every 2 degrees over 90-110 E, 30-50 N on a gentle dome whose top is
// station 60 at (100, 40); station k sits at column k % 11, row k / 11.
Stations dome() {
  Stations s;
  for (int jj = 0; jj < 11; ++jj)
    for (int ii = 0; ii < 11; ++ii) {
      const double lon = 90.0 + 2 * ii, lat = 30.0 + 2 * jj;
      s.add(1000 + jj * 11 + ii, lon, lat, 5800.0 - 0.05 * ((lon - 100) * (lon - 100) + (lat - 40) * (lat - 40)));
    }
  return s;
}

std::vector<unsigned short> screen(daBase& b, Stations& s, int level, std::vector<double>& buf) {
  buf = s.buffer();  // the call below binds the columns
  const Domain d{41, 41, 80.0, 120.0, 20.0, 60.0};
  double* g = b.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(), 9999.0,
                           kFourColumns, buf.data(), kNoGrid, nullptr, nullptr);
  std::free(g);
  std::vector<unsigned short> flags(s.count(), 7);
  const int options[3] = {1, level, 0};
  b.qualityControl(flags.data(), s.count(), options);
  return flags;
}

TEST(QualityControl, KeepsTheDomeRecordsItsExtremaAndDropsASpike) {
  Stations s = dome();
  daCressman c(5);
  std::vector<double> buf;
  std::vector<unsigned short> flags = screen(c, s, 500, buf);
  for (int k = 0; k < s.count(); ++k) EXPECT_EQ(flags[k], 1) << k;
  // The top with neighbours on all sides is a maximum; the four corners, lower than all
  // their (many) neighbours, are minima, and corner 0 is recorded as 0, like a maximum.
  EXPECT_EQ(c.extremum_list, (std::vector<int32_t>{0, -10, 60, -110, -120}));

  s.value[60] += 30.0;  // a spike: 30 above its nearest neighbours on every side
  s.value[27] -= 12.0;  // a hole, at least the tolerance of 10 below its neighbours
  flags = screen(c, s, 500, buf);
  EXPECT_EQ(flags[60], 0);
  EXPECT_EQ(flags[27], 0);
  // The hole leaves its southern neighbour, station 16, above all four nearest neighbours.
  EXPECT_EQ(c.extremum_list, (std::vector<int32_t>{0, -10, 16, -110, -120}));
}

TEST(QualityControl, SurfaceLevelExcludesTwoStationsAndReportsLoneExtrema) {
  Stations s = dome();
  s.id[20] = 4205;
  s.id[30] = 4211;
  s.add(7, 150.0, 40.0, 5800.0);  // nothing within 8 degrees
  for (int level : {500, 1000}) {
    daCressman c(5);
    std::vector<double> buf;
    CaptureStdout();
    std::vector<unsigned short> flags = screen(c, s, level, buf);
    const std::string out = GetCapturedStdout();
    EXPECT_EQ(flags[20], level >= 1000 ? 0 : 1) << level;
    EXPECT_EQ(flags[30], level >= 1000 ? 0 : 1) << level;
    EXPECT_EQ(flags[121], 1);
    EXPECT_NE(out.find("station 7 has no neighbors: 150.0, 40.0, 5800\n"), std::string::npos) << out;
  }
}

TEST(CressmanHQ, RegionFillTakesTheMeanOfItsStationsOrNaNWithoutAny) {
  const Domain d{81, 41, 60.0, 140.0, 20.0, 60.0};
  std::vector<double> guess(d.nx * d.ny, 5000.0);
  auto at = [&](const std::vector<double>& g, double lon, double lat) {
    return g[static_cast<size_t>(std::lround(lat - d.lat_min)) * d.nx + std::lround(lon - d.lon_min)];
  };
  struct Case { int mode; bool inside; double region, outside; };
  const Case cases[] = {{0, true, 5800.0, 5000.0}, {1, true, 5000.0, 5000.0}, {2, true, 5000.0, 5000.0},
                        {0, false, NAN, 5000.0}};
  for (const Case& k : cases) {
    Stations s;
    if (k.inside) {
      s.add(1, 65.0, 25.0, 5000.0 + 800.0 * (k.mode == 0) - 5);
      s.add(2, 65.0, 45.0, 5000.0 + 800.0 * (k.mode == 0) + 5);
    } else {
      s.add(1, 130.0, 25.0, 5000.0);
      s.add(2, 130.0, 45.0, 5000.0);
    }
    daCressmanHQ hq(5);
    const int options[3] = {k.mode, 500, 0};
    CaptureStdout();
    const std::vector<double> g = run(hq, d, s, guess.data(), options);
    GetCapturedStdout();
    ASSERT_FALSE(g.empty());
    // (108, 48) and (139, 59) lie beyond every station's reach (25 degrees here).
    if (std::isnan(k.region)) {
      EXPECT_TRUE(std::isnan(at(g, 108, 48)));
      EXPECT_TRUE(std::isnan(at(g, 60, 20)));
      EXPECT_FALSE(std::isnan(at(g, 111, 48)));
    } else {
      EXPECT_DOUBLE_EQ(at(g, 108, 48), k.region) << k.mode;
    }
    EXPECT_DOUBLE_EQ(at(g, 139, 59), k.outside) << k.mode;
  }
}

TEST(CressmanHQ, ExtremumEnhancementRaisesTheTopStation) {
  const Domain d{57, 57, 86.0, 114.0, 26.0, 54.0};
  for (int mode : {1, 2}) {
    for (int enhance : {0, 1}) {
      Stations s = dome();
      daCressmanHQ hq(5);
      const int options[3] = {mode, 500, enhance};
      CaptureStdout();
      const std::vector<double> g = run(hq, d, s, nullptr, options);
      const std::string out = GetCapturedStdout();
      ASSERT_FALSE(g.empty());
      EXPECT_EQ(out.find("Stations whose observation values are enhanced:\n") != std::string::npos, enhance == 1);
      if (!enhance) {
        EXPECT_EQ(s.value[60], 5800.0);
      } else if (mode == 2) {
        EXPECT_EQ(s.value[60], 5802.0);  // 5800 is a multiple of 4: one step of 2 outwards
      } else {
        EXPECT_GT(s.value[60], 5800.0);  // pushed out by the analysis's (negative) Laplacian
        EXPECT_LT(s.value[60], 5801.0);
      }
      EXPECT_EQ(s.value[59], 5800.0 - 0.05 * 4);  // not an extremum: never changed
    }
  }
}

}  // namespace
