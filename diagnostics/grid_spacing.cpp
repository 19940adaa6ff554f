#include <cmath>

#include "diagnostics/stencil.h"

namespace tervik::detail {

void compute_grid_spacing(double* dx, double* dy, int ny, double lat0, double dlat,
                          double dlon, bool geographic) {
  if (!geographic) {
    for (int j = 0; j < ny; ++j) {
      dx[j] = dlon * kPlaneStep;
      dy[j] = dlat * kPlaneStep;
    }
    return;
  }
  const double row_dy = std::fabs(dlat) * kMetresPerDegree;
  double lat = lat0;
  for (int j = 0; j < ny; ++j) {
    dx[j] = std::fabs(dlon) * kDegToRad * kEarthRadius * std::cos(lat * kDegToRad);
    dy[j] = row_dy;
    lat += dlat;
  }
  // Near a pole the cosine (and with it dx) goes to zero; the outermost row borrows its
  // neighbour's spacing instead of dividing by almost nothing.
  if (ny < 2) return;
  if (lat0 > 89 || lat0 < -89) dx[0] = dx[1];
  const double last_lat = lat - dlat;
  if (last_lat > 89 || last_lat < -89) dx[ny - 1] = dx[ny - 2];
}

void gradient_x(double* out, const double* f, int nx, int ny, const double* dx) {
  sweep(Stencil::divergence, nx, ny, dx, dx,
        [&](std::size_t k, const Difference& x, const Difference&) { out[k] = gradient(f, x); });
}

void gradient_y(double* out, const double* f, int nx, int ny, const double* dy) {
  sweep(Stencil::divergence, nx, ny, dy, dy,
        [&](std::size_t k, const Difference&, const Difference& y) { out[k] = gradient(f, y); });
}

}  // namespace tervik::detail
