#ifndef TERVIK_TESTS_OBJECTIVE_STATIONS_H
#define TERVIK_TESTS_OBJECTIVE_STATIONS_H

// Station sets and analytic fields for the objective-analysis tests.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include <tervik/objective.h>

namespace tervik::test {

inline constexpr int kFourColumns[6] = {1, 2, 3, 4, 0, 0};

struct Domain {
  int nx, ny;
  double lon_min, lon_max, lat_min, lat_max;
  double lon(int i) const { return lon_min + i * (lon_max - lon_min) / (nx - 1); }
  double lat(int j) const { return lat_min + j * (lat_max - lat_min) / (ny - 1); }
};

// Station columns as the schemes read them: number, lon, lat, value, wind direction, speed.
struct Stations {
  std::vector<double> id, lon, lat, value, dir, speed;
  int count() const { return static_cast<int>(lon.size()); }
  void add(double i, double x, double y, double v, double d = 0.0, double s = 0.0) {
    id.push_back(i), lon.push_back(x), lat.push_back(y), value.push_back(v);
    dir.push_back(d), speed.push_back(s);
  }
  std::vector<double> buffer() const {  // the six columns back to back
    std::vector<double> b;
    for (const auto* c : {&id, &lon, &lat, &value, &dir, &speed}) b.insert(b.end(), c->begin(), c->end());
    return b;
  }
};

// `count` stations spread at random over the domain's interior, sampling `field`.
template <typename Field>
Stations random_stations(const Domain& d, int count, unsigned seed, Field field) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> ux(d.lon_min + 0.2, d.lon_max - 0.2);
  std::uniform_real_distribution<double> uy(d.lat_min + 0.2, d.lat_max - 0.2);
  Stations s;
  for (int k = 0; k < count; ++k) {
    const double x = ux(rng), y = uy(rng);
    s.add(50000 + k, x, y, field(x, y));
  }
  return s;
}

// Runs a scheme over the stations (with their winds if asked); the grid, empty on failure.
// The value column is copied back: extremum enhancement changes it.
inline std::vector<double> run(daBase& scheme, const Domain& d, Stations& s, double* guess = nullptr,
                               const int* options = nullptr, bool wind = false) {
  std::vector<double> buf = s.buffer();
  const int columns[6] = {1, 2, 3, 4, wind ? 5 : 0, wind ? 6 : 0}, grids[2] = {guess ? 11 : 0, 0};
  double* out = scheme.assimilate(d.nx, d.ny, d.lon_min, d.lon_max, d.lat_min, d.lat_max, s.count(),
                                  9999.0, columns, buf.data(), grids, guess, options);
  std::copy(buf.begin() + 3 * s.count(), buf.begin() + 4 * s.count(), s.value.begin());
  std::vector<double> result(out, out ? out + static_cast<size_t>(d.nx) * d.ny : out);
  std::free(out);
  return result;
}

// Bilinear value of a result grid at (lon, lat), computed as the schemes do.
inline double bilinear(const std::vector<double>& g, const Domain& d, double lon, double lat) {
  const double x = (lon - d.lon_min) / ((d.lon_max - d.lon_min) / (d.nx - 1));
  const double y = (lat - d.lat_min) / ((d.lat_max - d.lat_min) / (d.ny - 1));
  const int i = std::min(static_cast<int>(x), d.nx - 2), j = std::min(static_cast<int>(y), d.ny - 2);
  const size_t n = static_cast<size_t>(j) * d.nx + i;
  const double a = g[n] + (g[n + 1] - g[n]) * (x - i);
  const double b = g[n + d.nx] + (g[n + d.nx + 1] - g[n + d.nx]) * (x - i);
  return a + (b - a) * (y - j);
}

// Root-mean-square difference between a grid and the stations' values.
inline double rms_at_stations(const std::vector<double>& g, const Domain& d, const Stations& s) {
  if (g.size() != static_cast<size_t>(d.nx) * d.ny) return INFINITY;  // the analysis failed
  double sum = 0.0;
  for (int k = 0; k < s.count(); ++k) sum += std::pow(bilinear(g, d, s.lon[k], s.lat[k]) - s.value[k], 2);
  return std::sqrt(sum / s.count());
}

}  // namespace tervik::test

#endif
