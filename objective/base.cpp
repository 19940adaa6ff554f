// The analysis base: binding of the caller's columns, placing stations in the grid, the
// first guess, station screening and the grid smoothers shared by the schemes.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <new>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "platform/numerics.h"

namespace tervik::detail {

bool check_domain(const char* scheme, int nx, int ny, double lon_min, double lon_max,
                  double lat_min, double lat_max) {
  if (nx < 2 || ny < 2 || static_cast<long long>(nx) * ny > INT_MAX) {
    std::fprintf(stderr, "%s::assimilate: invalid grid of %d x %d points.\n", scheme, nx, ny);
    return false;
  }
  const bool finite = std::isfinite(lon_min) && std::isfinite(lon_max) &&
                      std::isfinite(lat_min) && std::isfinite(lat_max);
  if (!finite || !(lon_max > lon_min) || lat_max == lat_min) {
    std::fprintf(stderr, "%s::assimilate: invalid domain %g..%g E, %g..%g N.\n", scheme,
                 lon_min, lon_max, lat_min, lat_max);
    return false;
  }
  return true;
}

void bind_input(daBase& base, int nx, int ny, double lon_min, double lon_max, double lat_min,
                double lat_max, int station_count, const int* column_codes,
                double* station_buffer, const int* grid_codes, double* grid_buffer) {
  base.nx = nx;
  base.ny = ny;
  base.lon_min = lon_min;
  base.lon_max = lon_max;
  base.lat_min = lat_min;
  base.lat_max = lat_max;
  base.station_count = station_count;

  if (column_codes && station_buffer && station_count > 0) {
    double** slots[6] = {&base.id_column,    &base.lon_column,      &base.lat_column,
                         &base.value_column, &base.wind_dir_column, &base.wind_speed_column};
    size_t offset = 0;
    for (int k = 0; k < 6; ++k) {
      const int code = column_codes[k];
      if (code < 1 || code > 6) continue;
      *slots[code - 1] = station_buffer + offset;
      offset += static_cast<size_t>(station_count);
    }
  }
  if (grid_codes) {
    const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
    for (int k = 0; k < 2; ++k) {
      if (grid_codes[k] != 11) continue;
      // A null buffer binds "no first guess" rather than an address computed from null.
      base.first_guess = grid_buffer ? grid_buffer + k * cells : nullptr;
    }
  }
}

bool check_columns(const char* scheme, const daBase& base) {
  if (base.station_count <= 0 || (base.lon_column && base.lat_column && base.value_column))
    return true;
  std::fprintf(stderr, "%s::assimilate: longitude, latitude or value column missing.\n", scheme);
  return false;
}

bool LocatedStations::allocate(int count) {
  const size_t n = count > 0 ? static_cast<size_t>(count) : 0;
  return x.allocate(n) && y.allocate(n) && fx.allocate(n) && fy.allocate(n) &&
         cell.allocate(n);
}

void locate_stations(const daBase& b, double undef, const unsigned short* flags,
                     LocatedStations& out) {
  const double dlon = (b.lon_max - b.lon_min) / (b.nx - 1);
  const double dlat = (b.lat_max - b.lat_min) / (b.ny - 1);
  out.accepted = 0;
  double sum = 0.0;
  for (int s = 0; s < b.station_count; ++s) {
    out.cell[s] = -1;
    double lon = b.lon_column[s];
    if (lon < b.lon_min)
      lon += 360.0;
    else if (lon > b.lon_max)
      lon -= 360.0;
    const double x = (lon - b.lon_min) / dlon;
    const double y = (b.lat_column[s] - b.lat_min) / dlat;
    out.x[s] = x;
    out.y[s] = y;
    // trunc(x) lies in 0..nx-2 exactly when -1 < x < nx-1; testing the double first keeps
    // NaN and huge coordinates away from the conversion to int.
    if (!(x > -1.0 && x < b.nx - 1.0 && y > -1.0 && y < b.ny - 1.0)) continue;
    const double v = b.value_column[s];
    if (v == undef || !std::isfinite(v)) continue;
    if (flags && flags[s] == 0) continue;
    const int i0 = static_cast<int>(x);
    const int j0 = static_cast<int>(y);
    out.cell[s] = i0 + j0 * b.nx;
    out.fx[s] = x - i0;
    out.fy[s] = y - j0;
    sum += v;
    ++out.accepted;
  }
  out.mean = out.accepted > 0 ? sum / out.accepted : 0.0;
}

void start_grid(const daBase& b, const LocatedStations& located, double* grid) {
  const size_t cells = static_cast<size_t>(b.nx) * static_cast<size_t>(b.ny);
  if (b.first_guess) {
    std::copy(b.first_guess, b.first_guess + cells, grid);
  } else {
    std::fill(grid, grid + cells, located.mean);
  }
}

}  // namespace tervik::detail

