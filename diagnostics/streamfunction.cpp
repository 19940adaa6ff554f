// Balanced fields of a geostrophic streamfunction: height, potential temperature,
// temperature and the non-divergent wind.

#include <cmath>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

namespace {

constexpr double kGravity = 9.81;
constexpr double kCp = 1004.842;                    // J/(kg K), dry air
constexpr double kKappa = 0.28583299663031597;      // R/cp
constexpr double kCoriolisHeight = 1e-05;           // 1/s, for psi -> height
constexpr double kCoriolisTemperature = 0.0001;     // 1/s, for psi -> theta

// Exner function (p/1000)^kappa at p hPa.
double exner(double p) { return std::pow(p / 1000.0, kKappa); }

}  // namespace

int compute_field_psi2h(double* out, double* min, double* max, const double* psi, int nx,
                        int ny) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!psi) return 1;
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (psi[k] == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    // geostrophic balance: g h = f psi
    out[k] = psi[k] * kCoriolisHeight / kGravity;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_psi2theta(double* out, double* min, double* max, const double* psi1,
                            const double* psi2, double p, double p1, double p2, int nx, int ny) {
  const int status = open_field(out, min, max, nx, ny);
  if (status >= 0) return status;
  if (!psi1 || !psi2) return 1;
  // Hydrostatic balance f dpsi/dp = -(R/p) T turned into potential temperature at p:
  // s converts theta into the thickness per pascal that the streamfunction difference sees.
  const double s = exner(p) * kCp * kKappa / (p * 100.0);
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (psi1[k] == kUndefined || psi2[k] == kUndefined) {
      out[k] = kUndefined;
      continue;
    }
    out[k] = (psi1[k] - psi2[k]) * 0.01 / (p1 - p2) * (-kCoriolisTemperature) / s;
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_psi2t(double* out, double* min, double* max, const double* psi1,
                        const double* psi2, double p, double p1, double p2, int nx, int ny) {
  // The potential temperature goes straight into `out`, which is then turned into
  // temperature in place, point by point.
  const int status = compute_field_psi2theta(out, min, max, psi1, psi2, p, p1, p2, nx, ny);
  if (status != 0 || empty_grid(nx, ny)) return status;
  const double pi = exner(p);
  const std::size_t n = grid_points(nx, ny);
  Range range;
  for (std::size_t k = 0; k < n; ++k) {
    if (out[k] == kUndefined) continue;
    out[k] = T2t(pi * kCp * out[k] / kCp);
    range.add(out[k]);
  }
  range.store(min, max);
  return 0;
}

int compute_field_psi2wind(double* u_out, double* v_out, const double* psi, int nx, int ny,
                           double lat0, double dlat, double /*lon0*/, double dlon) {
  if (empty_grid(nx, ny)) return 0;
  // Plane spacing of 90 km per step. Both derivatives take the x spacing: with dlat equal
  // to dlon (the grids this is used on) it is the same number.
  const RowSpacing spacing(ny, lat0, dlat, dlon, false);
  if (!spacing.ok() || !u_out || !v_out || !psi) return 1;
  sweep(Stencil::divergence, nx, ny, spacing.dx(), spacing.dx(),
        [&](std::size_t k, const Difference& x, const Difference& y) {
          const double dpsi_dy = gradient(psi, y);
          u_out[k] = dpsi_dy == kUndefined ? kUndefined : -dpsi_dy;
          v_out[k] = gradient(psi, x);
        });
  return 0;
}
