// Parcel-energy indices: the positive (CAPE) and negative (CIN) areas between the lifted
// ground parcel and the environment, the updraught speeds they imply, and the in-cloud
// maximum updraught with its hail-size estimate.
//
// The walks are deliberately brute force in fixed pressure steps (2 hPa for CAPE and Wm,
// 0.1 hPa for CIN), with a moist-adiabat bisection and a profile rescan at every step.
// Areas use the trapezoidal rule in ln p, and only pairs of consecutive steps that are
// both on the same side of the environment contribute: the first step of every run adds
// nothing, and the other sign is never subtracted.

#include <cmath>

#include "sounding/indices_detail.h"

using tervik::sounding_index::first_valid;
using tervik::sounding_index::kRdDensity;
using tervik::sounding_index::kRdEnergy;
using tervik::sounding_index::kUndef;
using tervik::sounding_index::usable_profile;

namespace {

// Temperature (deg C) at `p` on the dry adiabat through (p0, t0), in the form the
// walks use: potential temperature formed in deg C and brought back to Kelvin.
double dry_adiabat(double p0, double t0, double p) {
  const double theta_c = (t0 + 273.15) * std::pow(1000.0 / p0, 0.286) - 273.15;
  return (theta_c + 273.15) / std::pow(1000.0 / p, 0.286) - 273.15;
}

// Trapezoidal sum over runs of positive excess; the caller feeds the excess of each step
// from the bottom up.
struct RunArea {
  double sum = 0.0;
  double p_prev = 0.0;
  double d_prev = 0.0;
  bool latched = false;
  void add(double p, double d) {
    if (!(d > 0.0)) {
      latched = false;
      return;
    }
    if (latched) sum += (std::log(p_prev) - std::log(p)) * (d_prev + d) * 0.5;
    p_prev = p;
    d_prev = d;
    latched = true;
  }
};

}  // namespace

namespace tervik::sounding_index {

// CAPE and Wm walk the same 2 hPa lattice from the ground on the pseudo-adiabat through
// the LFC (also below the LFC) to the top of the atmosphere, so one walk serves both.
// CAPE sums the runs of positive excess. Wm takes the greatest excess on the lattice (a
// tie keeps the lower level) and the dry-adiabatic temperature through the LFC at that
// level: the updraught that the buoyancy between the LFC and that level can drive.
AscentEnergy ascent_from_lfc(tag_tlogp_layer* layers, int n, double p_lfc, double t_lfc) {
  AscentEnergy out;
  const double thse = theta_se_s(p_lfc, t_lfc);
  if (thse == kUndef) return out;
  const int i0 = first_valid(layers, n);
  double pc = i0 < 0 ? 0.0 : layers[i0].p;
  if (pc <= 0.0) {
    out.cape = 0.0;
    return out;
  }
  RunArea area;
  double dmax = 0.0, p_max = 0.0, tx = kUndef;
  while (pc > 0.0) {
    const double tp = t_wet_adiabat(pc, thse);
    double te = 0.0, tde = 0.0;
    if (interpolate_t_at_p_near(layers, n, pc, &te, &tde) && tp != kUndef) {
      const double d = tp - te;
      area.add(pc, d);
      if (d > 0.0 && d > dmax) {
        dmax = d;
        p_max = pc;
        tx = dry_adiabat(p_lfc, t_lfc, pc);
      }
    }
    pc -= 2.0;
  }
  out.cape = area.sum * kRdEnergy;
  if (tx != kUndef) {
    out.wm = std::sqrt(std::log(p_lfc / p_max) * (2.0 * (t_lfc - tx) / (t_lfc + 273.15)) *
                       kRdDensity * dmax);
  }
  return out;
}

// Dry adiabat of the ground parcel up to its LCL, pseudo-adiabat above, from the ground
// to the LFC.
double cin_from_levels(tag_tlogp_layer* layers, int n, double p_lcl, double t_lcl,
                       double p_lfc) {
  const int i0 = first_valid(layers, n);
  const double thse = theta_se_s(p_lcl, t_lcl);
  double pc = p_lfc;
  double theta_c = 0.0;
  if (i0 >= 0) {
    pc = layers[i0].p;
    theta_c = (layers[i0].t + 273.15) * std::pow(1000.0 / pc, 0.286) - 273.15;
  }
  RunArea area;
  while (p_lfc < pc) {
    double te = 0.0, tde = 0.0;
    const bool found = interpolate_t_at_p_near(layers, n, pc, &te, &tde);
    const double tp = pc >= p_lcl ? (theta_c + 273.15) / std::pow(1000.0 / pc, 0.286) - 273.15
                                  : t_wet_adiabat(pc, thse);
    if (found && tp != kUndef) area.add(pc, te - tp);
    pc -= 0.1;
  }
  return area.sum * kRdEnergy;
}

}  // namespace tervik::sounding_index

extern "C" {

double CAPE(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double p_lfc = 0.0, t_lfc = 0.0, td_lfc = 0.0;
  if (!LFC(layers, n, &p_lfc, &t_lfc, &td_lfc)) return kUndef;
  return tervik::sounding_index::ascent_from_lfc(layers, n, p_lfc, t_lfc).cape;
}

double w_cape(tag_tlogp_layer* layers, int n) {
  return tervik::sounding_index::twice_root(CAPE(layers, n));
}

double CIN(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double p_lcl = 0.0, t_lcl = 0.0;
  double p_lfc = 0.0, t_lfc = 0.0, td_lfc = 0.0;
  if (!LCL(layers, n, &p_lcl, &t_lcl)) return kUndef;
  if (!LFC(layers, n, &p_lfc, &t_lfc, &td_lfc)) return kUndef;
  return tervik::sounding_index::cin_from_levels(layers, n, p_lcl, t_lcl, p_lfc);
}

double w_cin(tag_tlogp_layer* layers, int n) {
  return tervik::sounding_index::twice_root(CIN(layers, n));
}

double Wm(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double p_lfc = 0.0, t_lfc = 0.0, td_lfc = 0.0;
  if (!LFC(layers, n, &p_lfc, &t_lfc, &td_lfc)) return kUndef;
  return tervik::sounding_index::ascent_from_lfc(layers, n, p_lfc, t_lfc).wm;
}

double Dm(tag_tlogp_layer* layers, int n) { return tervik::sounding_index::dm_from(Wm(layers, n)); }

}  // extern "C"
