#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <tervik/objective.h>

#include "objective/stations.h"

using namespace tervik::test;

namespace {

// Great-circle distance in degrees with the scheme's truncated degree-to-radian factor.
double arc(double lon1, double lat1, double lon2, double lat2) {
  const double q = 0.0174532925;
  lon1 *= q, lat1 *= q, lon2 *= q, lat2 *= q;
  const double dx = std::cos(lon1) * std::cos(lat1) - std::cos(lon2) * std::cos(lat2);
  const double dy = std::sin(lon1) * std::cos(lat1) - std::sin(lon2) * std::cos(lat2);
  const double dz = std::sin(lat1) - std::sin(lat2);
  return 2.0 * std::asin(std::sqrt(dx * dx + dy * dy + dz * dz) / 2.0) / q;
}

// The Barnes analysis as plain loops over every grid point and every station.
std::vector<double> reference_barnes(const Domain& d, const Stations& s) {
  const double eps = 2.220446049250313e-16, kappa = 0.25, R = 20.0, gamma = 0.3;
  const double dlon = (d.lon_max - d.lon_min) / (d.nx - 1), dlat = (d.lat_max - d.lat_min) / (d.ny - 1);
  std::vector<double> g(d.nx * d.ny), bg(s.value);
  auto D = [&](int i, int j, int k) {
    const double a = arc(d.lon_min + i * dlon, d.lat_min + j * dlat, s.lon[k], s.lat[k]);
    return a * a;
  };
  for (int i = 0; i < d.nx; ++i)
    for (int j = 0; j < d.ny; ++j) {
      double num = 0, sum = 0;
      for (int k = 0; k < s.count(); ++k) {
        const double dd = D(i, j, k);
        if (dd < eps) break;
        if (dd < R * R) {
          const double w = std::exp(-dd / (4 * kappa));
          num += w * s.value[k], sum += w;
        }
      }
      g[j * d.nx + i] = sum > eps ? num / sum : num;
    }
  for (int pass = 1; pass <= 5; ++pass) {
    for (int k = 0; k < s.count(); ++k) {
      const double lon = s.lon[k], lat = s.lat[k];
      if (!(lon > d.lon_min && lon < d.lon_max && lat > d.lat_min && lat < d.lat_max)) continue;
      const double x = (lon - d.lon_min) / dlon, y = (lat - d.lat_min) / dlat;
      const int i0 = static_cast<int>(x), j0 = static_cast<int>(y);
      const double fx = x - i0, fy = y - j0;
      const int n = j0 * d.nx + i0;
      const double a = g[n] + (g[n + 1] - g[n]) * fx, b = g[n + d.nx] + (g[n + d.nx + 1] - g[n + d.nx]) * fx;
      bg[k] = a + (b - a) * fy;
    }
    const double Rk2 = R * R / ((pass + 2.0) * (pass + 2.0)), shape = 4 * kappa * std::pow(gamma, pass);
    for (int i = 0; i < d.nx; ++i)
      for (int j = 0; j < d.ny; ++j) {
        double num = 0, sum = 0;
        double& p = g[j * d.nx + i];
        for (int k = 0; k < s.count(); ++k) {
          const double dd = D(i, j, k);
          if (dd == 0) {
            p = s.value[k];
            break;
          }
          if (dd < Rk2) {
            const double w = std::exp(-dd / shape);
            num += w * (s.value[k] - bg[k]), sum += w;
          }
        }
        if (sum > eps) p += num / sum;
      }
  }
  return g;
}

TEST(Barnes, StationSumsEqualThePlainLoopOverAllStations) {
  // Mid-latitudes, across the date line, and a polar cap around the whole parallel.
  const Domain domains[] = {{36, 24, 90.0, 125.0, 20.0, 43.0}, {25, 19, 170.0, 194.0, -60.0, -42.0},
                            {37, 16, 0.0, 360.0, 60.0, 90.0}};
  for (const Domain& d : domains) {
    Stations s = random_stations(d, 250, 5, [](double x, double y) { return 30 * std::sin(x / 7) + y; });
    // Stations on grid points (the first-pass and correction-pass stops), on the domain's
    // edge, outside it, one turn of longitude away and far outside the first radius.
    s.add(1, d.lon(4), d.lat(6), 80.0);
    s.add(2, d.lon(4), d.lat(6), 90.0);
    s.add(3, d.lon_min, d.lat(3), 70.0);
    s.add(4, d.lon(2) - 360.0, d.lat(2), 75.0);
    s.add(5, d.lon_max + 3.0, d.lat(7), 60.0);
    s.add(6, d.lon_min - 40.0, d.lat(7), 60.0);
    s.add(7, d.lon(9), d.lat(9), 60.0);
    daBarnes b;
    const std::vector<double> fast = run(b, d, s);
    const std::vector<double> plain = reference_barnes(d, s);
    ASSERT_EQ(fast.size(), plain.size());
    EXPECT_EQ(0, std::memcmp(fast.data(), plain.data(), fast.size() * sizeof(double))) << d.lon_min;
  }
}

TEST(Barnes, AStationOnAGridPointGivesTheFirstPassItsDeliberateHole) {
  // One station on grid point (10, 10). The first pass leaves that point at 0 (the station
  // ends the point's loop before adding itself) and gives every other point the value, or
  // the bare weighted sum where the weight is negligible. The station's background is then
  // 0, so the first correction adds the whole value once more around it (radius 20/3),
  // while the point itself takes the value; later passes see no increment.
  const Domain d{41, 41, 80.0, 120.0, 20.0, 60.0};
  const double v = 50.0, eps = 2.220446049250313e-16;
  Stations s;
  s.add(1, d.lon(10), d.lat(10), v);
  daBarnes b;
  const std::vector<double> g = run(b, d, s);
  ASSERT_FALSE(g.empty());
  for (int j = 0; j < d.ny; ++j)
    for (int i = 0; i < d.nx; ++i) {
      const double r = arc(d.lon(i), d.lat(j), s.lon[0], s.lat[0]);
      const double w1 = std::exp(-r * r), w2 = std::exp(-r * r / 0.3);
      double expected = r >= 20.0 ? 0.0 : w1 > eps ? v : v * w1;
      if (r < 20.0 / 3 && w2 > eps) expected += v;
      if (i == 10 && j == 10) expected = v;
      ASSERT_NEAR(g[j * d.nx + i], expected, 1e-12) << i << "," << j;
    }
  EXPECT_EQ(g[10 * d.nx + 11], 2 * v);
  // On the domain's edge the station never gets a background: nothing is doubled.
  Stations edge;
  edge.add(1, d.lon_min, d.lat(10), v);
  const std::vector<double> e = run(b, d, edge);
  EXPECT_EQ(e[10 * d.nx + 0], v);
  EXPECT_NEAR(e[10 * d.nx + 3], v, 1e-12);
  EXPECT_EQ(e[10 * d.nx + 30], 0.0);  // 30 degrees away
}

TEST(Barnes, NoStationGivesZerosAndBadStationsAreSkipped) {
  const Domain d{11, 11, 100.0, 110.0, 30.0, 40.0};
  Stations none;
  daBarnes b;
  const std::vector<double> z = run(b, d, none);
  ASSERT_EQ(z.size(), 121u);
  for (double v : z) EXPECT_EQ(v, 0.0);

  Stations s;
  s.add(1, 104.3, 35.2, 20.0);
  Stations with_bad = s;
  with_bad.add(2, NAN, 35.0, 10.0);
  with_bad.add(3, 104.0, INFINITY, 10.0);
  with_bad.add(4, 103.0, 34.0, NAN);
  EXPECT_EQ(run(b, d, s), run(b, d, with_bad));
}

TEST(Barnes, ReproducesASmoothFieldAtItsStations) {
  const Domain d{71, 46, 70.0, 140.0, 15.0, 60.0};
  Stations s = random_stations(d, 1500, 13, height_field);
  daBarnes b;
  const std::vector<double> g = run(b, d, s);
  ASSERT_FALSE(g.empty());
  EXPECT_LT(rms_at_stations(g, d, s, height_field), 3.0);
}

}  // namespace
