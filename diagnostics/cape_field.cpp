// CAPE of every grid column of a set of pressure levels.

#include <new>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

int compute_field_cape(double* out, double* min, double* max, const double* const* t_levels,
                       const double* const* td_levels, const double* level_p, int nz, int nx,
                       int ny, double scale) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (nz < 1 || !t_levels || !td_levels || !level_p) return 1;
  for (int z = 0; z < nz; ++z)
    if (!t_levels[z] || !td_levels[z]) return 1;

  // One column buffer, refilled at every point. A sounding runs from the ground up, so
  // the levels are taken from the highest pressure whichever way the grids are stacked.
  tag_tlogp_layer* column = new (std::nothrow) tag_tlogp_layer[static_cast<std::size_t>(nz)];
  if (!column) return 1;
  const bool upward = level_p[nz - 1] < level_p[0];

  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    for (int level = 0; level < nz; ++level) {
      const int z = upward ? level : nz - 1 - level;
      tag_tlogp_layer& layer = column[level];
      layer.p = level_p[z];
      layer.t = t_levels[z][k];
      layer.td = td_levels[z][k];
      layer.valid = layer.t != kUndefined && layer.td != kUndefined;
    }
    const double cape = CAPE(column, nz);
    if (cape == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    out[k] = cape * scale;
    range.add(out[k]);
  }
  delete[] column;
  range.store(min, max);
  return 0;
}
