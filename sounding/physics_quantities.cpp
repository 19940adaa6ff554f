// The quantities of the physics record without an index function of their own: best
// lifted and convective indices over the low layers, the Barber and lid-strength indices,
// static-energy stabilities, the modified CCL, precipitable water, and the shape of the
// positive area between the LFC and the EL.

#include <algorithm>
#include <cmath>

#include "sounding/indices_detail.h"
#include "sounding/physics_detail.h"

namespace tervik::sounding_index {

CharacteristicLevels find_levels(tag_tlogp_layer* layers, int n) {
  CharacteristicLevels lv;
  lv.lcl_ok = LCL(layers, n, &lv.p_lcl, &lv.t_lcl);
  lv.lfc_ok = LFC(layers, n, &lv.p_lfc, &lv.t_lfc, &lv.td_lfc);
  // EL reports success even when no buoyant step was written: its outputs start at
  // 9999.0 and only a written pressure counts as found.
  if (lv.lfc_ok && EL(layers, n, &lv.p_el, &lv.t_el, &lv.td_el)) lv.el_ok = lv.p_el != kUndef;
  lv.ccl_ok = CCL(layers, n, &lv.p_ccl, &lv.t_ccl);
  return lv;
}

double height_at_p(const tag_tlogp_layer* layers, int n, double p) {
  int prev = -1;
  for (int i = 0; i < n; ++i) {
    const tag_tlogp_layer& l = layers[i];
    if (!l.valid || l.z == kUndef) continue;
    if (prev < 0) {
      if (!(p <= l.p)) return kUndef;
      if (p == l.p) return l.z;
    } else if (p >= l.p && l.p != layers[prev].p) {
      const tag_tlogp_layer& a = layers[prev];
      return a.z + (l.z - a.z) * std::log(p / a.p) / std::log(l.p / a.p);
    }
    prev = i;
  }
  return kUndef;
}

namespace {

// Calls f(record) for every valid record of the lowest 300 hPa that lies below 500 hPa.
template <typename F>
void for_low_layer(const tag_tlogp_layer* layers, int n, F f) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0) return;
  const double p_limit = layers[i0].p - 300.0;
  for (int i = i0; i < n; ++i) {
    const tag_tlogp_layer& l = layers[i];
    if (!l.valid) continue;
    if (l.p < p_limit || l.p <= 500.0) break;
    f(l);
  }
}

}  // namespace

double best_lifted_index(tag_tlogp_layer* layers, int n) {
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  double best = kUndef;
  for_low_layer(layers, n, [&](const tag_tlogp_layer& l) {
    const double v = l500->t - t_lift2p(l.p, l.t, l.td, 500.0);
    if (best == kUndef || v < best) best = v;
  });
  return best;
}

double best_convective_index(tag_tlogp_layer* layers, int n) {
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (l500 == nullptr) return kUndef;
  double highest = kUndef;
  for_low_layer(layers, n, [&](const tag_tlogp_layer& l) {
    const double th = theta_se(l.p, l.t, l.td);
    if (highest == kUndef || th > highest) highest = th;
  });
  if (highest == kUndef) return kUndef;
  return theta_se(l500->p, l500->t, l500->td) - highest;
}

double barber_index(tag_tlogp_layer* layers, int n) {
  const int i0 = first_valid(layers, n);
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (i0 < 0 || l500 == nullptr || !(layers[i0].p > 500.0)) return kUndef;
  const tag_tlogp_layer& g = layers[i0];
  return theta_se(g.p, g.t, g.td) - theta_se(l500->p, l500->t, l500->td);
}

double lid_strength(tag_tlogp_layer* layers, int n) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0) return kUndef;
  const double p_mixed = layers[i0].p - 50.0;
  double low_sum = 0.0, lid_max = kUndef;
  int low_count = 0;
  for (int i = i0; i < n; ++i) {
    const tag_tlogp_layer& l = layers[i];
    if (!l.valid) continue;
    if (l.p < 500.0) break;
    if (l.p >= p_mixed) {
      low_sum += theta_se(l.p, l.t, l.td);
      ++low_count;
    } else {
      const double th = theta_se_s(l.p, l.t);
      if (lid_max == kUndef || th > lid_max) lid_max = th;
    }
  }
  if (low_count == 0 || lid_max == kUndef) return kUndef;
  return lid_max - low_sum / low_count;
}

namespace {

// The mandatory level with a height and a wind speed, or null.
const tag_tlogp_layer* energy_level(tag_tlogp_layer* layers, int n, double p) {
  const tag_tlogp_layer* l = mandatory(layers, n, p);
  if (l == nullptr || l->z == kUndef || l->wind_speed == kUndef) return nullptr;
  return l;
}

}  // namespace

