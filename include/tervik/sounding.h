#ifndef TERVIK_SOUNDING_H
#define TERVIK_SOUNDING_H

// Upper-air soundings: the level and station records, thermodynamic primitives, lookups
// and characteristic levels along a profile, and stability and convective indices.
// Units throughout: pressure hPa, temperature and dew point deg C, height m (or the height
// unit of the sounding), wind direction degrees (from), wind speed m/s. The undefined
// value of a sounding is 9999.0.

#include <cstdint>
#include <vector>

#include <tervik/export.h>

// One level of a sounding. A profile is a contiguous array of levels from the ground
// upward (pressure decreasing); levels with `valid` false are skipped by every function.
// A default-constructed level is invalid with every double 9999.0.
struct tag_tlogp_layer {
  bool valid = false;
  double p = 9999.0;           // pressure, hPa
  double z = 9999.0;           // geopotential height; 9999.0 when missing
  double t = 9999.0;           // temperature, deg C
  double td = 9999.0;          // dew point, deg C
  double wind_dir = 9999.0;    // degrees (from); 9999.0 when missing
  double wind_speed = 9999.0;  // m/s; 9999.0 when missing
  double extra[14] = {9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0};
};

// The profile of one station.
struct tag_tlogp_station {
  int32_t station;  // station number
  std::vector<tag_tlogp_layer> layers;
};

// ---- Thermodynamic primitives ----

