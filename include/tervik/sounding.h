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
//
// Every index takes the profile (levels from the ground upward) and its count and returns
// one double, or 9999.0 when a level it needs is missing. A mandatory level (850, 700,
// 500 hPa) is the first valid record whose pressure is exactly that value; it is never
// interpolated. Temperatures and dew points of the levels found are used as they are: a
// 9999.0 stored in t or td is not detected and enters the arithmetic.
//
// Every index first checks that the profile is usable: layers not null, n >= 1, and every
// valid record with a finite pressure in (0, 1100] hPa, not greater than the pressure of
// the valid record below it, and finite t, td, z, wind direction and speed (9999.0 counts
// as finite). A profile that fails the check gives 9999.0 at once; this keeps the
// fixed-step walks bounded and away from NaN.
extern "C" {

// Showalter index (deg C): t500 minus the 850 hPa parcel lifted to 500 hPa.
TERVIK_API double SI(tag_tlogp_layer* layers, int n);
// Lifted index (deg C): t500 minus the ground parcel lifted to 500 hPa; the ground must lie
// below 500 hPa.
TERVIK_API double LI(tag_tlogp_layer* layers, int n);
// Best lifted index (deg C): the lowest lifted index of parcels starting at the ground and
// every 50 hPa above it down to 700 hPa (sampled with interpolate_layer_at_p). 1000.0 when
// the ground lies above 700 hPa; 9999.0 without a 500 hPa level.
TERVIK_API double BLI(tag_tlogp_layer* layers, int n);
// Deep convective index (deg C): t850 + td850 - LI.
TERVIK_API double DCI(tag_tlogp_layer* layers, int n);
// Slavin-type lifted index (deg C) from the ground parcel, weighted by the 850/700/500 hPa
// temperatures and moisture; needs 850, 700 and 500 and an LCL below 500 hPa.
TERVIK_API double SLW(tag_tlogp_layer* layers, int n);
// Total totals (deg C): t850 + td850 - 2 t500.
TERVIK_API double TT(tag_tlogp_layer* layers, int n);
// Total totals with the mean t + td of the valid records from the first record up to the
// 850 hPa record in place of t850 + td850.
TERVIK_API double TTmod(tag_tlogp_layer* layers, int n);
// K index (deg C): (t850 - t500) + td850 - (t700 - td700).
TERVIK_API double K(tag_tlogp_layer* layers, int n);
// K index with mean t and mean td of the records from the first up to the 850 hPa record,
// every one of which must be valid.
TERVIK_API double Kmod(tag_tlogp_layer* layers, int n);
// K index with the mean of record 0 and 850 hPa; record 0 must be valid.
TERVIK_API double Kmod2(tag_tlogp_layer* layers, int n);
// Faust: temperature (deg C) at 500 hPa of an 850 hPa parcel with the mean dew point of
// 850, 700 and 500 hPa (the parcel temperature itself, not a difference).
TERVIK_API double Faust(tag_tlogp_layer* layers, int n);
// Jefferson index (deg C) from record 1 (the second record, whatever its pressure) and t500.
TERVIK_API double JI(tag_tlogp_layer* layers, int n);
// Modified Jefferson index: JI - (t700 - td700) / 2 + 3.
TERVIK_API double mJI(tag_tlogp_layer* layers, int n);
// A index (deg C): (t850 - t500) minus the dew-point depressions at 850, 700 and 500 hPa.
TERVIK_API double A(tag_tlogp_layer* layers, int n);
// Severe weather threat index (dimensionless) from 850 and 500 hPa temperatures and winds.
TERVIK_API double SWEAT(tag_tlogp_layer* layers, int n);

// Convective available potential energy (J/kg) of the pseudo-adiabat through the level of
// free convection, summed in 2 hPa steps from the ground upward over runs of positive
// buoyancy. 9999.0 when the LFC cannot be found.
TERVIK_API double CAPE(tag_tlogp_layer* layers, int n);
// Maximum updraught speed sqrt(2 CAPE) (m/s); 9999.0 with CAPE.
TERVIK_API double w_cape(tag_tlogp_layer* layers, int n);
// Convective inhibition (J/kg, positive) of the ground parcel below the LFC, 0.1 hPa steps.
// 9999.0 when the LCL or the LFC cannot be found.
TERVIK_API double CIN(tag_tlogp_layer* layers, int n);
// Speed sqrt(2 CIN) (m/s) an updraught needs to pass the inhibition; 9999.0 with CIN.
TERVIK_API double w_cin(tag_tlogp_layer* layers, int n);

// Bulk wind shear (m/s) between the heights `bottom` and `top` (height unit of the
// profile): the length of the vector difference between the density-weighted mean wind of
// the layer and the wind at its bottom, as in the shear of the bulk Richardson number. A
// bottom below the lowest level with a height is taken at that level. 9999.0 when the
// layer cannot be sampled (top above the winds of the profile, top <= bottom).
TERVIK_API double Shr(tag_tlogp_layer* layers, int n, double bottom, double top);
// Severe storm index from Shr(0, 600) and CAPE.
TERVIK_API double SSI(tag_tlogp_layer* layers, int n);
// Swiss thunderstorm indices for the evening (SWISS00) and midday (SWISS12) soundings.
TERVIK_API double SWISS00(tag_tlogp_layer* layers, int n);
TERVIK_API double SWISS12(tag_tlogp_layer* layers, int n);
// Bulk Richardson number 2 CAPE / Shr(0, 600)^2.
TERVIK_API double BRN(tag_tlogp_layer* layers, int n);
// Storm-relative helicity (m2/s2) of the lowest 300 height units for a storm moving at
// 0.75 of the 400-850 hPa mean wind, 40 degrees to its right. Records count by their
// height and wind whatever their valid flag. 9999.0 when no record has a height.
TERVIK_API double SRH(tag_tlogp_layer* layers, int n);
// Energy-helicity index CAPE SRH / 1.6e6.
TERVIK_API double EHI(tag_tlogp_layer* layers, int n);
// Depths (height unit) of the layers between the 0 and -20 deg C, and -20 and -40 deg C
// isotherms.
TERVIK_API double Hd0_20(tag_tlogp_layer* layers, int n);
TERVIK_API double Hd20_40(tag_tlogp_layer* layers, int n);

// Pseudo-equivalent potential temperature differences (deg C): 500 hPa minus 850 hPa (or
// 700 hPa without 850) (Iconve); saturated 500 hPa minus record 0 (Icondi); their sum.
TERVIK_API double Iconve(tag_tlogp_layer* layers, int n);
TERVIK_API double Icondi(tag_tlogp_layer* layers, int n);
TERVIK_API double Icondi_conve(tag_tlogp_layer* layers, int n);
// Vertical-velocity index from the convective temperature and the 0 deg C level.
TERVIK_API double VV(tag_tlogp_layer* layers, int n);
// Maximum in-cloud updraught (m/s) from the greatest parcel excess above the LFC.
TERVIK_API double Wm(tag_tlogp_layer* layers, int n);
// Hail diameter estimate from Wm.
TERVIK_API double Dm(tag_tlogp_layer* layers, int n);
// Microburst day potential index: spread of theta_se over the profile / 20.
TERVIK_API double MDPI(tag_tlogp_layer* layers, int n);
// Static-energy stabilities (deg C) from samples at 800 and 850 hPa (sigma_D, sigma_L) and
// 850 hPa against t500 (sigma_S).
TERVIK_API double sigma_S(tag_tlogp_layer* layers, int n);
TERVIK_API double sigma_D(tag_tlogp_layer* layers, int n);
TERVIK_API double sigma_L(tag_tlogp_layer* layers, int n);
// Squared vector wind difference (m2/s2) between 850 and 300 hPa.
TERVIK_API double TQG(tag_tlogp_layer* layers, int n);
// Column integral of specific humidity over height (kg/kg times the height unit), by the
// trapezoidal rule over the valid records with a height.
TERVIK_API double IntQ(tag_tlogp_layer* layers, int n);
// A reserved index that is not computed: always 9999.0, reads nothing. sigma_C and sigma_P
// are the same entry point.
TERVIK_API double Teffer(tag_tlogp_layer* layers, int n);
TERVIK_API double sigma_C(tag_tlogp_layer* layers, int n);
TERVIK_API double sigma_P(tag_tlogp_layer* layers, int n);
// Convective trigger (hPa): the first record's air, warmed by `dt` deg C at constant
// moisture, rises along its dry adiabat in 1 hPa steps until it is no warmer than the
// environment; if it reaches saturation on the way up, the result is the pressure depth
// p0 - p_base from the first record to that cloud base. 9999.0 when the thermal stops
// below its condensation level or the profile ends first.
TERVIK_API double CT(tag_tlogp_layer* layers, int n, double dt);

}  // extern "C"

