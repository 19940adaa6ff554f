// The operational Cressman analysis: screened stations, a conditioned first guess and the
// sharpening of analysed extrema.

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"

using namespace tervik::detail;

namespace {

// The first guess over the region 60-110 E, 20-50 N (the area of the forecasters' own
// network, where their stations are trusted over the model) is replaced by the mean of the
// screened stations inside it. With no such station this is 0/0: the region becomes NaN.
void fill_region(const daBase& b, const unsigned short* flags, double* grid) {
  double sum = 0.0;
  int count = 0;
  for (int s = 0; s < b.station_count; ++s) {
    const double lon = b.lon_column[s];
    const double lat = b.lat_column[s];
    if (flags[s] != 0 && lon >= 60.0 && lon <= 110.0 && lat >= 20.0 && lat <= 50.0) {
      sum += b.value_column[s];
      ++count;
    }
  }
  const double mean = sum / static_cast<double>(count);
  const double dlon = (b.lon_max - b.lon_min) / (b.nx - 1);
  const double dlat = (b.lat_max - b.lat_min) / (b.ny - 1);
  for (int j = 0; j < b.ny; ++j) {
    const double lat = b.lat_min + j * dlat;
    if (!(lat >= 20.0 && lat <= 50.0)) continue;
    for (int i = 0; i < b.nx; ++i) {
      const double lon = b.lon_min + i * dlon;
      if (lon >= 60.0 && lon <= 110.0) grid[static_cast<size_t>(j) * b.nx + i] = mean;
    }
  }
}

// Truncated to an integer, is the value a multiple of 4? Values that have no int (NaN,
// beyond the int range) are not.
bool truncates_to_multiple_of_4(double v) {
  if (!(v > INT_MIN - 1.0 && v < INT_MAX + 1.0)) return false;
  return static_cast<int>(v) % 4 == 0;
}

// Where the analysis has a strict extremum over its 5x5 neighbourhood, the recorded station
// extrema of the same kind within 4 degrees are pushed further out: by the Laplacian of the
// analysis (weighted by distance), or in mode 2 by 2 units when their value sits on a
// multiple of 4 (the contour interval there, so that the extremum gets its own isoline).
void enhance_extrema(daBase& b, const double* g, int mode) {
  std::printf("Stations whose observation values are enhanced:\n");
  const int nx = b.nx;
  const int ny = b.ny;
  if (ny < 5 || nx < 5) return;
  const double dlon = (b.lon_max - b.lon_min) / (nx - 1);
  const double dlat = (b.lat_max - b.lat_min) / (ny - 1);
  auto at = [&](int i, int j) { return g[static_cast<size_t>(j) * nx + i]; };
  for (int j = 2; j <= ny - 3; ++j) {
    for (int i = 2; i <= nx - 3; ++i) {
      const double centre = at(i, j);
      int smaller = 0;
      for (int dj = -2; dj <= 2; ++dj)
        for (int di = -2; di <= 2; ++di)
          if (at(i + di, j + dj) < centre) ++smaller;
      const int type = smaller == 0 ? -1 : smaller == 24 ? 1 : 0;
      if (type == 0) continue;
      const double lon = b.lon_min + i * dlon;
      const double lat = b.lat_min + j * dlat;
      const double laplacian =
          at(i, j - 1) + at(i, j + 1) + at(i + 1, j) + at(i - 1, j) - 4.0 * centre;
      for (const int e : b.extremum_list) {
        const int sign = e >= 0 ? 1 : -1;
        if (sign * type < 0) continue;
        const int s = std::abs(e);
        if (s >= b.station_count) continue;  // not a station of this call
        const double d = great_circle(b.lon_column[s], b.lat_column[s], lon, lat);
        if (!(d < 4.0)) continue;
        double& value = b.value_column[s];
        if (mode == 2 && truncates_to_multiple_of_4(value))
          value += 2 * sign;
        else
          value -= std::exp(-d * d / 4.0) * laplacian * 0.5;
      }
    }
  }
}

}  // namespace

daCressmanHQ::daCressmanHQ(int scans) : daCressman(scans) {}

double* daCressmanHQ::assimilate(int nx_, int ny_, double lon_min_, double lon_max_,
                                 double lat_min_, double lat_max_, int count, double undef,
                                 const int* column_codes, double* station_buffer,
                                 const int* grid_codes, double* grid_buffer,
                                 const int* options) {
  if (scan_count < 1 || scan_count > 5) {
    std::fprintf(stderr, "daCressmanHQ::assimilate: invalid scan number. Set to default %d.\n",
                 5);
    scan_count = 5;
  }
  bind_input(*this, nx_, ny_, lon_min_, lon_max_, lat_min_, lat_max_, count, column_codes,
             station_buffer, grid_codes, grid_buffer);
  if (!check_domain("daCressmanHQ", nx, ny, lon_min, lon_max, lat_min, lat_max) ||
      !check_columns("daCressmanHQ", *this))
    return nullptr;
  static const int kNoOptions[3] = {0, 0, 0};
  const int* opts = options ? options : kNoOptions;

  LocatedStations located;
  MallocArray<unsigned short> flags;
  MallocArray<double> grid;
  const size_t n = station_count > 0 ? static_cast<size_t>(station_count) : 0;
  if (!located.allocate(station_count) || !flags.allocate(n) ||
      !grid.allocate(static_cast<size_t>(nx) * static_cast<size_t>(ny))) {
    std::fprintf(stderr, "daCressmanHQ::assimilate: memory allocation error.\n");
    return nullptr;
  }
  for (size_t s = 0; s < n; ++s) flags[s] = 1;
  qualityControl(flags.get(), station_count, opts);
  locate_stations(*this, undef, flags.get(), located);
  if (located.accepted == 0) {
    std::fprintf(stderr, "daCressmanHQ::assimilate: no station has valid height.\n");
    return nullptr;
  }
  start_grid(*this, located, grid.get());
  if (first_guess) {
    if (opts[0] == 2)
      gaussianSmooth(grid.get(), nx, ny, 4.0);
    else if (opts[0] == 0)
      fill_region(*this, flags.get(), grid.get());
  }
  correction_passes(*this, undef, located, grid.get());
  if (opts[2] != 0) {
    enhance_extrema(*this, grid.get(), opts[0]);
    correction_passes(*this, undef, located, grid.get());
    surfaceSmooth(grid.get(), nx, ny, 6, opts[0] == 2 ? 2 : 1);
  }
  return grid.release();
}