using tervik::detail::great_circle;
using tervik::detail::MallocArray;
using tervik::detail::sphere_point;
using tervik::detail::SpherePoint;

daBase::daBase() = default;

daBase::~daBase() = default;

void daBase::qualityControl(unsigned short* flags, int count, const int* options) {
  extremum_list.clear();
  // The columns hold station_count values; never look past them.
  const int n = std::min(count, station_count);
  if (!flags || n <= 0 || !lon_column || !lat_column || !value_column) return;

  const int level = options ? options[1] : 0;
  const double radius = level < 1000 ? 8.0 : 5.0;
  const double tolerance = level < 1000 ? 10.0 : 8.0;

  MallocArray<SpherePoint> points;
  const bool cached = points.allocate(static_cast<size_t>(n));
  if (cached)
    for (int s = 0; s < n; ++s) points[s] = sphere_point(lon_column[s], lat_column[s]);
  auto distance = [&](int s, int t) {
    return cached ? great_circle(points[s], points[t])
                  : great_circle(lon_column[s], lat_column[s], lon_column[t], lat_column[t]);
  };

  for (int s = 0; s < n; ++s) {
    flags[s] = 1;
    const double id = id_column ? id_column[s] : 0.0;
    if (level >= 1000 && (id == 4205.0 || id == 4211.0)) {
      flags[s] = 0;  // two surface stations that are always excluded
      continue;
    }
    const double lon_s = lon_column[s];
    const double lat_s = lat_column[s];
    const double v = value_column[s];
    // On the sphere an arc is never shorter than its latitude difference, so a station
    // farther than that in latitude cannot be a neighbour (valid for real latitudes only).
    const bool lat_filter = std::fabs(lat_s) <= 90.0;

    int neighbours = 0;
    bool is_min = true;
    bool is_max = true;
    double min_diff = 9999.0;
    int mask = 0;
    int nearest[4] = {-1, -1, -1, -1};
    double nearest_d[4] = {0, 0, 0, 0};
    for (int t = 0; t < n; ++t) {
      if (t == s) continue;
      const double lat_t = lat_column[t];
      if (lat_filter && std::fabs(lat_t) <= 90.0 && std::fabs(lat_t - lat_s) > radius + 1e-6)
        continue;
      const double d = distance(s, t);
      if (!(d <= radius)) continue;
      ++neighbours;
      const double vt = value_column[t];
      if (!(vt > v)) is_min = false;
      if (!(vt < v)) is_max = false;
      min_diff = std::min(min_diff, std::fabs(v - vt));
      const double lon_t = lon_column[t];
      int q;
      if (lon_t >= lon_s && lat_t > lat_s)
        q = 0;
      else if (lon_t > lon_s && lat_t <= lat_s)
        q = 1;
      else if (lon_t <= lon_s && lat_t < lat_s)
        q = 2;
      else
        q = 3;
      if (!(mask & (1 << q)) || d < nearest_d[q]) {
        nearest[q] = t;
        nearest_d[q] = d;
        mask |= 1 << q;
      }
    }
    if (mask == 15) {
      // Neighbours on all four sides: judge by the nearest one on each side only.
      min_diff = std::fabs(v - value_column[nearest[0]]);
      is_min = true;
      is_max = true;
      for (int q = 0; q < 4; ++q) {
        const double vq = value_column[nearest[q]];
        min_diff = std::min(min_diff, std::fabs(v - vq));
        if (!(v <= vq)) is_min = false;
        if (!(v >= vq)) is_max = false;
      }
    }
    if (!is_min && !is_max) continue;
    if (neighbours == 0) {
      std::printf("station %.0f has no neighbors: %.1f, %.1f, %.0f\n", id, lon_s, lat_s, v);
    } else if (min_diff >= tolerance) {
      flags[s] = 0;  // an isolated spike
      continue;
    }
    const bool three_sides =
        mask == 7 || mask == 11 || mask == 13 || mask == 14 || mask == 15;
    if (three_sides || neighbours >= 8) {
      try {
        extremum_list.push_back(is_min ? -s : s);
      } catch (const std::bad_alloc&) {
        // Out of memory: the enhancement simply works on the extrema found so far.
      }
    }
  }
}

