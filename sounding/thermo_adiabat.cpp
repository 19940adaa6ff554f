// Lifting a parcel: the condensation level, the pseudo-adiabat and the lifted temperature.

#include <tervik/sounding.h>

#include "sounding/thermo_detail.h"

namespace tervik::detail {

// The parcel keeps its potential temperature and its specific humidity while it rises dry.
// Walk down from its own pressure in steps of 0.1 hPa and stop at the first pressure where
// air on its dry adiabat can no longer hold its moisture. A NaN anywhere fails the
// comparison and stops the walk; below zero pressure the Poisson factor is NaN, so every
// start at or below kMaxPressure ends within p / 0.1 steps. Starts above it are refused:
// 0.1 hPa is lost in the rounding of pressures near 1e17 and the walk would stand still.
bool lcl_search(double p, double t, double td, double& p_lcl, double& t_lcl) {
  if (t == td) {
    p_lcl = p;
    t_lcl = t;
    return true;
  }
  if (p > kMaxPressure) return false;
  // Formed through the potential temperature in deg C, as theta() gives it.
  const double theta_k = ((t + kT0) * poisson(p) - kT0) + kT0;
  const double q0 = specific_humidity(p, sat_vapour_pressure(td));
  double pc = p;
  for (;;) {
    const double tc = theta_k / poisson(pc) - kT0;
    const double qs = specific_humidity(pc, sat_vapour_pressure(tc));
    if (!(qs >= q0)) break;
    pc -= 0.1;
  }
  p_lcl = pc;
  t_lcl = theta_k / poisson(pc) - kT0;
  return true;
}

}  // namespace tervik::detail

using namespace tervik::detail;

extern "C" {

bool pt_LCL(double p, double t, double td, double* p_lcl, double* t_lcl) {
  if (p_lcl == nullptr || t_lcl == nullptr) return false;
  return lcl_search(p, t, td, *p_lcl, *t_lcl);
}

double t_wet_adiabat(double p, double theta_se) { return wet_adiabat(p, theta_se); }

double t_lift2p(double p0, double t0, double td0, double p) {
  double p_lcl, t_lcl;
  if (!lcl_search(p0, t0, td0, p_lcl, t_lcl)) return kUndef;
  if (p_lcl >= p) return wet_adiabat(p, theta_se_saturated(p_lcl, t_lcl));
  return ((t0 + kT0) * poisson(p0) - kT0 + kT0) / poisson(p) - kT0;
}

}  // extern "C"
