// The Cressman schemes' deliberate behaviours and the messages they print: station placement,
// scan counts, rejection, the wind term, screening, region fill, enhancement and smoothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "objective/stations.h"

using namespace tervik::test;

namespace {

// 11 x 11 stations every 2 degrees over 90-110 E, 30-50 N on a gentle dome topped by station 60
// at (100, 40), station k at column k % 11, row k / 11; 20 and 30 bear excluded surface numbers.
Stations dome() {
  Stations s;
  for (int k = 0; k < 121; ++k) {
    const double lon = 90.0 + 2 * (k % 11), lat = 30.0 + 2 * (k / 11);
    const double id = k == 20 ? 4205 : k == 30 ? 4211 : 1000 + k;
    s.add(id, lon, lat, 5800.0 - 0.05 * ((lon - 100) * (lon - 100) + (lat - 40) * (lat - 40)));
  }
  return s;
}

// A station alone on 70..140 E, 15..60 N: the analysis at the last point, NaN when refused.
double lone_station(double lon, double lat, daCressman&& c = daCressman(5)) {
  Stations s;
  s.add(1, lon, lat, 5500.0);
  const std::vector<double> g = run(c, Domain{71, 46, 70.0, 140.0, 15.0, 60.0}, s);
  return g.empty() ? NAN : g.back();
}

// An analysis from a flat first guess of 5500 with station 57 30 above it (the first
// threshold is 24) and station 58 10 above it: the analysis at station 58.
double rejection() {
  const Domain d{21, 21, 90.0, 110.0, 30.0, 50.0};
  std::vector<double> guess(d.nx * d.ny, 5500.0);
  Stations s;
  s.add(57, 100.0, 40.0, 5530.0);
  s.add(58, 95.0, 35.0, 5510.0);
  daCressman c(5);
  return std::round(run(c, d, s, guess.data()).at(5 * d.nx + 5));
}

// Whether winds at two stations near `lat` change an analysis of `scans` passes.
bool wind_matters(double lat, int scans) {
  Stations s;
  s.add(1, 100.3, lat + 0.3, 5500.0, 270.0, 20.0);
  s.add(2, 104.7, lat - 0.2, 5530.0, 250.0, 15.0);
  const Domain d{31, 31, 90.0, 120.0, 10.0, 70.0};
  daCressman with(scans), without(scans);
  return run(with, d, s, nullptr, nullptr, true) != run(without, d, s);
}

// The operational analysis at (108, 48), inside the fill region and beyond the reach of two
// stations at `lon` averaging `value`, from a flat first guess of 5000.
double region_point(int mode, double lon, double value) {
  const Domain d{81, 41, 60.0, 140.0, 20.0, 60.0};
  std::vector<double> guess(d.nx * d.ny, 5000.0);
  Stations s;
  s.add(1, lon, 25.0, value - 5);
  s.add(2, lon, 45.0, value + 5);
  daCressmanHQ hq(5);
  const int options[3] = {mode, 500, 0};
  return run(hq, d, s, guess.data(), options).at(28 * d.nx + 48);
}

// The dome's top station after an operational analysis with extremum enhancement.
double dome_top(int mode, int enhance) {
  Stations s = dome();
  daCressmanHQ hq(5);
  const int options[3] = {mode, 500, enhance};
  run(hq, Domain{57, 57, 86.0, 114.0, 26.0, 54.0}, s, nullptr, options);
  return s.value[60];
}

// The centre of a constant field after Gaussian smoothing.
double gaussian_constant(double sigma) {
  std::vector<double> g(40 * 30, 5500.0);
  daCressman(1).gaussianSmooth(g.data(), 40, 30, sigma);
  return g[15 * 40 + 20];
}

TEST(Cressman, DeliberateBehavioursAndTheirMessages) {
  const char* kHQ = "Stations whose observation values are enhanced:\n";
  struct Case { const char* what; std::function<double()> got; double want; const char *out, *err; };
  const Case cases[] = {
      {"first column and row", [] { return lone_station(70.0, 15.0); }, 5500, "", ""},
      {"last row: no cell above it", [] { return lone_station(100.0, 60.0); }, NAN, "", nullptr},
      {"wrapped a turn east", [] { return lone_station(70.0 - 360.0 + 1e-9, 30.0); }, 5500, "", ""},
      {"two turns away: not wrapped twice", [] { return lone_station(70.0 - 720.0 + 1e-9, 30.0); }, NAN, "", nullptr},
      {"east of the domain, wrapped back", [] { return lone_station(140.0 + 360.0 - 0.5, 30.0); }, 5500, "", ""},
      {"half a cell south: truncated into row 0", [] { return lone_station(100.0, 14.5); }, 5500, "", ""},
      {"scan count 0 repaired", [] { return lone_station(100.0, 30.0, daCressman(0)); }, 5500, "",
       "daCressman::assimilate: invalid scan number. Set to default 5.\n"},
      {"scan count 6 repaired; a lone extremum", [] { return lone_station(100.0, 30.0, daCressmanHQ(6)); }, 5500,
       "station 1 has no neighbors: 100.0, 30.0, 5500\n",
       "daCressmanHQ::assimilate: invalid scan number. Set to default 5.\n"},
      {"rejected station", rejection, 5510, "Station rejected in 0-th scan: 57, 100.0, 40.0, 5530\n", ""},
      {"wind from the second pass", [] { return wind_matters(40.0, 5); }, 1, "", ""},
      {"no wind in a single pass", [] { return wind_matters(40.0, 1); }, 0, "", ""},
      {"wind from 23 N", [] { return wind_matters(23.0, 5); }, 1, "", ""},
      {"no wind south of 23 N", [] { return wind_matters(20.0, 5); }, 0, "", ""},
      {"mode 0 fills the region with the mean", [] { return region_point(0, 65.0, 5800.0); }, 5800, nullptr, ""},
      {"mode 0 without a station there: 0/0", [] { return region_point(0, 130.0, 5000.0); }, NAN, nullptr, ""},
      {"mode 1 keeps the first guess", [] { return region_point(1, 65.0, 5800.0); }, 5000, nullptr, ""},
      {"mode 2 smooths it, keeping a constant", [] { return region_point(2, 65.0, 5800.0); }, 5000, nullptr, ""},
      {"mode 2 moves a top on a multiple of 4 by 2", [] { return dome_top(2, 1); }, 5802, kHQ, ""},
      {"mode 1 moves it by the analysis's Laplacian", [] { return dome_top(1, 1) > 5800.0; }, 1, kHQ, ""},
      {"gaussian mask cut", [] { return gaussian_constant(11.0); }, 5500, "",
       "Warning: mask size (34) is greater than capacity (32)\n"},
  };
  for (const Case& c : cases) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const double got = c.got();
    const std::string err = testing::internal::GetCapturedStderr(), out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(std::isnan(c.want) ? std::isnan(got) : std::fabs(got - c.want) < 1e-9) << c.what << ": " << got;
    EXPECT_TRUE(!c.out || out == c.out) << c.what << ": " << out;  // null: output not checked
    EXPECT_TRUE(!c.err || err == c.err) << c.what << ": " << err;
  }
}

