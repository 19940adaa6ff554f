// Successive-correction (Cressman) analysis and the correction passes it shares with the
// operational variant.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "platform/numerics.h"

namespace tervik::detail {

namespace {

// What one pass needs of a station beyond its place in the grid.
struct PassStation {
  double increment;  // observation minus the background of the previous pass
  bool wind;         // carries a usable wind for the geostrophic term
  double u, v;       // wind components, m/s
  double cos_lat, sin_lat;
};

// The column range [lo, hi] of grid points that can lie within `radius` of coordinate c,
// widened by one point on each side so that the exact test, not this range, decides.
// False when there is none (also for a NaN radius).
bool window(double c, double radius, int size, int& lo, int& hi) {
  const double a = std::max(0.0, std::ceil(c - radius) - 1.0);
  const double b = std::min(size - 1.0, std::floor(c + radius) + 1.0);
  if (!(a <= b)) return false;
  lo = static_cast<int>(a);
  hi = static_cast<int>(b);
  return true;
}

}  // namespace

// One pass adds, at every grid point, the weighted increments of the stations within the
// scan radius. Instead of asking every station at every grid point, each station visits the
// grid points of its own square; stations are taken in order, so every point receives its
// terms in exactly the order of a loop over all stations and the sums are the same.
void correction_passes(const daCressman& c, double undef, LocatedStations& loc,
                       double* grid) {
  const int nx = c.nx;
  const int ny = c.ny;
  const int count = c.station_count;
  const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
  MallocArray<double> num, den;
  MallocArray<PassStation> info;
  if (!num.allocate(cells) || !den.allocate(cells) ||
      !info.allocate(static_cast<size_t>(count > 0 ? count : 0)))
    return;  // the first guess stands as the analysis
  const bool wind_columns = c.wind_dir_column && c.wind_speed_column;

  for (int k = 0; k < c.scan_count; ++k) {
    const double threshold = c.reject_threshold[k];
    for (int s = 0; s < count; ++s) {
      if (loc.cell[s] == -1) continue;
      const double value = c.value_column[s];
      const double d = value - background(grid, nx, loc.cell[s], loc.fx[s], loc.fy[s]);
      if (d > threshold || d < -threshold) {
        loc.cell[s] = -1;
        std::printf("Station rejected in %d-th scan: %.0f, %.1f, %.1f, %.0f\n", k,
                    c.id_column ? c.id_column[s] : 0.0, c.lon_column[s], c.lat_column[s],
                    value);
        continue;
      }
      PassStation& p = info[s];
      p.increment = d;
      const double lat = c.lat_column[s];
      p.wind = false;
      if (k > 0 && wind_columns) {
        const double dir = c.wind_dir_column[s];
        const double speed = c.wind_speed_column[s];
        if (dir != undef && speed != undef && std::isfinite(dir) && std::isfinite(speed) &&
            lat >= 23.0 && lat <= 66.0) {
          p.wind = true;
          p.u = speed * std::cos((270.0 - dir) * M_PI / 180.0);
          p.v = speed * std::sin((270.0 - dir) * M_PI / 180.0);
          const double phi = lat * 0.017453292519943295;
          p.cos_lat = std::cos(phi);
          p.sin_lat = std::sin(phi);
        }
      }
    }

    std::fill(num.get(), num.get() + cells, 0.0);
    std::fill(den.get(), den.get() + cells, 0.0);
    const double R = c.scan_radius[k];
    const double R2 = R * R;
    for (int s = 0; s < count; ++s) {
      if (loc.cell[s] == -1) continue;
      const double x = loc.x[s];
      const double y = loc.y[s];
      int i_lo, i_hi, j_lo, j_hi;
      if (!window(x, R, nx, i_lo, i_hi) || !window(y, R, ny, j_lo, j_hi)) continue;
      const PassStation& p = info[s];
      const double value = c.value_column[s];
      for (int j = j_lo; j <= j_hi; ++j) {
        const double dj = j - y;
        if (!(std::fabs(dj) <= R)) continue;
        for (int i = i_lo; i <= i_hi; ++i) {
          const double di = i - x;
          if (!(std::fabs(di) <= R)) continue;
          const double r2 = di * di + dj * dj;
          if (!(r2 <= R2)) continue;
          // A zero radius on a station that sits on the point would give 0/0; the weight's
          // limit there is 1.
          const double w = (R2 + r2) != 0.0 ? (R2 - r2) / (R2 + r2) : 1.0;
          const size_t g = static_cast<size_t>(j) * nx + i;
          const double ws = w * c.weight_factor;
          num[g] += ws * p.increment;
          den[g] += ws;
          if (p.wind) {
            // Height difference between station and point from the geostrophic wind,
            // grid lengths taken as degrees.
            const double a = vector_dir(i, j, x, y) * 0.017453292519943295;
            const double rho = std::sqrt(r2);
            const double S = p.v * p.cos_lat * std::cos(a) * rho * 111321.4 -
                             p.u * std::sin(a) * rho * 111137.0;
            const double f = 0.0001458423 * p.sin_lat;
            const double dz = f * 0.108 * S / 9.8;
            const double ww = w * c.wind_weight_factor;
            num[g] += ww * (value - dz - grid[g]);
            den[g] += ww;
          }
        }
      }
    }
    for (size_t g = 0; g < cells; ++g)
      if (den[g] > 1e-6) grid[g] = grid[g] + num[g] / den[g];
  }
}

}  // namespace tervik::detail

using namespace tervik::detail;

daCressman::daCressman(int scans) : scan_count(scans) { init(); }

void daCressman::init() {
  weight_factor = 1.0;
  wind_weight_factor = 0.25;
  const double radii[5] = {25, 10, 5, 2, 1};
  const double thresholds[5] = {24, 21, 18, 15, 10};
  std::copy(radii, radii + 5, scan_radius);
  std::copy(thresholds, thresholds + 5, reject_threshold);
}

double* daCressman::assimilate(int nx_, int ny_, double lon_min_, double lon_max_,
                               double lat_min_, double lat_max_, int count, double undef,
                               const int* column_codes, double* station_buffer,
                               const int* grid_codes, double* grid_buffer, const int*) {
  if (scan_count < 1 || scan_count > 5) {
    std::fprintf(stderr, "daCressman::assimilate: invalid scan number. Set to default %d.\n", 5);
    scan_count = 5;
  }
  bind_input(*this, nx_, ny_, lon_min_, lon_max_, lat_min_, lat_max_, count, column_codes,
             station_buffer, grid_codes, grid_buffer);
  if (!check_domain("daCressman", nx, ny, lon_min, lon_max, lat_min, lat_max) ||
      !check_columns("daCressman", *this))
    return nullptr;

  LocatedStations located;
  if (!located.allocate(station_count)) {
    std::fprintf(stderr, "daCressman::assimilate: memory allocation error.\n");
    return nullptr;
  }
  locate_stations(*this, undef, nullptr, located);
  if (located.accepted == 0) {
    std::fprintf(stderr, "daCressman::assimilate: no station has valid height.\n");
    return nullptr;
  }
  MallocArray<double> grid;
  if (!grid.allocate(static_cast<size_t>(nx) * static_cast<size_t>(ny))) {
    std::fprintf(stderr, "daCressman::assimilate: memory allocation error.\n");
    return nullptr;
  }
  start_grid(*this, located, grid.get());
  correction_passes(*this, undef, located, grid.get());
  return grid.release();
}