double total_energy_stability(tag_tlogp_layer* layers, int n) {
  const tag_tlogp_layer* a = energy_level(layers, n, 500.0);
  const tag_tlogp_layer* b = energy_level(layers, n, 850.0);
  if (a == nullptr || b == nullptr) return kUndef;
  return Tt(a->p, a->t, a->td, a->z, a->wind_speed) - Tt(b->p, b->t, b->td, b->z, b->wind_speed);
}

double moist_static_stability(tag_tlogp_layer* layers, int n) {
  const tag_tlogp_layer* a = mandatory(layers, n, 500.0);
  const tag_tlogp_layer* b = mandatory(layers, n, 850.0);
  if (a == nullptr || b == nullptr || a->z == kUndef || b->z == kUndef) return kUndef;
  return Tsigma(a->p, a->t, a->td, a->z) - Tsigma(b->p, b->t, b->td, b->z);
}

// The same search as the CCL (1 hPa steps, giving up at 10 hPa), for the mean specific
// humidity of the valid records of the lowest 50 hPa instead of the ground's alone.
double modified_ccl(tag_tlogp_layer* layers, int n) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0) return kUndef;
  const double p0 = layers[i0].p;
  double q_sum = 0.0;
  int count = 0;
  for (int i = i0; i < n; ++i) {
    if (!layers[i].valid) continue;
    if (layers[i].p < p0 - 50.0) break;
    q_sum += q(layers[i].p, layers[i].td);
    ++count;
  }
  const double q_mean = q_sum / count;
  for (double pc = p0; pc > 10.0; pc -= 1.0) {
    double te = 0.0, tde = 0.0;
    if (!interpolate_t_at_p_near(layers, n, pc, &te, &tde)) return kUndef;
    if (te <= t_iso_humidity(pc, q_mean)) return pc;
  }
  return kUndef;
}

double precipitable_water(const tag_tlogp_layer* layers, int n) {
  int prev = first_valid(layers, n);
  if (prev < 0) return kUndef;
  double sum = 0.0;
  for (int j = prev + 1; j < n; ++j) {
    if (!layers[j].valid) continue;
    sum += 0.5 * (q(layers[prev].p, layers[prev].td) + q(layers[j].p, layers[j].td)) *
           (layers[prev].p - layers[j].p);
    prev = j;
  }
  // hPa -> Pa (x100), divided by g, kg/m2 of water = mm.
  return sum * 100.0 / 9.81;
}

BuoyantLayer buoyant_layer(tag_tlogp_layer* layers, int n, const CharacteristicLevels& lv) {
  BuoyantLayer out;
  if (!lv.lfc_ok || !lv.el_ok || !(lv.p_el < lv.p_lfc)) return out;
  const double thse = theta_se_s(lv.p_lfc, lv.t_lfc);
  double max_excess = 0.0, sum = 0.0, p_prev = 0.0, d_prev = 0.0;
  bool started = false;
  for (double pc = lv.p_lfc; pc >= lv.p_el; pc -= 1.0) {
    double te = 0.0, tde = 0.0;
    if (!interpolate_t_at_p_near(layers, n, pc, &te, &tde)) continue;
    const double d = t_wet_adiabat(pc, thse) - te;
    max_excess = std::max(max_excess, d);
    if (started) sum += (std::log(p_prev) - std::log(pc)) * (d_prev + d) * 0.5;
    p_prev = pc;
    d_prev = d;
    started = true;
  }
  if (!started) return out;
  out.max_excess = max_excess;
  out.net_energy = sum * kRdEnergy;
  return out;
}

bool cloud_top(tag_tlogp_layer* layers, int n, const CharacteristicLevels& lv, double* p,
               double* t) {
  if (!lv.ccl_ok) return false;
  const double thse = theta_se_s(lv.p_ccl, lv.t_ccl);
  // Right at the CCL parcel and environment agree to within the moist adiabat's 0.1 K
  // lattice, so the top is the end of the first buoyant run, not the first cool step.
  bool buoyant = false;
  for (double pc = lv.p_ccl - 1.0; pc > 10.0; pc -= 1.0) {
    double te = 0.0, tde = 0.0;
    if (!interpolate_t_at_p_near(layers, n, pc, &te, &tde)) return false;
    const bool warmer = t_wet_adiabat(pc, thse) > te;
    if (buoyant && !warmer) {
      *p = pc;
      *t = te;
      return true;
    }
    buoyant = buoyant || warmer;
  }
  return false;
}

}  // namespace tervik::sounding_index
