// Characteristic levels of a profile: condensation levels, convective temperature, free
// convection and equilibrium levels, isotherm heights and pressures.

#include <tervik/sounding.h>

#include "sounding/profile_detail.h"
#include "sounding/thermo_detail.h"

using namespace tervik::detail;

namespace {

// The LFC walk, with the caller's outputs kept apart so that EL can run it on its own.
bool find_lfc(const tag_tlogp_layer* layers, int n, double& p_out, double& t_out,
              double& td_out) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0) return false;
  double p_lcl, t_lcl;
  if (!lcl_search(layers[i0].p, layers[i0].t, layers[i0].td, p_lcl, t_lcl)) return false;
  const double th_se = theta_se_saturated(p_lcl, t_lcl);
  double pc = p_lcl;
  // Saturated air at the first level starts the walk at its own pressure, which the LCL
  // search does not bound: refuse the ones whose 0.1 hPa steps would take for ever.
  if (pc <= 0.0 || pc > kMaxPressure) return false;
  double tp;
  for (;;) {
    tp = wet_adiabat(pc, th_se);
    if (tp == kUndef) return false;
    double te, td;
    if (!t_at_p(layers, n, pc, false, te, td)) return false;
    if (te <= tp) break;
    pc -= 0.1;
    if (pc <= 0.0) return false;
  }
  double t_far, td_far;
  if (!t_at_p(layers, n, pc, true, t_far, td_far)) return false;
  p_out = pc;
  t_out = tp;
  td_out = td_far;
  return true;
}

}  // namespace

extern "C" {

bool LCL(tag_tlogp_layer* layers, int n, double* p, double* t) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0 || p == nullptr || t == nullptr) return false;
  return lcl_search(layers[i0].p, layers[i0].t, layers[i0].td, *p, *t);
}

// The convective condensation level is where air of the first level's moisture, heated
// from below until it rises, meets saturation: the environment curve crosses the line of
// constant specific humidity. The walk is 1 hPa a step and gives up at 10 hPa.
bool CCL(tag_tlogp_layer* layers, int n, double* p, double* t) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0 || p == nullptr || t == nullptr) return false;
  const double p0 = layers[i0].p;
  const double q0 = specific_humidity(p0, sat_vapour_pressure(layers[i0].td));
  if (p0 == 0.0) return false;
  // 1 hPa steps vanish in the rounding of huge pressures; such a start is refused.
  if (p0 > kMaxPressure) return false;
  double pc = p0, te;
  for (;;) {
    if (pc <= 10.0) return false;
    double td;
    if (!t_at_p(layers, n, pc, false, te, td)) return false;
    // 9999.0 (humidity out of range) ends the walk here as well.
    if (te <= t_iso_humidity(pc, q0)) break;
    pc -= 1.0;
  }
  *p = pc;
  *t = te;
  return true;
}

double Tc(tag_tlogp_layer* layers, int n) {
  double p_ccl, t_ccl;
  if (!CCL(layers, n, &p_ccl, &t_ccl)) return kUndef;
  const double ps = layers[first_valid(layers, n)].p;
  if (ps == 0.0) return kUndef;
  return ((t_ccl + kT0) * poisson(p_ccl) - kT0 + kT0) / poisson(ps) - kT0;
}

bool LFC(tag_tlogp_layer* layers, int n, double* p, double* t, double* td) {
  if (p == nullptr || t == nullptr || td == nullptr) return false;
  return find_lfc(layers, n, *p, *t, *td);
}

// From the LFC up to zero pressure: where the parcel is warmer than the environment the
// level may be written, but a one-step latch lets only every second step of a buoyant run
// write. The last write is the equilibrium level (or one step below it).
//
// Above the profile's top the environment interpolation fails, and it keeps failing for
// every lower pressure (it needs a level at or below the target); those steps change
// nothing, so the walk stops at the first of them with the same outputs. For the same
// reason the parcel temperature is only computed where it is compared.
bool EL(tag_tlogp_layer* layers, int n, double* p, double* t, double* td) {
  if (p == nullptr || t == nullptr || td == nullptr) return false;
  double p_lfc, t_lfc, td_lfc;
  if (!find_lfc(layers, n, p_lfc, t_lfc, td_lfc)) return false;
  const double th_se = theta_se_saturated(p_lfc, t_lfc);
  if (p_lfc <= 0.0) return true;
  bool latch = false;
  for (double pc = p_lfc; pc > 0.0; pc -= 0.1) {
    double te, td_near;
    if (!t_at_p(layers, n, pc, false, te, td_near)) break;
    // A set latch is cleared whatever the parcel does, so its step needs no parcel. (The
    // bisection's result is a midpoint inside [-100, 100], never the 9999.0 that would
    // otherwise have skipped the step.)
    if (latch) {
      latch = false;
      continue;
    }
    const double tp = wet_adiabat(pc, th_se);
    if (tp == kUndef) continue;
    if (te < tp) {
      latch = true;
      double t_far, td_far;
      if (t_at_p(layers, n, pc, true, t_far, td_far)) {
        *p = pc;
        *t = t_far;
        *td = td_far;
      }
    }
  }
  return true;
}

double z_t0(tag_tlogp_layer* layers, int n) { return interpolate_z_at_t(layers, n, 0.0); }
double z_tm20(tag_tlogp_layer* layers, int n) { return interpolate_z_at_t(layers, n, -20.0); }
double z_tm30(tag_tlogp_layer* layers, int n) { return interpolate_z_at_t(layers, n, -30.0); }
double p_t0(tag_tlogp_layer* layers, int n) { return interpolate_p_at_t(layers, n, 0.0); }
double p_tm20(tag_tlogp_layer* layers, int n) { return interpolate_p_at_t(layers, n, -20.0); }
double p_tm30(tag_tlogp_layer* layers, int n) { return interpolate_p_at_t(layers, n, -30.0); }

}  // extern "C"
