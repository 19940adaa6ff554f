#ifndef TERVIK_SOUNDING_THERMO_DETAIL_H
#define TERVIK_SOUNDING_THERMO_DETAIL_H

// Constants and inline kernels shared by the thermodynamic primitives and the profile
// walks. The exported functions are separate symbols; the hot loops (the LCL search, the
// pseudo-adiabat bisection) use these inline forms, which evaluate the very same
// expressions in the same order and so give the same bits.

#include <cmath>

namespace tervik::detail {

constexpr double kT0 = 273.15;          // deg C to kelvin
constexpr double kKappa = 0.286;        // Poisson exponent
constexpr double kP0 = 1000.0;          // reference pressure, hPa
constexpr double kL = 2.501e6;          // latent heat of vaporisation, J/kg
constexpr double kCp = 1004.842;        // specific heat of dry air, J/(kg K)
constexpr double kG = 9.81;             // gravity, m/s2
constexpr double kEps = 0.622;          // ratio of the gas constants of dry air and vapour
constexpr double kOneMinusEps = 0.378;  // 1 - kEps
constexpr double kE0 = 6.112;           // saturation vapour pressure at 0 deg C, hPa
constexpr double kUndef = 9999.0;       // undefined value of a sounding

// Highest start pressure (hPa) a stepping search accepts. Nothing on Earth comes near
// ten atmospheres; a walk of 0.1 hPa steps from 1e300 would never change its pressure,
// so larger (and infinite) starts are refused instead of walked.
constexpr double kMaxPressure = 1.0e4;

// Magnus saturation vapour pressure (hPa): over water at and above 0 deg C, over ice below.
inline double sat_vapour_pressure(double t) {
  double a, b;
  if (t >= 0.0) {
    a = 7.5;
    b = 237.3;
  } else {
    a = 9.5;
    b = 265.5;
  }
  return std::pow(10.0, a * t / (t + b)) * kE0;
}

// Specific humidity (kg/kg) of air at p hPa holding vapour at e hPa.
inline double specific_humidity(double p, double e) { return kEps * e / (p - kOneMinusEps * e); }

// The Poisson factor (1000 / p)^0.286.
inline double poisson(double p) { return std::pow(kP0 / p, kKappa); }

// Pseudo-equivalent potential temperature (deg C) of air saturated at (p, t).
inline double theta_se_saturated(double p, double t) {
  const double e = sat_vapour_pressure(t);
  const double T = t + kT0;
  return T * std::pow(kP0 / (p - e), kKappa) * std::exp(specific_humidity(p, e) * kL / kCp / T) -
         kT0;
}

// Temperature (deg C) at p on the pseudo-adiabat of theta_se: bisection on [-100, 100]
// until the bracket is at most 0.1 wide, which takes eleven evaluations whatever the input.
inline double wet_adiabat(double p, double theta_se) {
  double lower = -100.0, upper = 100.0, mid = 0.0;
  do {
    if (theta_se_saturated(p, mid) >= theta_se)
      upper = mid;
    else
      lower = mid;
    mid = (lower + upper) * 0.5;
  } while (upper - lower > 0.1);
  return mid;
}

// Lifting condensation level of (p, t, td). Returns false, writing nothing, for
// unsaturated air starting above kMaxPressure.
bool lcl_search(double p, double t, double td, double& p_lcl, double& t_lcl);

}  // namespace tervik::detail

#endif
