// Barnes analysis with Gaussian weights of great-circle distance.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"

using namespace tervik::detail;

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;
// With the truncated degree-to-radian factor, longitudes repeat every 2*pi/q degrees, a
// little more than 360.
constexpr double kLonPeriod = 2.0 * M_PI / kGreatCircleRadian;

// The grid's geometry as the station loops need it: every point on the sphere, and each
// row's latitude.
struct BarnesGrid {
  int nx, ny;
  double lon_min, lon_max, lat_min, lat_max, dlon, dlat;
  MallocArray<SpherePoint> points;  // nx*ny
  MallocArray<double> row_lat;      // ny, degrees
  bool polar;                       // a row lies beyond the poles: no latitude shortcut
};

// Calls visit(p) for every grid point p within `radius` degrees of arc of the station (and
// for some points a little farther): the caller's exact distance test decides. Skipping the
// rest changes nothing, since their distance fails every test of the callers.
//
// On the sphere, sin^2(t/2) = sin^2(dlat/2) + cos(lat1) cos(lat2) sin^2(dlon/2) for the arc
// t between two points, so for each row the longitudes within reach form one interval
// around the station's (repeated every turn of longitude).
template <typename Visit>
void for_each_near(const BarnesGrid& g, double lon, double lat, double radius, Visit visit) {
  const int nx = g.nx;
  auto all_columns = [&](int j) {
    for (int i = 0; i < nx; ++i) visit(static_cast<size_t>(j) * nx + i);
  };
  const double half = radius * kGreatCircleRadian / 2.0;
  if (g.polar || std::fabs(lat) > 90.0 || !(half < M_PI / 2.0) ||
      g.lon_max - g.lon_min > 10.0 * kLonPeriod) {
    for (int j = 0; j < g.ny; ++j) all_columns(j);
    return;
  }
  const double margin = 1e-6;  // degrees; far above the rounding of the formulas
  const double ja = (lat - radius - margin - g.lat_min) / g.dlat;
  const double jb = (lat + radius + margin - g.lat_min) / g.dlat;
  const double j_lo = std::max(0.0, std::floor(std::min(ja, jb)) - 1.0);
  const double j_hi = std::min(g.ny - 1.0, std::ceil(std::max(ja, jb)) + 1.0);
  if (!(j_lo <= j_hi)) return;

  const double sin_half = std::sin(half);
  const double reach = sin_half * sin_half * (1.0 + 1e-9) + 1e-15;
  const double phi = lat * kGreatCircleRadian;
  const double cos_phi = std::cos(phi);
  // The station's longitude moved into [lon_min, lon_min + period).
  const double centre = g.lon_min + (std::fmod(lon - g.lon_min, kLonPeriod) +
                                     (lon < g.lon_min ? kLonPeriod : 0.0));
  for (int j = static_cast<int>(j_lo); j <= static_cast<int>(j_hi); ++j) {
    const double row_phi = g.row_lat[j] * kGreatCircleRadian;
    const double s = std::sin((row_phi - phi) / 2.0);
    if (s * s > reach) continue;
    const double product = cos_phi * std::cos(row_phi);
    const double rhs = product > 1e-12 ? (reach - s * s) / product : 2.0;
    if (rhs >= 1.0) {
      all_columns(j);
      continue;
    }
    const double dlon = 2.0 * std::asin(std::sqrt(rhs)) / kGreatCircleRadian + margin;
    int previous = -1;
    for (int k = -1;; ++k) {
      const double lo = centre + k * kLonPeriod - dlon;
      if (lo > g.lon_max) break;
      const double hi = centre + k * kLonPeriod + dlon;
      const double a = std::max(0.0, std::ceil((lo - g.lon_min) / g.dlon) - 1.0);
      const double b = std::min(nx - 1.0, std::floor((hi - g.lon_min) / g.dlon) + 1.0);
      if (!(a <= b)) continue;
      const int i_lo = std::max(static_cast<int>(a), previous + 1);
      const int i_hi = static_cast<int>(b);
      for (int i = i_lo; i <= i_hi; ++i) visit(static_cast<size_t>(j) * nx + i);
      previous = std::max(previous, i_hi);
    }
  }
}

}  // namespace

daBarnes::daBarnes() { init(); }

void daBarnes::init() {
  kappa = 0.25;
  influence_radius = 20.0;
  gamma = 0.3;
}

