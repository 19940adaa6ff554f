#ifndef TERVIK_DIAGNOSTICS_H
#define TERVIK_DIAGNOSTICS_H

// Finite-difference kinematic and thermodynamic fields on regular grids.
//
// Grids are row-major arrays of nx columns by ny rows: point (i, j) is at index j*nx + i,
// column i at lon0 + i*dlon, row j at lat0 + j*dlat (degrees). A y-difference is taken as
// row j-1 minus row j+1, i.e. the grid is expected north row first (dlat < 0); a grid stored
// south to north gets y-derivatives of the opposite sign, and nothing is reordered.
//
// Units: wind m/s, temperature and dew point deg C, pressure hPa (single values), spacing
// in metres derived from the geometry (6371110 m earth radius). The undefined value is
// 9999.0, compared exactly. Each function says whether it skips undefined points (writes
// 9999.0 and leaves them out of the range) or computes through them.
//
// Common contract, unless a function says otherwise:
// - `min` and `max` are set to +DBL_MAX and -DBL_MAX, then receive the smallest and the
//   largest value written (a value below min lowers min; a value above max raises max).
// - Returns 0 on success. An empty grid (nx < 1 or ny < 1) returns 0 with the range
//   initialised and nothing written.
// - Returns 1, writing nothing, when `out` is null, when `min` or `max` is null, when an
//   input array needed for a non-empty grid is null, or when a work buffer cannot be
//   allocated. Zero spacings, pressure differences or scales are not guarded (they give
//   infinities or NaN), and NaN inputs pass through without entering the range.
// - Outputs must not alias inputs.
// - nx must be at least 2 for meaningful x-differences: with nx = 1 the forward difference
//   of the first column reads the first point of the next row. On the last point, which
//   has no next row, and likewise for y when ny = 1, the missing neighbour is taken as the
//   point itself (a zero difference).

#include <tervik/export.h>

// ---- Point-wise fields ----

// (a - b) / scale. Skips undefined points: 9999.0 where a or b is 9999.0.
TERVIK_API int compute_field_diff(double* out, double* min, double* max, const double* a,
                                  const double* b, int nx, int ny, double scale);

// Relative humidity (%) from temperature t and dew point td (deg C): E(td) * 100 / E(t).
// Skips undefined points: 9999.0 where t or td is 9999.0. `scale` is accepted and not used.
TERVIK_API int compute_field_ttd2rh(double* out, double* min, double* max, const double* t,
                                    const double* td, int nx, int ny, double scale);

// Wind speed sqrt(u^2 + v^2) / scale (m/s for scale 1). Skips undefined points: 9999.0
// where u or v is 9999.0.
TERVIK_API int compute_field_isotachs(double* out, double* min, double* max, const double* u,
                                      const double* v, int nx, int ny, double scale);

// Specific humidity q(p, td) * scale (kg/kg for scale 1) from the dew point td (deg C) at
// the pressure p (hPa). Computes through undefined values.
TERVIK_API int compute_field_q(double* out, double* min, double* max, const double* td,
                               double p, int nx, int ny, double scale);

// Potential temperature in kelvin, times scale, of temperature t (deg C) at p (hPa).
// Computes through undefined values.
TERVIK_API int compute_field_theta(double* out, double* min, double* max, const double* t,
                                   double p, int nx, int ny, double scale);

// Pseudo-equivalent potential temperature of saturated air in kelvin, times scale, of
// temperature t (deg C) at p (hPa). Computes through undefined values.
TERVIK_API int compute_field_thetase(double* out, double* min, double* max, const double* t,
                                     double p, int nx, int ny, double scale);

// ---- Kinematics ----
//
// The kinematic fields take winds u (eastward) and v (northward) in m/s on a geographic
// grid; derivatives are per metre, so divergence and vorticity come out in 1/s times scale.
// None of them tests for undefined values: 9999.0 is differenced like any other number.
// Borders use one-sided differences. Interior centred differences divide by twice the
// point's spacing for vorticity and advection, and by the sum of the two neighbours'
// spacings for divergence. Work buffers are allocated before `out` is checked, so a null
// `out` leaves the range initialised.

// Divergence du/dx + dv/dy, times scale.
TERVIK_API int compute_field_div(double* out, double* min, double* max, const double* u,
                                 const double* v, int nx, int ny, double lat0, double dlat,
                                 double lon0, double dlon, double scale);

