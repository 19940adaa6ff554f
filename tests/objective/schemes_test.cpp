// What the schemes share: smooth fields and real pressure are met at the stations, bad input
// fails with the scheme's message. The Barnes passes visit only the grid points near each
// station (found row by row on the sphere): held bit for bit to the plain loops.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <tervik/objective.h>

#include "objective/stations.h"
#include "support/paths.h"

using namespace tervik::test;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

// Great-circle distance in degrees with the schemes' truncated degree-to-radian factor.
double arc(double lon1, double lat1, double lon2, double lat2) {
  const double q = 0.0174532925;
  const double dx = std::cos(lon1 * q) * std::cos(lat1 * q) - std::cos(lon2 * q) * std::cos(lat2 * q);
  const double dy = std::sin(lon1 * q) * std::cos(lat1 * q) - std::sin(lon2 * q) * std::cos(lat2 * q);
  const double dz = std::sin(lat1 * q) - std::sin(lat2 * q);
  return 2.0 * std::asin(std::sqrt(dx * dx + dy * dy + dz * dz) / 2.0) / q;
}

// Barnes with kappa 0.25, radius 20 and gamma 0.3. Pass 0 weighs the values themselves (a
// background of 0) and stops at a station on the point; later passes weigh the increments on
// the stations' bilinear backgrounds and set a point that holds a station to its value.
std::vector<double> plain_barnes(const Domain& d, const Stations& s) {
  const double eps = 2.220446049250313e-16, dlon = (d.lon_max - d.lon_min) / (d.nx - 1);
  const double dlat = (d.lat_max - d.lat_min) / (d.ny - 1);
  std::vector<double> g(d.nx * d.ny, 0.0), bg(s.count(), 0.0);
  auto D = [&](size_t p, int k) {
    const double a = arc(d.lon_min + (p % d.nx) * dlon, d.lat_min + (p / d.nx) * dlat, s.lon[k], s.lat[k]);
    return a * a;
  };
  for (int pass = 0; pass <= 5; ++pass) {
    for (int k = 0; k < s.count() && pass > 0; ++k) {
      const bool inside = s.lon[k] > d.lon_min && s.lon[k] < d.lon_max && s.lat[k] > d.lat_min && s.lat[k] < d.lat_max;
      bg[k] = inside ? bilinear(g, d, s.lon[k], s.lat[k]) : s.value[k];
    }
    const double R2 = pass == 0 ? 400.0 : 400.0 / ((pass + 2.0) * (pass + 2.0));
    const double shape = pass == 0 ? 1.0 : std::pow(0.3, pass);
    for (size_t p = 0; p < g.size(); ++p) {
      double num = 0, sum = 0;
      for (int k = 0; k < s.count(); ++k) {
        const double dd = D(p, k);
        if (pass == 0 ? dd < eps : dd == 0) {
          g[p] = pass == 0 ? g[p] : s.value[k];
          break;
        }
        if (dd < R2) {
          num += std::exp(-dd / shape) * (s.value[k] - bg[k]);
          sum += std::exp(-dd / shape);
        }
      }
      if (sum > eps) g[p] += num / sum;
      else if (pass == 0) g[p] = num;
    }
  }
  return g;
}

TEST(FastPasses, BarnesEqualsThePlainLoopBitForBit) {
  // Mid-latitudes, across the date line, and a polar cap around the whole parallel.
  const Domain domains[] = {{36, 24, 90.0, 125.0, 20.0, 43.0}, {25, 19, 170.0, 194.0, -60.0, -42.0},
                            {37, 16, 0.0, 360.0, 60.0, 90.0}};
  for (const Domain& d : domains) {
    Stations s = random_stations(d, 250, 5, [](double x, double y) { return 30 * std::sin(x / 7) + y; });
    // Two stations on one grid point, one on the edge, one a turn of longitude away, one
    // beyond the first radius outside.
    s.add(1, d.lon(4), d.lat(6), 80.0);
    s.add(2, d.lon(4), d.lat(6), 90.0);
    s.add(3, d.lon_min, d.lat(3), 70.0);
    s.add(4, d.lon(2) - 360.0, d.lat(2), 75.0);
    s.add(5, d.lon_min - 40.0, d.lat(7), 60.0);
    daBarnes b;
    const std::vector<double> fast = run(b, d, s), plain = plain_barnes(d, s);
    ASSERT_EQ(fast.size(), plain.size());
    EXPECT_EQ(0, std::memcmp(fast.data(), plain.data(), fast.size() * sizeof(double))) << d.lon_min;
  }
}

// A synoptic-looking 500 hPa height field (m): a trough and a ridge on a poleward gradient.
double height_field(double lon, double lat) {
  return 5700.0 - 4.0 * (lat - 15.0) + 60.0 * std::sin(lon * M_PI / 35.0) * std::cos(lat * M_PI / 50.0);
}

