// Divergence, vorticity and advection of a wind on a latitude-longitude grid.

#include <cmath>

#include <tervik/diagnostics.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

// Each stencil field initialises the range, returns early on an empty grid, and allocates
// its spacing rows before testing `out`: a null `out` still leaves the range initialised.

int compute_field_div(double* out, double* min, double* max, const double* u, const double* v,
                      int nx, int ny, double lat0, double dlat, double /*lon0*/, double dlon,
                      double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const RowSpacing spacing(ny, lat0, dlat, dlon, true);
  if (!spacing.ok() || !out || !u || !v) return 1;
  Range range;
  sweep(Stencil::divergence, nx, ny, spacing.dx(), spacing.dy(),
        [&](std::size_t k, const Difference& x, const Difference& y) {
          out[k] = (difference(u, x) + difference(v, y)) * scale;
        },
        [&](std::size_t first, std::size_t count) { add_to_range(range, out + first, count); });
  range.store(min, max);
  return 0;
}

int compute_field_vor(double* out, double* min, double* max, const double* u, const double* v,
                      int nx, int ny, double lat0, double dlat, double /*lon0*/, double dlon,
                      double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const RowSpacing spacing(ny, lat0, dlat, dlon, true);
  if (!spacing.ok() || !out || !u || !v) return 1;
  Range range;
  sweep(Stencil::vorticity, nx, ny, spacing.dx(), spacing.dy(),
        [&](std::size_t k, const Difference& x, const Difference& y) {
          out[k] = (difference(v, x) - difference(u, y)) * scale;
        },
        [&](std::size_t first, std::size_t count) { add_to_range(range, out + first, count); });
  range.store(min, max);
  return 0;
}

int compute_field_absvor(double* out, double* min, double* max, const double* u,
                         const double* v, int nx, int ny, double lat0, double dlat, double lon0,
                         double dlon, double /*scale*/) {
  const int status = compute_field_vor(out, min, max, u, v, nx, ny, lat0, dlat, lon0, dlon, 1.0);
  if (status != 0 || empty_grid(nx, ny)) return status;
  // The planetary vorticity f = 2 omega sin(lat) of each row. The range stays that of the
  // relative vorticity.
  double lat = lat0;
  for (int j = 0; j < ny; ++j) {
    const double f = kTwoOmega * std::sin(lat * kDegToRad);
    double* row = out + static_cast<std::size_t>(j) * static_cast<std::size_t>(nx);
    for (int i = 0; i < nx; ++i) row[i] = row[i] + f;
    lat += dlat;
  }
  return 0;
}

int compute_field_adv(double* out, double* min, double* max, const double* f, const double* u,
                      const double* v, int nx, int ny, double lat0, double dlat,
                      double /*lon0*/, double dlon, double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const RowSpacing spacing(ny, lat0, dlat, dlon, true);
  if (!spacing.ok() || !out || !f || !u || !v) return 1;
  Range range;
  sweep(Stencil::vorticity, nx, ny, spacing.dx(), spacing.dy(),
        [&](std::size_t k, const Difference& x, const Difference& y) {
          out[k] = -(u[k] * difference(f, x) + v[k] * difference(f, y)) * scale;
        },
        [&](std::size_t first, std::size_t count) { add_to_range(range, out + first, count); });
  range.store(min, max);
  return 0;
}

int compute_field_voradv(double* out, double* min, double* max, const double* u,
                         const double* v, int nx, int ny, double lat0, double dlat, double lon0,
                         double dlon, double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const Buffer vorticity(grid_points(nx, ny));
  if (!vorticity || !out) return 1;
  const int status =
      compute_field_vor(vorticity.get(), min, max, u, v, nx, ny, lat0, dlat, lon0, dlon, 1.0);
  if (status != 0) return status;
  return compute_field_adv(out, min, max, vorticity.get(), u, v, nx, ny, lat0, dlat, lon0, dlon,
                           scale);
}
