// Potential temperatures, the moist-adiabatic factor and the energy temperatures.

#include <tervik/sounding.h>

#include "sounding/thermo_detail.h"

using namespace tervik::detail;

extern "C" {

double theta(double p, double t) { return (t + kT0) * poisson(p) - kT0; }

double theta_v(double p, double t) { return (Tv(p, t) + kT0) * poisson(p) - kT0; }

double t_dry_adiabat(double p, double theta) { return (theta + kT0) / poisson(p) - kT0; }

double q_dry_adiabat(double p, double theta) { return q(p, t_dry_adiabat(p, theta)); }

// L Rd = 718329717.0 and cp Rv = 463734.583 (Rd = 287.217, Rv = 461.5).
double Fc(double p, double t) {
  const double qs = q(p, t);
  const double T = t + kT0;
  return T * qs * (718329717.0 - 463734.583 * T) / p / (qs * kL * kL + 463734.583 * T * T);
}

double theta_se_s(double p, double t) { return theta_se_saturated(p, t); }

double theta_se(double p, double t, double td) {
  double p_lcl, t_lcl;
  if (!lcl_search(p, t, td, p_lcl, t_lcl)) return kUndef;
  return theta_se_saturated(p_lcl, t_lcl);
}

double Tw(double, double t) { return (t + kT0) - kT0; }

double theta_w(double p, double t) { return theta_se_saturated(p, t); }

// Energies per unit mass divided by cp, so that they read as temperatures: latent heat
// q L, geopotential z g, kinetic speed^2 / 2.
double Tsigma(double p, double t, double td, double z) {
  return q(p, td) * kL / kCp + (z * kG / kCp + t);
}

double Tsigmas(double p, double t, double, double z) {
  return q(p, t) * kL / kCp + (z * kG / kCp + t);
}

double Td(double, double t, double z, double speed) {
  return speed * (0.5 * speed) / kCp + (z * kG / kCp + t);
}

double Tt(double p, double t, double td, double z, double speed) {
  return q(p, td) * kL / kCp + (z * kG / kCp + t) + speed * (0.5 * speed) / kCp;
}

// Static energies in J/kg: cp T + g z. cp * 273.15 is the product as the machine forms it
// (274472.59229999996), one unit in the last place below the decimal literal 274472.5923.
double Esd(double t, double z) {
  constexpr double kCpT0 = kCp * kT0;
  return t * kCp + kCpT0 + z * kG;
}

double Ess(double p, double t, double z) { return q(p, t) * 2501.0 + Esd(t, z); }

double Es(double p, double t, double td, double z) { return q(p, td) * 2501.0 + Esd(t, z); }

}  // extern "C"