void daBase::smoothField(double* grid, int nx, int ny, int mask) {
  if (!grid || nx <= 0 || ny <= 0 || mask <= 0) return;
  const int m = std::min(mask, std::max(nx, ny));
  const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
  const double undef = tervik_data4::undef;
  // Sums and counts of the present values over each row window, then over columns of those.
  MallocArray<double> row_sum;
  MallocArray<int> row_count;
  if (!row_sum.allocate(cells) || !row_count.allocate(cells)) return;  // left unsmoothed
  for (int j = 0; j < ny; ++j) {
    const double* line = grid + static_cast<size_t>(j) * nx;
    for (int i = 0; i < nx; ++i) {
      double sum = 0.0;
      int count = 0;
      for (int k = std::max(0, i - m); k <= std::min(nx - 1, i + m); ++k) {
        if (line[k] == undef) continue;
        sum += line[k];
        ++count;
      }
      row_sum[static_cast<size_t>(j) * nx + i] = sum;
      row_count[static_cast<size_t>(j) * nx + i] = count;
    }
  }
  for (int j = 0; j < ny; ++j) {
    for (int i = 0; i < nx; ++i) {
      const size_t p = static_cast<size_t>(j) * nx + i;
      if (grid[p] == undef) continue;
      double sum = 0.0;
      long count = 0;
      for (int k = std::max(0, j - m); k <= std::min(ny - 1, j + m); ++k) {
        sum += row_sum[static_cast<size_t>(k) * nx + i];
        count += row_count[static_cast<size_t>(k) * nx + i];
      }
      grid[p] = sum / count;  // count >= 1: the point itself is present
    }
  }
}

void daBase::gaussianSmooth(double* grid, int nx, int ny, double sigma) {
  if (!grid || nx <= 0 || ny <= 0 || !(sigma > 0.0) || !std::isfinite(sigma)) return;
  constexpr int kCapacity = 32;
  const double wanted = 1.0 + std::trunc(3.0 * sigma);
  int m;
  if (wanted > kCapacity) {
    std::fprintf(stderr, "Warning: mask size (%.0f) is greater than capacity (%d)\n", wanted,
                 kCapacity);
    m = kCapacity;
  } else {
    m = static_cast<int>(wanted);
  }
  double weights[kCapacity + 1];
  const double norm = std::sqrt(2.0 * M_PI) * sigma;
  for (int k = 0; k <= m; ++k) weights[k] = std::exp(-(k * k) / (2.0 * sigma * sigma)) / norm;
  convolve(grid, weights, m, ny, nx, 0, ny, 0, nx);
}