double* daBarnes::assimilate(int nx_, int ny_, double lon_min_, double lon_max_,
                             double lat_min_, double lat_max_, int count, double,
                             const int* column_codes, double* station_buffer,
                             const int* grid_codes, double* grid_buffer, const int*) {
  bind_input(*this, nx_, ny_, lon_min_, lon_max_, lat_min_, lat_max_, count, column_codes,
             station_buffer, grid_codes, grid_buffer);
  if (!check_domain("daBarnes", nx, ny, lon_min, lon_max, lat_min, lat_max) ||
      !check_columns("daBarnes", *this))
    return nullptr;

  const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
  const size_t n = station_count > 0 ? static_cast<size_t>(station_count) : 0;
  BarnesGrid grid{nx, ny, lon_min, lon_max, lat_min, lat_max,
                  (lon_max - lon_min) / (nx - 1), (lat_max - lat_min) / (ny - 1),
                  {}, {}, false};
  MallocArray<double> g, num, sum, backgrounds;
  MallocArray<unsigned char> stopped, usable;
  MallocArray<SpherePoint> stations;
  if (!g.allocate(cells) || !num.allocate(cells) || !sum.allocate(cells) ||
      !stopped.allocate(cells) || !grid.points.allocate(cells) ||
      !grid.row_lat.allocate(static_cast<size_t>(ny)) || !backgrounds.allocate(n) ||
      !usable.allocate(n) || !stations.allocate(n)) {
    std::fprintf(stderr, "daBarnes::assimilate: memory allocation error.\n");
    return nullptr;
  }
  for (int j = 0; j < ny; ++j) {
    const double lat = lat_min + j * grid.dlat;
    grid.row_lat[j] = lat;
    if (!(std::fabs(lat) <= 90.0)) grid.polar = true;
    for (int i = 0; i < nx; ++i)
      grid.points[static_cast<size_t>(j) * nx + i] = sphere_point(lon_min + i * grid.dlon, lat);
  }
  for (size_t s = 0; s < n; ++s) {
    // A station without a finite position or value would only spread NaN.
    usable[s] = std::isfinite(lon_column[s]) && std::isfinite(lat_column[s]) &&
                std::isfinite(value_column[s]);
    stations[s] = sphere_point(lon_column[s], lat_column[s]);
  }
  auto squared_distance = [&](size_t p, size_t s) {
    const double d = great_circle(grid.points[p], stations[s]);
    return d * d;
  };

  // First pass. Every station is visited in order and adds itself to the grid points near
  // it, so each point sums its stations in the order of the station list. A station that
  // coincides with a grid point ends that point's sum: later stations no longer reach it.
  std::fill(num.get(), num.get() + cells, 0.0);
  std::fill(sum.get(), sum.get() + cells, 0.0);
  std::fill(stopped.get(), stopped.get() + cells, 0);
  const double R2 = influence_radius * influence_radius;
  const double first_shape = 4.0 * kappa;
  for (size_t s = 0; s < n; ++s) {
    if (!usable[s]) continue;
    const double value = value_column[s];
    for_each_near(grid, lon_column[s], lat_column[s], std::max(influence_radius, 1e-6),
                  [&](size_t p) {
                    if (stopped[p]) return;
                    const double D = squared_distance(p, s);
                    if (D < kEpsilon) {
                      stopped[p] = 1;
                    } else if (D < R2) {
                      const double w = std::exp(-D / first_shape);
                      num[p] += w * value;
                      sum[p] += w;
                    }
                  });
  }
  for (size_t p = 0; p < cells; ++p) g[p] = sum[p] > kEpsilon ? num[p] / sum[p] : num[p];

  for (size_t s = 0; s < n; ++s) backgrounds[s] = value_column[s];
  for (int k = 1; k <= 5; ++k) {
    // Backgrounds of the stations strictly inside the domain; the others keep theirs.
    for (size_t s = 0; s < n; ++s) {
      const double lon = lon_column[s];
      const double lat = lat_column[s];
      if (!(lon > lon_min && lon < lon_max && lat > lat_min && lat < lat_max)) continue;
      const double x = (lon - lon_min) / grid.dlon;
      const double y = (lat - lat_min) / grid.dlat;
      // A station just inside the last column or row can round to x = nx-1; keep it in the
      // last cell rather than read past the grid.
      const int i0 = std::min(static_cast<int>(x), nx - 2);
      const int j0 = std::min(static_cast<int>(y), ny - 2);
      backgrounds[s] = background(g.get(), nx, j0 * nx + i0, x - i0, y - j0);
    }
    const double Rk2 = influence_radius * influence_radius / ((k + 2.0) * (k + 2.0));
    const double shape = 4.0 * kappa * std::pow(gamma, k);
    std::fill(num.get(), num.get() + cells, 0.0);
    std::fill(sum.get(), sum.get() + cells, 0.0);
    std::fill(stopped.get(), stopped.get() + cells, 0);
    for (size_t s = 0; s < n; ++s) {
      if (!usable[s]) continue;
      const double value = value_column[s];
      const double increment = value - backgrounds[s];
      for_each_near(grid, lon_column[s], lat_column[s], std::max(std::sqrt(Rk2), 1e-6),
                    [&](size_t p) {
                      if (stopped[p]) return;
                      const double D = squared_distance(p, s);
                      if (D == 0.0) {
                        g[p] = value;
                        stopped[p] = 1;
                      } else if (D < Rk2) {
                        const double w = std::exp(-D / shape);
                        num[p] += w * increment;
                        sum[p] += w;
                      }
                    });
    }
    for (size_t p = 0; p < cells; ++p)
      if (sum[p] > kEpsilon) g[p] += num[p] / sum[p];
  }
  return g.release();
}