// Small pure functions of moist thermodynamics and wind. Units: pressure hPa, temperature
// and potential temperatures deg C (kelvin only inside, as t + 273.15), specific humidity
// kg/kg, vapour pressure hPa, height m, wind m/s and degrees (from). None allocates or
// keeps state, and none checks its arguments beyond the guards stated below: pressures at
// or below zero give infinities or NaN through the power laws and NaN is passed on. The
// one sentinel is 9999.0 where stated.
extern "C" {

// Kelvin from deg C (t + 273.15), and deg C from kelvin (T - 273.15).
TERVIK_API double t2T(double t);
TERVIK_API double T2t(double T);

// Latent heat of vaporisation (J/kg) at t deg C: 2.501e6 - 2370 t.
TERVIK_API double Lw(double t);

// Saturation vapour pressure (hPa) at t deg C, Magnus form: over water for t >= 0 (zero
// counts as water), over ice below. E(0) = 6.112.
TERVIK_API double E(double t);

// Saturation specific humidity (kg/kg) at p hPa and t deg C; called with the dew point it
// gives the actual specific humidity.
TERVIK_API double q(double p, double t);

// Virtual temperature (deg C) of air saturated at t deg C and p hPa (there is no dew-point
// argument: the moisture is always the saturation value at t).
TERVIK_API double Tv(double p, double t);

// Potential temperature (deg C) of air at p hPa, t deg C, referred to 1000 hPa.
TERVIK_API double theta(double p, double t);

// Virtual potential temperature (deg C): the potential temperature of Tv(p, t).
TERVIK_API double theta_v(double p, double t);

// Temperature (deg C) at p hPa on the dry adiabat of potential temperature theta (deg C).
TERVIK_API double t_dry_adiabat(double p, double theta);

// Saturation specific humidity (kg/kg) at p hPa on the dry adiabat of theta (deg C).
TERVIK_API double q_dry_adiabat(double p, double theta);

// Lifting condensation level of air at (p hPa, t deg C, td deg C): writes its pressure
// (hPa, on a 0.1 hPa lattice below p) and temperature (deg C). Air with t == td is
// already saturated and returns (p, t); so, up to rounding of t, does air with td > t.
// Returns true, except for guarded input outside any atmosphere: unsaturated air starting
// above 1e4 hPa, or a null out pointer, returns false and writes nothing. A NaN, zero or
// negative pressure ends the search at once with a NaN temperature.
TERVIK_API bool pt_LCL(double p, double t, double td, double* p_lcl, double* t_lcl);

// Moist-adiabatic factor of saturated air at (p hPa, t deg C):
// T q (L Rd - cp Rv T) / p / (q L^2 + cp Rv T^2) with T in kelvin and q = q(p, t).
TERVIK_API double Fc(double p, double t);

// Pseudo-equivalent potential temperature (deg C) of air saturated at (p hPa, t deg C);
// the Poisson factor uses the partial pressure of dry air, p - E(t).
TERVIK_API double theta_se_s(double p, double t);

// Pseudo-equivalent potential temperature (deg C) of air at (p hPa, t, td deg C): the
// saturated value at its lifting condensation level. 9999.0 when pt_LCL refuses the input.
TERVIK_API double theta_se(double p, double t, double td);

// Returns t unchanged (p is unused): a placeholder kept under this name for callers.
TERVIK_API double Tw(double p, double t);

// theta_se_s(p, t).
TERVIK_API double theta_w(double p, double t);

// Moist static energy expressed as a temperature (deg C): latent term q(p, td) L / cp,
// geopotential term z g / cp, plus t. z in m.
TERVIK_API double Tsigma(double p, double t, double td, double z);

// As Tsigma, saturated at t: the latent term uses q(p, t); td is accepted and ignored.
TERVIK_API double Tsigmas(double p, double t, double td, double z);

// Dry static plus kinetic energy as a temperature (deg C): speed^2 / 2 / cp + z g / cp + t.
// p is accepted and ignored. (An energy temperature, not a dew point.)
TERVIK_API double Td(double p, double t, double z, double speed);

// Total energy as a temperature (deg C): Tsigma(p, t, td, z) plus the kinetic term of Td.
TERVIK_API double Tt(double p, double t, double td, double z, double speed);

// Eastward and northward components (m/s) of a wind of `speed` m/s from `dir` degrees.
TERVIK_API double u(double speed, double dir);
TERVIK_API double v(double speed, double dir);

// Speed (m/s) and direction (degrees from, in [0, 360]; a wind from due north gives 360,
// calm gives 180) of the components u, v. Writes through each non-null pointer; returns
// the speed.
TERVIK_API double uv2magdir(double u, double v, double* speed, double* dir);

// Water-vapour flux magnitude: wind speed (m/s) times the specific humidity of air at
// p hPa, t deg C and relative humidity rh (%), divided by g.
TERVIK_API double wvflux(double u, double v, double p, double t, double rh);

// Temperature (deg C) at p hPa on the pseudo-adiabat whose theta_se_s is theta_se (deg C):
// eleven bisection steps on [-100, 100], so within 0.05 of the root. A target outside the
// bracket converges onto its end (no sentinel).
TERVIK_API double t_wet_adiabat(double p, double theta_se);

// Temperature (deg C) at which the saturation specific humidity at p hPa equals q (kg/kg),
// to 0.01; 9999.0 when that vapour pressure lies outside E(-100)..E(100).
TERVIK_API double t_iso_humidity(double p, double q);

// Dry static energy (J/kg) of air at t deg C and height z m.
TERVIK_API double Esd(double t, double z);

// Static energies with a latent term q * 2501.0 added to Esd(t, z): saturated at t (Ess)
// or with the humidity of the dew point td (Es). The latent term's scale differs from
// the other terms' and is kept so for the callers who compare values.
TERVIK_API double Ess(double p, double t, double z);
TERVIK_API double Es(double p, double t, double td, double z);

// Temperature (deg C) of a parcel lifted from (p0 hPa, t0 deg C, td0 deg C) to p hPa: dry
// adiabatic below its condensation level, pseudo-adiabatic at and above it. 9999.0 when
// pt_LCL refuses the start (p0 above 1e4 hPa).
TERVIK_API double t_lift2p(double p0, double t0, double td0, double p);

}  // extern "C"

// ---- Profile lookups and characteristic levels ----

// A profile's values at one pressure or height: the first seven fields of a level. A
// failed interpolation is `valid` false with 9999.0 in every double.
struct layer_sample {
  bool valid;
  double p, z, t, td, wind_dir, wind_speed;
};

