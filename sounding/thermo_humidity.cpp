// Temperature scales, saturation vapour pressure and specific humidity.

#include <tervik/sounding.h>

#include "sounding/thermo_detail.h"

using namespace tervik::detail;

extern "C" {

double t2T(double t) { return t + kT0; }

double T2t(double T) { return T - kT0; }

double Lw(double t) { return 2.501e6 - 2370.0 * t; }

double E(double t) { return sat_vapour_pressure(t); }

double q(double p, double t) { return specific_humidity(p, sat_vapour_pressure(t)); }

double Tv(double p, double t) { return (t + kT0) * (q(p, t) * 0.6077 + 1.0) - kT0; }

// Inverts the saturation specific humidity: the vapour pressure e that gives q at p, then
// the temperature whose saturation vapour pressure is e, by bisection on [-100, 100] deg C
// to a bracket of 0.01 (fifteen evaluations). An equal E(mid) moves the lower end.
double t_iso_humidity(double p, double qv) {
  const double e = p * qv / (qv * kOneMinusEps + kEps);
  // E(-100): the ice form's exponent 9.5 * -100 / 165.5, written out.
  const double e_min = kE0 * std::pow(10.0, -5.740181268882175);
  if (e < e_min || e > sat_vapour_pressure(100.0)) return kUndef;
  double lower = -100.0, upper = 100.0, mid = 0.0;
  do {
    if (sat_vapour_pressure(mid) > e)
      upper = mid;
    else
      lower = mid;
    mid = (lower + upper) * 0.5;
  } while (upper - lower > 0.01);
  return mid;
}

}  // extern "C"