TEST(QualityControl, DropsSpikesAndSurfaceExclusionsAndRecordsExtrema) {
  struct Case { double spike, hole; int level; std::vector<int32_t> extrema; std::vector<int> dropped; };
  const Case cases[] = {
      // The corners, lower than all their neighbours, are minima; corner 0 is recorded as 0.
      {0, 0, 500, {0, -10, 60, -110, -120}, {}},
      // 30 above its nearest neighbours and 12 below them (tolerance 10) are dropped; the
      // hole leaves station 16, south of it, above its four nearest neighbours.
      {30, 12, 500, {0, -10, 16, -110, -120}, {27, 60}},
      // At the surface 4205 and 4211 are dropped, and within 5 degrees the southern corners have
      // 7 neighbours, too few to be recorded; the northern ones, where meridians converge, 10.
      {0, 0, 1000, {60, -110, -120}, {20, 30}},
  };
  for (const Case& c : cases) {
    Stations s = dome();
    s.value[60] += c.spike;
    s.value[27] -= c.hole;
    std::vector<double> buf = s.buffer();
    daCressman b(5);
    tervik::detail::bind_input(b, 41, 41, 80, 120, 20, 60, s.count(), kFourColumns, buf.data(), nullptr, nullptr);
    std::vector<unsigned short> flags(s.count(), 7);
    const int options[3] = {1, c.level, 0};
    b.qualityControl(flags.data(), s.count(), options);
    EXPECT_EQ(b.extremum_list, c.extrema) << c.level;
    for (int k = 0; k < s.count(); ++k)
      EXPECT_EQ(flags[k], std::count(c.dropped.begin(), c.dropped.end(), k) ? 0 : 1) << k;
  }
}

TEST(SurfaceSmooth, ReproducesPolynomialsOfItsDegreeUpToTheEdges) {
  struct Case { int mode; double (*f)(double, double); };
  const Case cases[] = {
      {1, [](double x, double y) { return 3 + 2 * x - y; }},
      {2, [](double x, double y) { return 1 + x * x - 0.5 * x * y + 0.25 * y * y; }},
      {3, [](double x, double y) { return x * x * x / 50 - x * y * y / 30 + y; }},
  };
  for (const Case& c : cases)
    for (int nx : {2, 4, 13}) {
      std::vector<double> g(nx * 9);
      for (size_t p = 0; p < g.size(); ++p) g[p] = c.f(p % nx, p / nx);
      std::vector<double> smoothed = g;
      daCressman(1).surfaceSmooth(smoothed.data(), nx, 9, 3, c.mode);
      for (size_t p = 0; p < g.size(); ++p) ASSERT_NEAR(smoothed[p], g[p], 1e-9) << c.mode << " " << nx << " " << p;
    }
  // It does smooth: a spike falls, and an unknown mode smooths as the plane does.
  std::vector<double> plane(81, 0.0);
  plane[40] = 1.0;
  std::vector<double> other = plane;
  daCressman(1).surfaceSmooth(plane.data(), 9, 9, 1, 1);
  daCressman(1).surfaceSmooth(other.data(), 9, 9, 1, 4);
  EXPECT_LT(plane[40], 0.5);
  EXPECT_EQ(plane, other);
}

}  // namespace
