#ifndef TERVIK_SOUNDING_INDICES_DETAIL_H
#define TERVIK_SOUNDING_INDICES_DETAIL_H

// Helpers shared by the index files and the physics record: the profile check, mandatory
// level lookup, and the cores of the expensive parcel walks, split from their public
// entry points so that the physics record finds the LFC once and reuses it.

#include <cmath>

#include <tervik/sounding.h>

namespace tervik::sounding_index {

constexpr double kUndef = 9999.0;
// Gas constants: the parcel-energy walks use 287.05, the updraught and density formulas
// 287.217; both are kept where they are used.
constexpr double kRdEnergy = 287.05;
constexpr double kRdDensity = 287.217;
// Radians per degree, truncated as the wind components use it.
constexpr double kRadPerDeg = 0.017453292519943;

// True when the profile can be walked safely: layers not null, n >= 1, and every valid
// record has finite p, t, td, z, wind_dir and wind_speed, a pressure in (0, 1100] hPa, and
// no more than the pressure of the valid record below it (equal pressures are allowed).
// Beyond these bounds the fixed-step walks would run for ever or on NaN.
bool usable_profile(const tag_tlogp_layer* layers, int n);

// Index of the first valid record, or -1.
int first_valid(const tag_tlogp_layer* layers, int n);

// The first valid record whose pressure is exactly `p` (a reported mandatory level), or
// null. Such a level is never interpolated.
const tag_tlogp_layer* mandatory(tag_tlogp_layer* layers, int n, double p);

// East and north components of a wind from `dir` degrees at `speed`.
inline double wind_east(double dir, double speed) {
  return std::sin((dir - 180.0) * kRadPerDeg) * speed;
}
inline double wind_north(double dir, double speed) {
  return std::cos((dir - 180.0) * kRadPerDeg) * speed;
}

// CAPE (J/kg) and the maximum in-cloud updraught Wm (m/s) of the pseudo-adiabat through
// the LFC (p_lfc, t_lfc), from one walk up from the ground; 9999.0 where undefined.
struct AscentEnergy {
  double cape = kUndef;
  double wm = kUndef;
};
AscentEnergy ascent_from_lfc(tag_tlogp_layer* layers, int n, double p_lfc, double t_lfc);
// CIN (J/kg, positive) of the ground parcel with its LCL (p_lcl, t_lcl) below p_lfc.
double cin_from_levels(tag_tlogp_layer* layers, int n, double p_lcl, double t_lcl,
                       double p_lfc);

// sqrt(2 x) for the updraught speeds of CAPE and CIN; 9999.0 passes through.
inline double twice_root(double x) { return x == kUndef ? kUndef : std::sqrt(x + x); }

// The composites, from their ingredients; 9999.0 when an ingredient is 9999.0. A zero
// shear has no logarithm and no Richardson number, so it gives 9999.0 too.
inline double ssi_from(double shear, double cape) {
  if (shear == kUndef || cape == kUndef || !(shear > 0.0)) return kUndef;
  return (std::log(shear) * 0.276 + 2.0 + cape * 0.0002011) * 100.0;
}
inline double brn_from(double cape, double shear) {
  if (shear == kUndef || cape == kUndef || shear == 0.0) return kUndef;
  return 2.0 * cape / shear / shear;
}
inline double ehi_from(double cape, double srh) {
  if (cape == kUndef || srh == kUndef) return kUndef;
  return cape * srh / 1.6e6;
}
inline double dm_from(double wm) {
  if (wm == kUndef) return kUndef;
  return wm * (wm + wm) / 22.0 / 22.0;
}

}  // namespace tervik::sounding_index

#endif
