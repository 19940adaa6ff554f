// Lifted-parcel indices: a parcel taken from a low level to 500 hPa (dry up to its
// condensation level, pseudo-adiabatic above) and compared with the 500 hPa temperature,
// and the indices built on the Jefferson form of the same idea.

#include <cmath>

#include "sounding/indices_detail.h"

using tervik::sounding_index::first_valid;
using tervik::sounding_index::kUndef;
using tervik::sounding_index::mandatory;
using tervik::sounding_index::usable_profile;

extern "C" {

double SI(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const tag_tlogp_layer* l850 = mandatory(layers, n, 850.0);
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l850 == nullptr || l500 == nullptr) return kUndef;
  return l500->t - t_lift2p(l850->p, l850->t, l850->td, 500.0);
}

double LI(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const int i0 = first_valid(layers, n);
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (i0 < 0 || l500 == nullptr || !(layers[i0].p > 500.0)) return kUndef;
  const tag_tlogp_layer& g = layers[i0];
  return l500->t - t_lift2p(g.p, g.t, g.td, 500.0);
}

// The parcels start at the ground and every 50 hPa above it while the start stays at or
// below 700 hPa; each start is sampled from the profile. A station above 700 hPa has no
// such start and reports 1000.0.
double BLI(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  const double t500 = l500->t;
  const int i0 = first_valid(layers, n);
  double pc = i0 < 0 ? 0.0 : layers[i0].p;
  double best = 1000.0;
  if (pc < 700.0) return best;
  do {
    // A failed sample (no height or wind at the start) is lifted as it stands, 9999.0s
    // included; the walk is still bounded and the value lands above any real index.
    const layer_sample s = interpolate_layer_at_p(layers, n, pc);
    const double v = t500 - t_lift2p(s.p, s.t, s.td, 500.0);
    if (v < best) best = v;
    pc -= 50.0;
  } while (pc >= 700.0);
  return best;
}

double DCI(tag_tlogp_layer* layers, int n) {
  const double li = LI(layers, n);
  if (li == kUndef) return kUndef;
  const tag_tlogp_layer* l850 = mandatory(layers, n, 850.0);
  if (l850 == nullptr) return kUndef;
  return l850->t + l850->td - li;
}

// The ground parcel's 500 hPa excess, scaled down by the 850-500 hPa lapse and low-level
// dryness. The humidity qa pairs the LCL pressure with the 850 hPa temperature on purpose.
double SLW(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const int i0 = first_valid(layers, n);
  if (i0 < 0 || !(layers[i0].p > 500.0)) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  const tag_tlogp_layer* l700 = mandatory(layers, n, 700.0);
  const tag_tlogp_layer* l850 = mandatory(layers, n, 850.0);
  if (l500 == nullptr || l700 == nullptr || l850 == nullptr) return kUndef;
  double p_lcl = 0.0, t_lcl = 0.0;
  pt_LCL(layers[i0].p, layers[i0].t, layers[i0].td, &p_lcl, &t_lcl);
  if (p_lcl < 500.0) return kUndef;
  const double d = t_wet_adiabat(500.0, theta_se_s(p_lcl, t_lcl)) - l500->t;
  const double qa = q(p_lcl, l850->t);
  const double qb = q(l700->p, l700->td);
  const double s = (l850->t - l500->t) + (l850->td - l700->td);
  return d - s * d * (qa - qb) / (qa * 0.2 + 1.0);
}

// The 850 hPa parcel with the mean dew point of 850, 700 and 500 hPa, lifted to 500 hPa:
// the result is the parcel temperature there.
double Faust(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  const tag_tlogp_layer* l700 = mandatory(layers, n, 700.0);
  const tag_tlogp_layer* l850 = mandatory(layers, n, 850.0);
  if (l500 == nullptr || l700 == nullptr || l850 == nullptr) return kUndef;
  return t_lift2p(850.0, l850->t, (l700->td + l850->td + l500->td) / 3.0, 500.0);
}

// Record 1 is taken as the low level whatever its pressure, as if saturated.
double JI(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  if (n < 2 || !layers[1].valid) return kUndef;
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  return 1.6 * theta_se_s(layers[1].p, layers[1].t) - l500->t - 11.0;
}

double mJI(tag_tlogp_layer* layers, int n) {
  const double ji = JI(layers, n);
  if (ji == kUndef) return kUndef;
  const tag_tlogp_layer* l700 = mandatory(layers, n, 700.0);
  if (l700 == nullptr) return kUndef;
  return ji - (l700->t - l700->td) * 0.5 + 3.0;
}

}  // extern "C"