// ---- Per-station physics record and report ----

struct tag_tervik_data5;  // the sounding record, declared in tervik/records.h

// The quantities of one station's sounding. index[k] holds the quantity of table entry k
// (tervik_physics_table), 9999.0 when it could not be computed. levels holds the
// characteristic levels: 0 the ground (first valid record), 1 LCL, 2 LFC, 3 EL, 4 CCL,
// 5 the 0 deg C, 6 the -20 deg C and 7 the -30 deg C level; a level that was found is
// valid with p, t, td and, where the profile gives it, z. extra holds working values:
// 0 Shr(0, 300), 1 Shr(300, 600), 2 CT with 2 deg C of heating, 3 precipitable water (mm),
// 4 theta_v of the ground (deg C), 5 the -40 deg C height; 9999.0 where undefined.
// Default construction gives the initial state: header 0, levels invalid with 9999.0,
// extra 0.0, index 9999.0.
struct tag_physics_station {
  int32_t header[3] = {0, 0, 0};  // header[0]: station number
  tag_tlogp_layer levels[8];
  double extra[6] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  double index[68] = {9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0};
};

// One entry of the index table: the short key the report prints and a descriptive label.
// Labels are GBK-encoded Chinese text; two pairs share a label (BLI and BI, aa4 and aa8).
struct tag_physics_key {
  const char* key;
  const char* label;
};

