// Potential vorticity of a pressure layer, and interpolation of one column field to the
// surface where another crosses a value (PV on an isentrope, height of a PV surface).

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

namespace {

constexpr double kGravity = 9.81;

// Linear interpolation between levels k-1 and k of the column `key` to `target` in the
// level coordinate, then of `field` to that level coordinate.
double interpolate_crossing(const double* key, const double* field, const double* level,
                            std::size_t k, double target) {
  const double at = level[k - 1] + (level[k] - level[k - 1]) * (target - key[k - 1]) /
                                       (key[k] - key[k - 1]);
  return field[k - 1] + (field[k] - field[k - 1]) * (at - level[k - 1]) / (level[k] - level[k - 1]);
}

// Fills out with the `result` column interpolated to where the `key` column first falls
// below target, or `fill` where it starts below target or never gets there.
int interpolate_to_surface(double* out, double* min, double* max,
                           const double* const* key_levels, const double* const* result_levels,
                           const double* level_values, double target, double fill, int nz,
                           int nx, int ny) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!key_levels || !result_levels || (nz > 0 && !level_values)) return 1;
  for (int z = 0; z < nz; ++z)
    if (!key_levels[z] || !result_levels[z]) return 1;
  const std::size_t levels = nz > 0 ? static_cast<std::size_t>(nz) : 0;
  const Buffer key_column(levels);
  const Buffer result_column(levels);
  if (!key_column || !result_column) return 1;
  double* key = key_column.get();
  double* result = result_column.get();

  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t p = 0; p < n; ++p) {
    std::size_t crossing = levels;
    for (std::size_t z = 0; z < levels; ++z) {
      key[z] = key_levels[z][p];
      result[z] = result_levels[z][p];
      if (crossing == levels && key[z] < target) crossing = z;
    }
    if (crossing == 0 || crossing == levels) {
      out[p] = fill;
      continue;
    }
    out[p] = interpolate_crossing(key, result, level_values, crossing, target);
    range.add(out[p]);
  }
  range.store(min, max);
  return 0;
}

}  // namespace

int compute_field_isop_pv(double* out, double* min, double* max, const double* abs_vor,
                          const double* t1, const double* t2, double p1, double p2, int nx,
                          int ny, double scale) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!abs_vor || !t1 || !t2) return 1;
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    // -g (absolute vorticity) d(theta)/dp, with dp in pascal
    out[k] = (theta(p1, t1[k]) - theta(p2, t2[k])) * 0.01 / (p1 - p2) * (-kGravity) *
             abs_vor[k] * scale;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_isop_pv(double* out, double* min, double* max, const double* u,
                          const double* v, const double* t1, const double* t2, double p1,
                          double p2, int nx, int ny, double lat0, double dlat, double lon0,
                          double dlon, double scale) {
  if (!out || !min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const Buffer abs_vor(grid_points(nx, ny));
  if (!abs_vor) return 1;
  const int status = compute_field_absvor(abs_vor.get(), min, max, u, v, nx, ny, lat0, dlat,
                                          lon0, dlon, 1.0);
  if (status != 0) return status;
  return compute_field_isop_pv(out, min, max, abs_vor.get(), t1, t2, p1, p2, nx, ny, scale);
}

int compute_field_isentropic_pv(double* out, double* min, double* max,
                                const double* const* a_levels, const double* const* b_levels,
                                const double* level_values, double target, double fill, int nz,
                                int nx, int ny) {
  return interpolate_to_surface(out, min, max, b_levels, a_levels, level_values, target, fill,
                                nz, nx, ny);
}

int compute_field_height_pvunit(double* out, double* min, double* max,
                                const double* const* a_levels, const double* const* b_levels,
                                const double* level_values, double target, double fill, int nz,
                                int nx, int ny) {
  return interpolate_to_surface(out, min, max, a_levels, b_levels, level_values, target, fill,
                                nz, nx, ny);
}
