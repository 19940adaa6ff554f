// Point-wise thermodynamic fields: relative humidity, specific humidity and the potential
// temperatures, each from the sounding primitives applied at every grid point.

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

int compute_field_ttd2rh(double* out, double* min, double* max, const double* t,
                         const double* td, int nx, int ny, double /*scale*/) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!t || !td) return 1;
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (t[k] == kUndefined || td[k] == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    // vapour pressure over saturation vapour pressure, in percent
    out[k] = E(td[k]) * 100 / E(t[k]);
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

namespace {

// A field value(p, x[k]) * scale at every point, computed through undefined values.
template <class Value>
int pointwise_at_pressure(double* out, double* min, double* max, const double* x, double p,
                          int nx, int ny, double scale, Value value) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!x) return 1;
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    out[k] = value(p, x[k]) * scale;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

}  // namespace

int compute_field_q(double* out, double* min, double* max, const double* td, double p, int nx,
                    int ny, double scale) {
  return pointwise_at_pressure(out, min, max, td, p, nx, ny, scale,
                               [](double pk, double tdk) { return q(pk, tdk); });
}

int compute_field_theta(double* out, double* min, double* max, const double* t, double p,
                        int nx, int ny, double scale) {
  return pointwise_at_pressure(out, min, max, t, p, nx, ny, scale,
                               [](double pk, double tk) { return t2T(theta(pk, tk)); });
}

int compute_field_thetase(double* out, double* min, double* max, const double* t, double p,
                          int nx, int ny, double scale) {
  return pointwise_at_pressure(out, min, max, t, p, nx, ny, scale,
                               [](double pk, double tk) { return t2T(theta_se_s(pk, tk)); });
}