// Relative vorticity dv/dx - du/dy, times scale.
TERVIK_API int compute_field_vor(double* out, double* min, double* max, const double* u,
                                 const double* v, int nx, int ny, double lat0, double dlat,
                                 double lon0, double dlon, double scale);

// Absolute vorticity (1/s): relative vorticity (unscaled; `scale` is not used) plus the
// Coriolis parameter 0.0001458423 * sin(latitude) of each row. The range returned is that
// of the relative vorticity, before the Coriolis parameter is added.
TERVIK_API int compute_field_absvor(double* out, double* min, double* max, const double* u,
                                    const double* v, int nx, int ny, double lat0, double dlat,
                                    double lon0, double dlon, double scale);

// Advection of f by (u, v): -(u df/dx + v df/dy) * scale, in f's unit per second.
TERVIK_API int compute_field_adv(double* out, double* min, double* max, const double* f,
                                 const double* u, const double* v, int nx, int ny,
                                 double lat0, double dlat, double lon0, double dlon,
                                 double scale);

// Advection by (u, v), times scale, of the relative vorticity of (u, v) (1/s^2). Uses one
// work grid.
TERVIK_API int compute_field_voradv(double* out, double* min, double* max, const double* u,
                                    const double* v, int nx, int ny, double lat0, double dlat,
                                    double lon0, double dlon, double scale);

// ---- Moisture flux ----

// Water-vapour flux magnitude wvflux(u, v, p, t, rh) * scale from wind u, v (m/s),
// temperature t (deg C) and relative humidity rh (%) at the pressure p (hPa). Computes
// through undefined values.
TERVIK_API int compute_field_qflux(double* out, double* min, double* max, const double* u,
                                   const double* v, const double* t, const double* rh,
                                   double p, int nx, int ny, double scale);

// Divergence of the water-vapour flux vector (wvflux(u, 0, p, t, rh), wvflux(0, v, p, t, rh)),
// times scale, then divided by 100 (and so are min and max). Computes through undefined
// values. Uses two work grids.
TERVIK_API int compute_field_qdiv(double* out, double* min, double* max, const double* u,
                                  const double* v, const double* t, const double* rh,
                                  double p, int nx, int ny, double lat0, double dlat,
                                  double lon0, double dlon, double scale);

// ---- Frontogenesis ----

// Frontogenesis of the pseudo-equivalent potential temperature (theta_se_s of each
// temperature, in kelvin) in a three-dimensional flow, times scale:
//   -(scale / |grad th|) * [th_x^2 u_x + th_y^2 v_y + th_x th_y (u_y + v_x)
//                           + th_p (th_x w_x + th_y w_y) - (th_x tt_x + th_y tt_y)]
// where th is the field of t1 at p0; th_p = (th(tu at pu) - th(tl at pl)) * 0.01 / (pu - pl)
// is its vertical derivative per pascal; tt = (th(t1) - th(t0)) / dt its tendency over the
// interval dt (seconds, or any time unit the caller wants the result in); w is the
// vertical velocity omega (Pa/s). Points where |grad th| <= 1e-9 get 0.
// The horizontal gradients return 9999.0 where a value they read is 9999.0, and the
// formula then computes through those 9999.0 values; nothing else tests for undefined
// values. Uses two work grids.
TERVIK_API int compute_field_frontogen(double* out, double* min, double* max, const double* t0,
                                       const double* t1, const double* tu, const double* tl,
                                       const double* u, const double* v, const double* omega,
                                       double p0, double pu, double pl, int nx, int ny, int dt,
                                       double lat0, double dlat, double lon0, double dlon,
                                       double scale);

// ---- Convective available potential energy ----

// CAPE (J/kg) of the column at every point, times scale. t_levels and td_levels are nz
// grids of temperature and dew point (deg C); level_p holds the nz level pressures (hPa),
// in either order (the column is always built from the highest pressure upward). A level
// whose t or td is 9999.0 is marked invalid and skipped. Where CAPE is undefined the point
// gets 9999.0 (not scaled) and stays out of the range. Returns 1 also when nz < 1 or a
// level pointer is null, or when the column buffer cannot be allocated.
TERVIK_API int compute_field_cape(double* out, double* min, double* max,
                                  const double* const* t_levels, const double* const* td_levels,
                                  const double* level_p, int nz, int nx, int ny, double scale);

