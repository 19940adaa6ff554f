// The one-call objective analysis: station record to grid to isolines.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "objective/driver_detail.h"
#include "platform/sysutil.h"

using namespace tervik::detail;

namespace {

struct GridShape {
  int nx = 0, ny = 0;
};

// nx = trunc((lon_max - lon_min)/grid_step) + 1 and ny likewise, or false with a message
// when that leaves fewer than 2 columns or rows or more points than an int can count.
bool grid_shape(const obj_analysis_param& p, GridShape& shape) {
  const double columns = (p.lon_max - p.lon_min) / p.grid_step;
  const double rows = (p.lat_max - p.lat_min) / p.grid_step;
  if (!(p.grid_step > 0.0) || !std::isfinite(p.grid_step) || !(columns >= 1.0) ||
      !(rows >= 1.0) || !std::isfinite(columns) || !std::isfinite(rows)) {
    std::fprintf(stderr,
                 "do_objective_analysis: grid step %g gives fewer than 2 columns or rows over "
                 "%g..%g E, %g..%g N.\n",
                 p.grid_step, p.lon_min, p.lon_max, p.lat_min, p.lat_max);
    return false;
  }
  if ((std::trunc(columns) + 1.0) * (std::trunc(rows) + 1.0) > INT_MAX) {
    std::fprintf(stderr, "do_objective_analysis: grid step %g gives too many grid points.\n",
                 p.grid_step);
    return false;
  }
  shape.nx = static_cast<int>(columns) + 1;
  shape.ny = static_cast<int>(rows) + 1;
  return true;
}

// The model first guess on the analysis grid, or null when there is none to be had.
double* read_first_guess(const char* file_name, const obj_analysis_param& p, int kind,
                         const GridShape& shape) {
  std::string path;
  if (!model_file_name(file_name, p.first_guess_model, kind, path)) return nullptr;
  MallocArray<double> guess;
  if (!guess.allocate(static_cast<size_t>(shape.nx) * static_cast<size_t>(shape.ny)))
    return nullptr;
  tervik_data4 model;
  if (read_datatype4(path.c_str(), model) != 0) return nullptr;
  if (!interpolate_model(model, shape.nx, shape.ny, p.lon_min, p.lat_min, p.grid_step,
                         guess.get()))
    return nullptr;
  return guess.release();
}

daBase* make_scheme(int method) {
  switch (method) {
    case 1: return new (std::nothrow) daCressman(5);
    case 2: return new (std::nothrow) daBarnes();
    case 5: return new (std::nothrow) daSurfaceFit();
    default: return new (std::nothrow) daCressmanHQ(5);
  }
}

bool usable(double value) { return value != tervik_data3::undef && std::isfinite(value); }

// Regular levels from the station range: start one interval above the largest multiple of
// the truncated interval I not above the smallest value, end on the largest multiple not
// above the largest value.
void derive_levels(isoline_analysis_param& iso, double smallest, double largest) {
  const double interval = iso.level_interval;
  double I = std::isfinite(interval) && std::fabs(interval) < 1e9 ? std::trunc(interval) : 0.0;
  if (I < 1.0) I = 1.0;
  if (!(interval > 0.0) || !std::isfinite(interval)) iso.level_interval = I;
  iso.level_start = I * std::floor((smallest + I) / I);
  iso.level_end = I * std::floor(largest / I);
  if (iso.level_start > iso.level_end) std::swap(iso.level_start, iso.level_end);
  iso.use_interval = true;
  iso.levels.clear();
}

}  // namespace

