#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "objective/stations.h"
#include "platform/numerics.h"

using namespace tervik::test;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

namespace {

const Domain kDomain{71, 46, 70.0, 140.0, 15.0, 60.0};

// The correction passes written as the plain loop over grid points and, inside, over all
// stations: the reference for the scheme's station-by-station sums.
void reference_passes(const daCressman& c, double undef, tervik::detail::LocatedStations& loc,
                      double* g) {
  const int nx = c.nx, ny = c.ny;
  std::vector<double> h(g, g + static_cast<size_t>(nx) * ny);
  for (int k = 0; k < c.scan_count; ++k) {
    for (int s = 0; s < c.station_count; ++s) {
      if (loc.cell[s] == -1) continue;
      const double d = c.value_column[s] - tervik::detail::background(g, nx, loc.cell[s], loc.fx[s], loc.fy[s]);
      if (d > c.reject_threshold[k] || d < -c.reject_threshold[k]) loc.cell[s] = -1;
    }
    const double R = c.scan_radius[k];
    for (int j = 0; j < ny; ++j) {
      for (int i = 0; i < nx; ++i) {
        double num = 0, den = 0;
        for (int s = 0; s < c.station_count; ++s) {
          if (loc.cell[s] == -1) continue;
          const double x = loc.x[s], y = loc.y[s];
          if (!(std::fabs(i - x) <= R && std::fabs(j - y) <= R)) continue;
          const double r2 = (i - x) * (i - x) + (j - y) * (j - y);
          if (!(r2 <= R * R)) continue;
          const double w = (R * R - r2) / (R * R + r2);
          const double ws = w * c.weight_factor;
          num += ws * (c.value_column[s] - tervik::detail::background(g, nx, loc.cell[s], loc.fx[s], loc.fy[s]));
          den += ws;
          const double lat = c.lat_column[s], dir = c.wind_dir_column[s], spd = c.wind_speed_column[s];
          if (k > 0 && dir != undef && spd != undef && lat >= 23 && lat <= 66) {
            const double phi = lat * 0.017453292519943295;
            const double u = spd * std::cos((270.0 - dir) * M_PI / 180.0);
            const double v = spd * std::sin((270.0 - dir) * M_PI / 180.0);
            const double a = vector_dir(i, j, x, y) * 0.017453292519943295;
            const double rho = std::sqrt(r2);
            const double S = v * std::cos(phi) * std::cos(a) * rho * 111321.4 - u * std::sin(a) * rho * 111137.0;
            const double dz = 0.0001458423 * std::sin(phi) * 0.108 * S / 9.8;
            const double ww = w * c.wind_weight_factor;
            num += ww * (c.value_column[s] - dz - g[j * nx + i]);
            den += ww;
          }
        }
        if (den > 1e-6) h[j * nx + i] = g[j * nx + i] + num / den;
      }
    }
    std::copy(h.begin(), h.end(), g);
  }
}

TEST(Cressman, StationSumsEqualThePlainLoopOverAllStations) {
  const Domain d{41, 31, 100.0, 120.0, 20.0, 35.0};
  Stations s = random_stations(d, 300, 7, [](double x, double y) { return 100 * std::sin(x) + y; });
  s.add(1, 110.0, 27.5, 80.0, 10.0, 20.0);  // exactly on a grid point
  s.value[3] = 9999.0;                       // missing
  s.dir[5] = 9999.0;                         // missing wind
  std::vector<double> buf = s.buffer(true);
  daCressman c(5);
  c.reject_threshold[1] = 60.0;  // keep some rejections, not all
  std::vector<double> guess(d.nx * d.ny);
  for (int j = 0; j < d.ny; ++j)
    for (int i = 0; i < d.nx; ++i) guess[j * d.nx + i] = 100 * std::sin(d.lon(i)) + d.lat(j) + 5 * std::cos(i * j);
  tervik::detail::bind_input(c, d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(), kSixColumns,
                             buf.data(), kFirstGuess, guess.data());
  tervik::detail::LocatedStations a, b;
  ASSERT_TRUE(a.allocate(s.count()) && b.allocate(s.count()));
  tervik::detail::locate_stations(c, 9999.0, nullptr, a);
  tervik::detail::locate_stations(c, 9999.0, nullptr, b);
  std::vector<double> fast = guess, plain = guess;
  CaptureStdout();
  tervik::detail::correction_passes(c, 9999.0, a, fast.data());
  reference_passes(c, 9999.0, b, plain.data());
  const std::string rejected = GetCapturedStdout();
  EXPECT_NE(rejected.find("-th scan"), std::string::npos);  // the data do exercise rejection
  EXPECT_EQ(0, std::memcmp(fast.data(), plain.data(), fast.size() * sizeof(double)));
  for (int k = 0; k < s.count(); ++k) EXPECT_EQ(a.cell[k], b.cell[k]) << k;
}

TEST(Cressman, ReproducesASmoothFieldAtItsStations) {
  Stations s = random_stations(kDomain, 1500, 11, height_field);
  // A first guess off by up to 15 m in a wave the stations have to correct.
  std::vector<double> guess(kDomain.nx * kDomain.ny);
  for (int j = 0; j < kDomain.ny; ++j)
    for (int i = 0; i < kDomain.nx; ++i)
      guess[j * kDomain.nx + i] = height_field(kDomain.lon(i), kDomain.lat(j)) + 15 * std::sin(i / 6.0 + j / 9.0);
  for (bool hq : {false, true}) {
    daCressman plain(5);
    daCressmanHQ operational(5);
    daBase& scheme = hq ? static_cast<daBase&>(operational) : plain;
    const int options[3] = {1, 500, 0};
    const std::vector<double> g = run(scheme, kDomain, s, guess.data(), options);
    ASSERT_EQ(g.size(), size_t(kDomain.nx * kDomain.ny));
    // The field spans about 300 m; the analysis meets the stations within a few metres.
    EXPECT_LT(rms_at_stations(g, kDomain, s, height_field), 3.0) << hq;
  }
}

TEST(Cressman, InvalidScanCountIsRepairedToFive) {
  struct Case { int scans; bool repaired; };
  const Case cases[] = {{0, true}, {6, true}, {-3, true}, {1, false}, {5, false}};
  Stations s = random_stations(kDomain, 50, 3, [](double, double y) { return 5500 + y / 10; });
  for (const Case& k : cases) {
    daCressman c(k.scans);
    daCressmanHQ hq(k.scans);
    CaptureStderr();
    EXPECT_FALSE(run(c, kDomain, s).empty());
    EXPECT_FALSE(run(hq, kDomain, s).empty());
    const std::string err = GetCapturedStderr();
    EXPECT_EQ(c.scan_count, k.repaired ? 5 : k.scans);
    EXPECT_EQ(hq.scan_count, k.repaired ? 5 : k.scans);
    EXPECT_EQ(err, k.repaired ? "daCressman::assimilate: invalid scan number. Set to default 5.\n"
                                "daCressmanHQ::assimilate: invalid scan number. Set to default 5.\n"
                              : "");
  }
}

TEST(Cressman, StationPlacementAtTheDomainEdges) {
  // One station alone: accepted, the grid is its value; refused, the call fails.
  const double eps = 1e-9;
  struct Case { double lon, lat; bool accepted; };
  const Case cases[] = {
      {70.0, 15.0, true},                 // first column and row
      {140.0, 30.0, false},               // on the last column
      {100.0, 60.0, false},               // on the last row
      {70.0 - 360.0 + eps, 30.0, true},   // wrapped once
      {70.0 - 720.0 + eps, 30.0, false},  // two turns away: not wrapped twice
      {140.0 + 360.0 - 0.5, 30.0, true},  // east of the domain, wrapped back
      {69.5, 30.0, false},                // west of the domain: wrapped a turn east, outside
      {100.0, 14.5, true},                // half a cell south: truncation puts it in row 0
      {100.0, 13.9, false},
      {NAN, 30.0, false},
      {100.0, INFINITY, false},
  };
  for (const Case& k : cases) {
    Stations s;
    s.add(1, k.lon, k.lat, 5500.0);
    daCressman c(5);
    CaptureStderr();
    const std::vector<double> g = run(c, kDomain, s);
    const std::string err = GetCapturedStderr();
    EXPECT_EQ(!g.empty(), k.accepted) << k.lon << "," << k.lat;
    if (k.accepted) {
      EXPECT_EQ(g.front(), 5500.0);
      EXPECT_EQ(g.back(), 5500.0);
    } else {
      EXPECT_EQ(err, "daCressman::assimilate: no station has valid height.\n") << k.lon;
    }
  }
}

TEST(Cressman, BadInputFailsWithAMessage) {
  Stations none;
  Stations undef;
  undef.add(1, 100, 30, 9999.0);
  undef.add(2, 110, 40, 9999.0);
  daCressman c(5);
  daCressmanHQ hq(5);
  struct Case { daBase* scheme; Stations* s; const char* message; };
  const Case cases[] = {
      {&c, &none, "daCressman::assimilate: no station has valid height.\n"},
      {&c, &undef, "daCressman::assimilate: no station has valid height.\n"},
      {&hq, &none, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {&hq, &undef, "daCressmanHQ::assimilate: no station has valid height.\n"},
  };
  for (const Case& k : cases) {
    CaptureStderr();
    EXPECT_TRUE(run(*k.scheme, kDomain, *k.s).empty());
    EXPECT_EQ(GetCapturedStderr(), k.message);
  }
  Stations one;
  one.add(1, 100, 30, 5500);
  std::vector<double> buf = one.buffer();
  const Domain bad_grids[] = {{1, 10, 70, 140, 15, 60}, {10, 1, 70, 140, 15, 60}, {10, 10, 140, 70, 15, 60},
                              {10, 10, 70, 70, 15, 60}, {10, 10, 70, 140, 15, 15}, {10, 10, NAN, 140, 15, 60},
                              {100000, 100000, 70, 140, 15, 60}};
  for (const Domain& d : bad_grids) {
    CaptureStderr();
    EXPECT_EQ(c.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, 1, 9999.0, kFourColumns,
                           buf.data(), kNoGrid, nullptr, nullptr),
              nullptr);
    EXPECT_EQ(GetCapturedStderr().rfind("daCressman::assimilate: invalid ", 0), 0u);
  }
  // A fresh object: columns bound by an earlier call stay bound.
  const int no_value[6] = {1, 2, 3, 0, 0, 0};
  daCressman fresh(5);
  CaptureStderr();
  EXPECT_EQ(fresh.assimilate(10, 10, 70, 140, 15, 60, 1, 9999.0, no_value, buf.data(), kNoGrid, nullptr, nullptr),
            nullptr);
  EXPECT_EQ(GetCapturedStderr(), "daCressman::assimilate: longitude, latitude or value column missing.\n");
}

TEST(Cressman, ColumnCodesBindInStorageOrderAndSkipUnknownCodes) {
  // Value, (a code that takes no storage), latitude, longitude.
  const int codes[6] = {4, 0, 3, 2, 9, -1};
  std::vector<double> buf = {5500, 5600, 30, 40, 100, 120};
  daCressman c(5);
  double* g = c.assimilate(kDomain.nx, kDomain.ny, 70, 140, 15, 60, 2, 9999.0, codes, buf.data(), kNoGrid, nullptr,
                           nullptr);
  ASSERT_NE(g, nullptr);
  std::free(g);
  EXPECT_EQ(c.value_column, buf.data());
  EXPECT_EQ(c.lat_column, buf.data() + 2);
  EXPECT_EQ(c.lon_column, buf.data() + 4);
  EXPECT_EQ(c.id_column, nullptr);
  EXPECT_EQ(c.wind_dir_column, nullptr);
}

TEST(Cressman, FirstGuessStandsWhereNoStationReachesAndIsReusedOnTheNextCall) {
  const Domain d{81, 81, 0.0, 80.0, -10.0, 70.0};  // 1 degree: 25 grid lengths = 25 degrees
  std::vector<double> guess(d.nx * d.ny);
  for (size_t p = 0; p < guess.size(); ++p) guess[p] = 5000.0 + static_cast<double>(p % 7);
  Stations s;
  s.add(1, 5.3, -4.6, 5010.0);
  s.add(2, 6.1, -3.2, 5012.0);
  daCressman c(5);
  const int grids[2] = {0, 11};  // the second grid is the first guess
  std::vector<double> two(guess.size() * 2, -1.0);
  std::copy(guess.begin(), guess.end(), two.begin() + guess.size());
  std::vector<double> buf = s.buffer();
  double* g1 = c.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(), 9999.0,
                            kFourColumns, buf.data(), grids, two.data(), nullptr);
  ASSERT_NE(g1, nullptr);
  EXPECT_EQ(c.first_guess, two.data() + guess.size());
  // Beyond 25 grid lengths of both stations the first guess is untouched.
  EXPECT_EQ(g1[80 * d.nx + 80], guess[80 * d.nx + 80]);
  EXPECT_NE(g1[2 * d.nx + 2], guess[2 * d.nx + 2]);
  // No grid coded 11 this time: the previous first guess is used again.
  double* g2 = c.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(), 9999.0,
                            kFourColumns, buf.data(), kNoGrid, nullptr, nullptr);
  ASSERT_NE(g2, nullptr);
  EXPECT_EQ(0, std::memcmp(g1, g2, guess.size() * sizeof(double)));
  // A fresh scheme without a first guess starts from the stations' mean.
  daCressman fresh(5);
  double* g3 = fresh.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(), 9999.0,
                                kFourColumns, buf.data(), kNoGrid, nullptr, nullptr);
  ASSERT_NE(g3, nullptr);
  EXPECT_EQ(g3[80 * d.nx + 80], 5011.0);
  std::free(g1), std::free(g2), std::free(g3);
}