// ---- Potential vorticity ----

// Potential vorticity of the layer between p1 and p2 (hPa), with temperatures t1, t2
// (deg C) on its two bounds and absolute vorticity abs_vor (1/s):
//   (theta(p1, t1) - theta(p2, t2)) * 0.01 / (p1 - p2) * (-9.81) * abs_vor * scale
// (K m^2 kg^-1 s^-1 for scale 1; 1e6 gives PV units). Computes through undefined values.
TERVIK_API int compute_field_isop_pv(double* out, double* min, double* max,
                                     const double* abs_vor, const double* t1, const double* t2,
                                     double p1, double p2, int nx, int ny, double scale);

// As above, with the absolute vorticity computed from the wind u, v (m/s) of a geographic
// grid by compute_field_absvor. Uses one work grid.
TERVIK_API int compute_field_isop_pv(double* out, double* min, double* max, const double* u,
                                     const double* v, const double* t1, const double* t2,
                                     double p1, double p2, int nx, int ny, double lat0,
                                     double dlat, double lon0, double dlon, double scale);

// Interpolation to a surface through nz levels. a_levels and b_levels are nz grids each,
// level_values the nz level coordinates (for example pressure). At each point the first
// level k at which the key column falls strictly below `target` is found; when k is 0 or
// there is none, the point gets `fill` and stays out of the range. Otherwise the level
// coordinate of the crossing is interpolated linearly in the key between levels k-1 and k,
// and the other column linearly in the level coordinate. Values are not tested for 9999.0.
// Returns 1 also when a level pointer is null or a work column cannot be allocated.
//
// compute_field_isentropic_pv: key b (potential temperature), result a (PV) on the
// isentropic surface b = target.
TERVIK_API int compute_field_isentropic_pv(double* out, double* min, double* max,
                                           const double* const* a_levels,
                                           const double* const* b_levels,
                                           const double* level_values, double target,
                                           double fill, int nz, int nx, int ny);

// compute_field_height_pvunit: key a (PV), result b (for example height) on the surface
// a = target (the dynamical tropopause for target = 2 PV units).
TERVIK_API int compute_field_height_pvunit(double* out, double* min, double* max,
                                           const double* const* a_levels,
                                           const double* const* b_levels,
                                           const double* level_values, double target,
                                           double fill, int nz, int nx, int ny);

// ---- Streamfunction fields ----
//
// Balanced fields of a geostrophic streamfunction psi (m^2/s) with a constant Coriolis
// parameter. Each skips undefined points: 9999.0 in, 9999.0 out, out of the range.

// Geopotential height (m): psi * 1e-05 / 9.81.
TERVIK_API int compute_field_psi2h(double* out, double* min, double* max, const double* psi,
                                   int nx, int ny);

// Potential temperature from the streamfunctions psi1, psi2 at p1, p2 (hPa), by the
// hydrostatic relation at p (hPa) with the Coriolis parameter 1e-4:
//   s = (p/1000)^kappa * 1004.842 * kappa / (p * 100),
//   theta = (psi1 - psi2) * 0.01 / (p1 - p2) * (-0.0001) / s,   kappa = 0.28583299663031597.
TERVIK_API int compute_field_psi2theta(double* out, double* min, double* max,
                                       const double* psi1, const double* psi2, double p,
                                       double p1, double p2, int nx, int ny);

// Temperature (deg C) at p of the potential temperature of compute_field_psi2theta:
// T2t((p/1000)^kappa * 1004.842 * theta / 1004.842). The range covers the temperatures.
TERVIK_API int compute_field_psi2t(double* out, double* min, double* max, const double* psi1,
                                   const double* psi2, double p, double p1, double p2, int nx,
                                   int ny);

// Non-divergent wind (m/s) of psi: u = -dpsi/dy, v = dpsi/dx, on a grid whose steps dlon,
// dlat count 90 km each (no map factor, signs kept). Both derivatives divide by the x
// spacing; the y spacing is not used (it matters only when dlat != dlon). Where a value
// a derivative reads is 9999.0 the component is 9999.0. No range. Returns 1 when u_out,
// v_out or psi is null (for a non-empty grid) or a work buffer cannot be allocated.
TERVIK_API int compute_field_psi2wind(double* u_out, double* v_out, const double* psi, int nx,
                                      int ny, double lat0, double dlat, double lon0,
                                      double dlon);

#endif