bool do_objective_analysis(const char* file_name, const tervik_data3& stations, int level,
                           int data_kind, const obj_analysis_param& param,
                           isoline_analysis_param& iso_param, tervik_data4& grid_out,
                           tag_isoline_layer& layer_out) {
  const double undef = tervik_data3::undef;
  const int listed = std::min<long long>(std::max(stations.station_count, 0),
                                         static_cast<long long>(stations.stations.size()));
  int valid = 0;
  double smallest = 999.0, largest = -999.0;
  for (int s = 0; s < listed; ++s) {
    const double v = stations.stations[s].value;
    if (!usable(v)) continue;
    ++valid;
    smallest = std::min(smallest, v);
    largest = std::max(largest, v);
  }

  GridShape shape;
  if (!grid_shape(param, shape)) return false;

  MallocArray<double> guess;
  if (param.first_guess_model != 0 && data_kind < 3)
    guess.reset(read_first_guess(file_name, param, data_kind, shape));

  const std::unique_ptr<daBase> scheme(make_scheme(param.method));
  MallocArray<double> buffer;
  const size_t n = static_cast<size_t>(valid);
  if (!scheme || !buffer.allocate(6 * n)) {
    std::fprintf(stderr, "do_objective_analysis: memory allocation error.\n");
    return false;
  }
  // Columns back to back: number, longitude, latitude, value, wind direction, wind speed.
  const bool wind = data_kind == 0 || data_kind == 1;
  size_t k = 0;
  for (int s = 0; s < listed; ++s) {
    const station_entry& e = stations.stations[s];
    if (!usable(e.value)) continue;
    buffer[k] = e.id;
    buffer[n + k] = e.lon;
    buffer[2 * n + k] = e.lat;
    buffer[3 * n + k] = e.value;
    // The code packs speed*10000 + direction; a code with no integer part leaves no wind.
    double dir = undef, speed = undef;
    if (wind && e.code > -2147483648.0 * 10000.0 && e.code < 2147483647.0 * 10000.0) {
      const int packed = static_cast<int>(e.code / 10000.0);
      dir = e.code - 10000.0 * packed;
      speed = packed;
    }
    buffer[4 * n + k] = dir;
    buffer[5 * n + k] = speed;
    ++k;
  }
  static const int kColumns[6] = {1, 2, 3, 4, 5, 6};
  static const int kGrids[2] = {11, 0};
  const int options[3] = {data_kind, level, param.enhance_extrema ? 1 : 0};

  mTime timer;
  timer.start();
  MallocArray<double> grid;
  grid.reset(scheme->assimilate(shape.nx, shape.ny, param.lon_min, param.lon_max, param.lat_min,
                                param.lat_max, valid, undef, kColumns, buffer.get(), kGrids,
                                guess.get(), options));
  std::printf("It takes %lld milliseconds.\n", static_cast<long long>(timer.elapsed()));
  if (!grid.get()) return false;
  if (valid == 0) {
    // A scheme that needs no station (Barnes gives zeros) still has nothing to analyse.
    std::fprintf(stderr, "do_objective_analysis: no station has a valid value.\n");
    return false;
  }

  if (!iso_param.area_set) {
    iso_param.area_set = true;
    iso_param.first_lon = param.lon_min;
    iso_param.last_lon = param.lon_max;
    iso_param.first_lat = param.lat_min;
    iso_param.last_lat = param.lat_max;
    iso_param.lon_step = param.grid_step;
    iso_param.lat_step = param.grid_step;
    derive_levels(iso_param, smallest, largest);
  }

  // The record gets the five values the isoline area is given, so that the two agree and
  // the whole grid is contoured. (When the domain is not a whole number of steps, the
  // schemes spread the columns evenly from lon_min to lon_max and the step is nominal.)
  grid_out.nx = shape.nx;
  grid_out.ny = shape.ny;
  grid_out.first_lon = param.lon_min;
  grid_out.last_lon = param.lon_max;
  grid_out.first_lat = param.lat_min;
  grid_out.last_lat = param.lat_max;
  grid_out.lon_step = param.grid_step;
  grid_out.lat_step = param.grid_step;
  grid_out.set_gridPtr(grid.release());
  return do_isoline_analysis(grid_out, layer_out, iso_param);
}
