// Indices from equivalent potential temperature and static energy, the isotherm depths,
// the column moisture, and the convective trigger of a heated ground layer.

#include <algorithm>
#include <cmath>

#include "sounding/indices_detail.h"

using tervik::sounding_index::first_valid;
using tervik::sounding_index::kUndef;
using tervik::sounding_index::mandatory;
using tervik::sounding_index::usable_profile;

namespace {

// The difference of two isotherm heights, 9999.0 when either is missing.
double isotherm_depth(tag_tlogp_layer* layers, int n, double t_low, double t_high) {
  if (!usable_profile(layers, n)) return kUndef;
  const double z_low = interpolate_z_at_t(layers, n, t_low);
  const double z_high = interpolate_z_at_t(layers, n, t_high);
  if (z_low == kUndef || z_high == kUndef) return kUndef;
  return z_high - z_low;
}

// A sample usable for the static energies: valid, with height and wind speed.
bool energy_sample(const layer_sample& s) {
  return s.valid && s.z != kUndef && s.wind_speed != kUndef;
}

}  // namespace

extern "C" {

double Hd0_20(tag_tlogp_layer* layers, int n) { return isotherm_depth(layers, n, 0.0, -20.0); }

double Hd20_40(tag_tlogp_layer* layers, int n) {
  return isotherm_depth(layers, n, -20.0, -40.0);
}

// Potential (convective) instability: theta_se at 500 hPa minus at 850 hPa, or at 700 hPa
// when 850 hPa is below ground or missing. Negative when the column is unstable.
double Iconve(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  const tag_tlogp_layer* low = mandatory(layers, n, 850.0);
  if (low == nullptr) low = mandatory(layers, n, 700.0);
  if (l500 == nullptr || low == nullptr) return kUndef;
  return theta_se(l500->p, l500->t, l500->td) - theta_se(low->p, low->t, low->td);
}

// Conditional instability: the 500 hPa air taken as saturated against the ground air
// (record 0, which must be valid) lifted through its LCL.
double Icondi(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  if (!layers[0].valid) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  return theta_se_s(l500->p, l500->t) - theta_se(layers[0].p, layers[0].t, layers[0].td);
}

double Icondi_conve(tag_tlogp_layer* layers, int n) {
  const double a = Icondi(layers, n);
  const double b = Iconve(layers, n);
  if (a == kUndef || b == kUndef) return kUndef;
  return a + b;
}

// Twice the excess of the convective temperature over the ground temperature of the
// pseudo-adiabat through the 0 deg C level. Record 0 gives the ground pressure whether or
// not it is valid, and a missing convective temperature (9999.0) is not caught.
double VV(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const double p0c = interpolate_p_at_t(layers, n, 0.0);
  if (p0c == kUndef) return kUndef;
  return 2.0 * (Tc(layers, n) - t_wet_adiabat(layers[0].p, theta_se_s(p0c, 0.0)));
}

// The spread of theta_se over every valid record, scaled by 20 K.
double MDPI(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double lo = 0.0, hi = 0.0;
  bool any = false;
  for (int i = 0; i < n; ++i) {
    if (!layers[i].valid) continue;
    const double th = theta_se(layers[i].p, layers[i].t, layers[i].td);
    lo = any ? std::min(lo, th) : th;
    hi = any ? std::max(hi, th) : th;
    any = true;
  }
  if (!any) return kUndef;
  return (hi - lo) / 20.0;
}

// Dry static plus kinetic energy (as a temperature) at 800 hPa minus at 850 hPa.
double sigma_D(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const layer_sample a = interpolate_layer_at_p(layers, n, 800.0);
  const layer_sample b = interpolate_layer_at_p(layers, n, 850.0);
  if (!energy_sample(a) || !energy_sample(b)) return kUndef;
  return Td(a.p, a.t, a.z, a.wind_speed) - Td(b.p, b.t, b.z, b.wind_speed);
}

// Saturated static energy at 800 hPa minus total energy at 850 hPa (as temperatures).
double sigma_L(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const layer_sample a = interpolate_layer_at_p(layers, n, 800.0);
  const layer_sample b = interpolate_layer_at_p(layers, n, 850.0);
  if (!energy_sample(a) || !energy_sample(b)) return kUndef;
  return Tsigmas(a.p, a.t, a.td, a.z) - Tt(b.p, b.t, b.td, b.z, b.wind_speed);
}

// The 500 hPa temperature minus the total energy of the 850 hPa air as a temperature.
double sigma_S(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const layer_sample s = interpolate_layer_at_p(layers, n, 850.0);
  if (!energy_sample(s)) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  return l500->t - Tt(s.p, s.t, s.td, s.z, s.wind_speed);
}

// Trapezoidal height integral of specific humidity over the valid records with a height.
// A column needs a start below the last record; one without later heights integrates to 0.
double IntQ(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  int prev = -1;
  for (int i = 0; i < n && prev < 0; ++i) {
    if (layers[i].valid && layers[i].z != kUndef) prev = i;
  }
  if (prev < 0 || prev == n - 1) return kUndef;
  double sum = 0.0;
  for (int j = prev + 1; j < n; ++j) {
    if (!layers[j].valid || layers[j].z == kUndef) continue;
    sum += 0.5 * (q(layers[prev].p, layers[prev].td) + q(layers[j].p, layers[j].td)) *
           (layers[j].z - layers[prev].z);
    prev = j;
  }
  return sum;
}

// A reserved index that is not computed; sigma_C and sigma_P are the same function.
double Teffer(tag_tlogp_layer* /*layers*/, int /*n*/) { return kUndef; }
double sigma_C(tag_tlogp_layer* layers, int n) __attribute__((alias("Teffer")));
double sigma_P(tag_tlogp_layer* layers, int n) __attribute__((alias("Teffer")));

// A heated ground layer sends a dry thermal up until it is no warmer than the
// environment. If the thermal's moisture saturates before it stops, a cumulus forms: the
// result is the depth p0 - p_base of that cloud base below the first record. Both
// searches step 1 hPa and give up at 10 hPa; the saturation test compares the thermal's
// temperature with the temperature at which its specific humidity saturates.
double CT(tag_tlogp_layer* layers, int n, double dt) {
  if (!usable_profile(layers, n) || !std::isfinite(dt)) return kUndef;
  const int i0 = first_valid(layers, n);
  if (i0 < 0) return kUndef;
  const double p0 = layers[i0].p;
  const double theta_k = (layers[i0].t + dt + 273.15) * std::pow(1000.0 / p0, 0.286);
  const double q0 = q(p0, layers[i0].td);
  auto thermal = [&](double p) { return theta_k / std::pow(1000.0 / p, 0.286) - 273.15; };

  // Top of the thermal: the first step where it is no warmer than its surroundings.
  double p_top = p0 - 1.0;
  for (;; p_top -= 1.0) {
    if (p_top <= 10.0) return kUndef;
    double te = 0.0, tde = 0.0;
    if (!interpolate_t_at_p_near(layers, n, p_top, &te, &tde)) return kUndef;
    if (thermal(p_top) <= te) break;
  }
  // Cloud base: the first step, from the ground to the top, where the thermal saturates.
  for (double pc = p0; pc >= p_top; pc -= 1.0) {
    const double t_sat = t_iso_humidity(pc, q0);
    if (t_sat != kUndef && thermal(pc) <= t_sat) return p0 - pc;
  }
  return kUndef;
}

}  // extern "C"