// The 68 entries, in the order of tag_physics_station::index. The formula of every entry
// is listed in docs/physics-indices.md.
TERVIK_API extern const tag_physics_key tervik_physics_table[68];

// Display scale of each index slot, entry k going with index[k], for callers that show
// the values in other units; the library never reads it.
TERVIK_API extern const double tervik_physics_unit[68];

// Computes the record of every sounding of `soundings`: `out` is emptied, then gets one
// entry per sounding, in order. A sounding is computed when `station` is 0 or equals its
// station number; the others stay in the initial state (all index values 9999.0).
TERVIK_API void create_tlogp_physics(const tag_tervik_data5& soundings,
                                     std::vector<tag_physics_station>& out, int station);

// Fills `result` from one station's profile: header[0] gets the station number, then the
// levels, the extra values and the 68 quantities; a level or index that cannot be
// computed is left as it was (invalid, 9999.0 in a fresh record). A profile the indices
// cannot use (see the check above them) sets the station number only.
TERVIK_API void compute_tlogp_physics(const tag_tlogp_station& sounding,
                                      tag_physics_station& result);

// Writes the report of `record`: 68 lines "%9s %12.4f\n" of key and value in table order,
// to `path` (opened "w") or to standard output when `path` is null. Returns 0; when the
// file cannot be opened prints "Fail to open file <path>." on standard error and returns
// -1. The file is not closed: the stream stays open until the process exits, so a reader
// in the same process sees only what has been flushed.
TERVIK_API int write_physics_station(const char* path, tag_physics_station& record);

#endif