TEST(Cressman, RejectedStationIsReportedOnStandardOutput) {
  const Domain d{21, 21, 90.0, 110.0, 30.0, 50.0};
  std::vector<double> guess(d.nx * d.ny, 5500.0);
  Stations s;
  s.add(57, 100.0, 40.0, 5530.0);  // 30 above the first guess: over the threshold of 24
  s.add(58, 95.0, 35.0, 5510.0);
  daCressman c(5);
  CaptureStdout();
  const std::vector<double> g = run(c, d, s, guess.data());
  EXPECT_EQ(GetCapturedStdout(), "Station rejected in 0-th scan: 57, 100.0, 40.0, 5530\n");
  ASSERT_FALSE(g.empty());
  EXPECT_NEAR(bilinear(g, d, 95.0, 35.0), 5510.0, 0.5);
}

TEST(Cressman, WindTermActsFromTheSecondPassBetween23And66North) {
  const Domain d{31, 31, 90.0, 120.0, 10.0, 70.0};
  struct Case { double lat; int scans; bool changes; };
  const Case cases[] = {{40.0, 5, true}, {40.0, 1, false}, {20.0, 5, false}, {67.0, 5, false}, {23.0, 5, true}};
  for (const Case& k : cases) {
    Stations s;
    s.add(1, 100.3, k.lat + 0.3, 5500.0, 270.0, 20.0);
    s.add(2, 104.7, k.lat - 0.2, 5530.0, 250.0, 15.0);
    daCressman with(k.scans), without(k.scans);
    const std::vector<double> a = run(with, d, s, nullptr, nullptr, true);
    const std::vector<double> b = run(without, d, s, nullptr, nullptr, false);
    ASSERT_FALSE(a.empty());
    EXPECT_EQ(a != b, k.changes) << k.lat << " " << k.scans;
  }
}

}  // namespace