TEST(Schemes, ReproduceASmoothFieldAtItsStationsAndBetweenThem) {
  const Domain d{71, 46, 70.0, 140.0, 15.0, 60.0};
  Stations s = random_stations(d, 1500, 11, height_field);
  // The Cressman schemes start from a first guess off by up to 15 m in a wave.
  std::vector<double> guess(d.nx * d.ny);
  for (size_t p = 0; p < guess.size(); ++p)
    guess[p] = height_field(d.lon(p % d.nx), d.lat(p / d.nx)) + 15 * std::sin(p % d.nx / 6.0 + p / d.nx / 9.0);
  daCressman cressman(5);
  daCressmanHQ hq(5);
  daBarnes barnes;
  daSurfaceFit fit;
  const int options[3] = {1, 500, 0};
  struct Case { const char* name; daBase* scheme; double* guess; };
  for (const Case& c : {Case{"cressman", &cressman, guess.data()}, Case{"hq", &hq, guess.data()},
                        Case{"barnes", &barnes, nullptr}, Case{"fit", &fit, nullptr}}) {
    const std::vector<double> g = run(*c.scheme, d, s, c.guess, options);
    ASSERT_EQ(g.size(), guess.size()) << c.name;
    // The field spans about 300 m; the analysis meets the stations within a few metres and
    // follows the field between them.
    EXPECT_LT(rms_at_stations(g, d, s), 3.0) << c.name;
    for (size_t p = 0; p < g.size(); ++p)
      ASSERT_NEAR(g[p], height_field(d.lon(p % d.nx), d.lat(p / d.nx)), 15.0) << c.name << " " << p;
  }
}

TEST(Schemes, BadInputFailsWithTheSchemesMessage) {
  Stations none, unusable, one;
  unusable.add(1, 100, 30, 9999.0);  // the missing value
  unusable.add(2, NAN, 40, 5500.0);
  unusable.add(3, 140, 30, 5500.0);  // on the last column: no grid cell
  one.add(1, 100, 30, 5500);
  const Domain ok{10, 10, 70, 140, 15, 60};
  const int no_value[6] = {1, 2, 3, 0, 0, 0};
  struct Case { Domain d; Stations* s; const int* codes; const char* message; };
  const Case cases[] = {
      {ok, &none, kFourColumns, "no station has valid height.\n"},
      {ok, &unusable, kFourColumns, "no station has valid height.\n"},
      {{1, 10, 70, 140, 15, 60}, &one, kFourColumns, "invalid grid of 1 x 10 points.\n"},
      {{100000, 100000, 70, 140, 15, 60}, &one, kFourColumns, "invalid grid of 100000 x 100000 points.\n"},
      {{10, 10, 140, 70, 15, 60}, &one, kFourColumns, "invalid domain 140..70 E, 15..60 N.\n"},
      {{10, 10, 70, 140, 15, 15}, &one, kFourColumns, "invalid domain 70..140 E, 15..15 N.\n"},
      {{10, 10, NAN, 140, 15, 60}, &one, kFourColumns, "invalid domain nan..140 E, 15..60 N.\n"},
      {ok, &one, no_value, "longitude, latitude or value column missing.\n"},
  };
  for (const Case& c : cases) {
    daCressman cressman(5);  // fresh: columns of an earlier call would stay bound
    daCressmanHQ hq(5);
    daBarnes barnes;  // needs no station, and screens only values that are not finite
    daSurfaceFit fit;
    for (const auto& [name, scheme] : {std::pair<const char*, daBase*>{"daCressman", &cressman},
                                       {"daCressmanHQ", &hq}, {"daSurfaceFit", &fit}, {"daBarnes", &barnes}}) {
      if (scheme == &barnes && c.s != &one) continue;
      std::vector<double> buf = c.s->buffer();
      CaptureStderr();
      EXPECT_EQ(scheme->assimilate(c.d.nx, c.d.ny, c.d.lon_min, c.d.lon_max, c.d.lat_min, c.d.lat_max,
                                   c.s->count(), 9999.0, c.codes, buf.data(), nullptr, nullptr, nullptr),
                nullptr);
      EXPECT_EQ(GetCapturedStderr(), std::string(name) + "::assimilate: " + c.message);
    }
  }
}

// Sea-level pressure (hPa) of the North-American surface reports of 12 UTC 12 March 1993, as
// the storm of that week formed over the Gulf of Mexico. The operational Cressman analysis
// starts from the Barnes analysis.
TEST(RealStations, SchemesFollowTheSurfacePressureOfAStormMorning) {
  TERVIK_REQUIRE_SHARED_DATA(path, "stations/SFC_obs.csv");
  const Domain d{61, 26, -125.0, -65.0, 25.0, 50.0};
  std::ifstream in(path);
  Stations all, inside;
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> f;
    std::stringstream ss(line);
    for (std::string item; std::getline(ss, item, ',');) f.push_back(item);
    if (f.size() < 12 || f[1] != "1993-03-12 12:00:00" || f[11].empty()) continue;  // mslp is column 11
    const double lon = std::stod(f[2]), lat = std::stod(f[3]), p = std::stod(f[11]);
    all.add(all.count(), lon, lat, p);
    if (lon > d.lon_min && lon < d.lon_max && lat > d.lat_min && lat < d.lat_max) inside.add(0, lon, lat, p);
  }
  ASSERT_GT(inside.count(), 300);
  daBarnes barnes;
  daSurfaceFit fit;
  daCressmanHQ hq(5);
  const int surface[3] = {1, 1000, 0};
  std::vector<double> b = run(barnes, d, all);
  testing::internal::CaptureStdout();
  EXPECT_LT(rms_at_stations(run(hq, d, all, b.data(), surface), d, inside), 0.5);
  testing::internal::GetCapturedStdout();
  EXPECT_LT(rms_at_stations(b, d, inside), 0.6);
  EXPECT_LT(rms_at_stations(run(fit, d, all), d, inside), 1.2);
}

}  // namespace