// Lookups along one station's profile `layers[0..n)` (ground first, pressure decreasing)
// and its characteristic levels. Units as above. Invalid levels are skipped; "the first
// level" is the first valid one. Every function fails for n <= 0, for a null `layers`,
// and for a profile without a valid level: -1, false, 9999.0 or an invalid sample. Out
// pointers must not be null (a null one fails the call); when a function returns false
// its outputs are left as they were. The searches compare t and td as plain numbers, so a
// missing t or td (9999.0) inside a profile is not detected.
extern "C" {

// Index of the first valid level whose pressure equals p exactly; -1 if none.
TERVIK_API int get_layer_p(tag_tlogp_layer* layers, int n, double p);

// i if 0 <= i < n and level i is valid; -1 otherwise.
TERVIK_API int get_layer_n(tag_tlogp_layer* layers, int n, int i);

// Temperature and dew point (deg C) at p hPa, linear in ln p between the first level and
// the first level above p: a bulk value between the ground and p. Fails when p lies below
// the first level (a greater pressure), when the first level is the last record, or when
// the profile ends below p.
TERVIK_API bool interpolate_t_at_p_far(tag_tlogp_layer* layers, int n, double p, double* t,
                                       double* td);

// As interpolate_t_at_p_far, between the two valid levels that enclose p.
TERVIK_API bool interpolate_t_at_p_near(tag_tlogp_layer* layers, int n, double p, double* t,
                                        double* td);

// Height of the first crossing of the temperature t (deg C) above the ground, linear in
// temperature; 9999.0 if t is warmer than the first level or is never reached.
TERVIK_API double interpolate_z_at_t(tag_tlogp_layer* layers, int n, double t);

// Pressure (hPa) of the first crossing of t (deg C), linear in temperature; 9999.0 as
// interpolate_z_at_t.
TERVIK_API double interpolate_p_at_t(tag_tlogp_layer* layers, int n, double t);

// Pressure (hPa) at height z, linear in height, over the valid levels that have a height;
// 9999.0 if z lies below the first of them or above the last.
TERVIK_API double interpolate_p_at_z(tag_tlogp_layer* layers, int n, double z);

// Every value of the profile at p hPa (or at height z), linear in pressure (height), over
// the valid levels whose height, wind direction and wind speed are all present. The wind
// direction is interpolated as a plain number (no wrap at 360). Invalid sample when the
// target lies outside those levels.
TERVIK_API layer_sample interpolate_layer_at_p(tag_tlogp_layer* layers, int n, double p);
TERVIK_API layer_sample interpolate_layer_at_z(tag_tlogp_layer* layers, int n, double z);

// Lifting condensation level (hPa, deg C) of the first level's air (pt_LCL).
TERVIK_API bool LCL(tag_tlogp_layer* layers, int n, double* p, double* t);

// Convective condensation level: walking up in 1 hPa steps from the first level, the
// first pressure where the environment is no warmer than the temperature at which the
// first level's specific humidity saturates. Writes that pressure (hPa) and the
// environment temperature there (deg C). Fails above the profile's top, at 10 hPa, and
// for a first level at 0 hPa or above 1e4 hPa.
TERVIK_API bool CCL(tag_tlogp_layer* layers, int n, double* p, double* t);

// Convective temperature (deg C): the CCL temperature brought down the dry adiabat to the
// first level. 9999.0 when CCL fails.
TERVIK_API double Tc(tag_tlogp_layer* layers, int n);

// Level of free convection: walking up the pseudo-adiabat from the LCL in 0.1 hPa steps,
// the first pressure where the parcel is at least as warm as the environment. Writes
// that pressure (hPa), the parcel temperature (deg C) and the dew point of the first-level
// (far) interpolation there. Fails when LCL fails, when the walk leaves the profile or
// reaches 0 hPa, and for a start above 1e4 hPa. Below about 6.1 hPa, E(0) exceeds the
// pressure and t_wet_adiabat returns its bracket's warm end (99.95), so a profile that
// reaches that high always finds an LFC (and an EL) there.
TERVIK_API bool LFC(tag_tlogp_layer* layers, int n, double* p, double* t, double* td);

// Equilibrium level: walking up the pseudo-adiabat from the LFC in 0.1 hPa steps, the
// last pressure where the parcel was warmer than the environment. A one-step latch lets
// only every second step of a buoyant run write, so the result may lie one step below the
// last buoyant one. Writes that pressure (hPa) and the far-interpolated environment
// temperature and dew point (deg C) there. Fails only when LFC fails; returns true even
// when nothing was written, so preset the outputs.
TERVIK_API bool EL(tag_tlogp_layer* layers, int n, double* p, double* t, double* td);

// Heights of the 0, -20 and -30 deg C isotherms (interpolate_z_at_t), and their pressures
// (interpolate_p_at_t); 9999.0 where not found.
TERVIK_API double z_t0(tag_tlogp_layer* layers, int n);
TERVIK_API double z_tm20(tag_tlogp_layer* layers, int n);
TERVIK_API double z_tm30(tag_tlogp_layer* layers, int n);
TERVIK_API double p_t0(tag_tlogp_layer* layers, int n);
TERVIK_API double p_tm20(tag_tlogp_layer* layers, int n);
TERVIK_API double p_tm30(tag_tlogp_layer* layers, int n);

}  // extern "C"

// ---- Stability and convective indices ----

// ---- Per-station physics record and report ----

#endif
