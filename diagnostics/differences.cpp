#include <cmath>

#include <tervik/diagnostics.h>

#include "diagnostics/stencil.h"

using tervik::detail::kUndefined;

int compute_field_diff(double* out, double* min, double* max, const double* a, const double* b,
                       int nx, int ny, double scale) {
  const int status = tervik::detail::open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!a || !b) return 1;
  const std::size_t n = tervik::detail::grid_points(nx, ny);
  tervik::detail::Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (a[k] == kUndefined || b[k] == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    out[k] = (a[k] - b[k]) / scale;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_isotachs(double* out, double* min, double* max, const double* u,
                           const double* v, int nx, int ny, double scale) {
  const int status = tervik::detail::open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!u || !v) return 1;
  const std::size_t n = tervik::detail::grid_points(nx, ny);
  tervik::detail::Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (u[k] == kUndefined || v[k] == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    out[k] = std::sqrt(u[k] * u[k] + v[k] * v[k]) / scale;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}
