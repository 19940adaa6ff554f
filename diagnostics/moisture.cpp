// Water-vapour flux and its divergence.

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

int compute_field_qflux(double* out, double* min, double* max, const double* u, const double* v,
                        const double* t, const double* rh, double p, int nx, int ny,
                        double scale) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!u || !v || !t || !rh) return 1;
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    out[k] = wvflux(u[k], v[k], p, t[k], rh[k]) * scale;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_qdiv(double* out, double* min, double* max, const double* u, const double* v,
                       const double* t, const double* rh, double p, int nx, int ny, double lat0,
                       double dlat, double lon0, double dlon, double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  const std::size_t n = grid_points(nx, ny);
  const Buffer flux_x(n);
  const Buffer flux_y(n);
  if (!flux_x || !flux_y || !out || !u || !v || !t || !rh) return 1;
  // The flux vector: each component is the flux magnitude of that wind component alone,
  // so it carries no sign.
  double* fx = flux_x.get();
  double* fy = flux_y.get();
  for (std::size_t k = 0; k < n; ++k) {
    fx[k] = wvflux(u[k], 0.0, p, t[k], rh[k]);
    fy[k] = wvflux(0.0, v[k], p, t[k], rh[k]);
  }
  const int status = compute_field_div(out, min, max, fx, fy, nx, ny, lat0, dlat, lon0, dlon,
                                       scale);
  if (status != 0) return status;
  for (std::size_t k = 0; k < n; ++k) out[k] = out[k] / 100.0;
  *min = *min / 100.0;
  *max = *max / 100.0;
  return 0;
}
