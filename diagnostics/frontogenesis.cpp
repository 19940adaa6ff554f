// Frontogenesis: the rate at which the flow sharpens the horizontal gradient of the
// equivalent potential temperature, with the tilting term of vertical motion and the
// observed local tendency.

#include <cmath>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

#include "diagnostics/stencil.h"

using namespace tervik::detail;

namespace {

constexpr double kMinGradient = 1e-9;  // K/m; flatter fields have no direction to sharpen

// Pseudo-equivalent potential temperature (K) of saturated air at p hPa, t deg C: the value
// compute_field_thetase gives with scale 1.
double theta_se_kelvin(double p, double t) { return t2T(theta_se_s(p, t)); }

}  // namespace

int compute_field_frontogen(double* out, double* min, double* max, const double* t0,
                            const double* t1, const double* tu, const double* tl,
                            const double* u, const double* v, const double* omega, double p0,
                            double pu, double pl, int nx, int ny, int dt, double lat0,
                            double dlat, double /*lon0*/, double dlon, double scale) {
  if (!min || !max) return 1;
  reset_range(min, max);
  if (empty_grid(nx, ny)) return 0;
  if (!out || !t0 || !t1 || !tu || !tl || !u || !v || !omega) return 1;
  const std::size_t n = grid_points(nx, ny);

  // Only the fields whose neighbours are differenced need whole grids: theta_se at the
  // time of interest and its tendency. The vertical derivative is needed at the point
  // alone and is formed on the fly.
  const Buffer theta_now(n);
  const Buffer tendency(n);
  const RowSpacing spacing(ny, lat0, dlat, dlon, true);
  if (!theta_now || !tendency || !spacing.ok()) return 1;
  double* th = theta_now.get();
  double* tt = tendency.get();
  for (std::size_t k = 0; k < n; ++k) {
    th[k] = theta_se_kelvin(p0, t1[k]);
    tt[k] = (th[k] - theta_se_kelvin(p0, t0[k])) / dt;
  }

  Range range;
  sweep(Stencil::divergence, nx, ny, spacing.dx(), spacing.dy(),
        [&](std::size_t k, const Difference& x, const Difference& y) {
          // per pascal: the pressures are in hPa
          const double th_p =
              (theta_se_kelvin(pu, tu[k]) - theta_se_kelvin(pl, tl[k])) * 0.01 / (pu - pl);
          const double th_x = gradient(th, x), th_y = gradient(th, y);
          const double u_x = gradient(u, x), u_y = gradient(u, y);
          const double v_x = gradient(v, x), v_y = gradient(v, y);
          const double w_x = gradient(omega, x), w_y = gradient(omega, y);
          const double tt_x = gradient(tt, x), tt_y = gradient(tt, y);
          const double grad = std::sqrt(th_x * th_x + th_y * th_y);
          double value = 0.0;
          if (grad > kMinGradient) {
            value = -(scale / grad) *
                    (th_x * th_x * u_x + th_y * th_y * v_y + th_x * th_y * (u_y + v_x) +
                     th_p * (th_x * w_x + th_y * w_y) - (th_x * tt_x + th_y * tt_y));
          }
          out[k] = value;
          range.add(value);
        });
  range.store(min, max);
  return 0;
}
