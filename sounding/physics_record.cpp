// The per-station physics record: every quantity of the index table for one profile, and
// the loop over the soundings of a record.
//
// The parcel walks (LFC, EL, CAPE, CIN, Wm) dominate the cost, and several indices share
// them. The record finds each characteristic level once and feeds the composites from
// the same cores the public index functions use, so every slot equals what the index
// function of its key returns, at a fraction of the cost.

#include <algorithm>
#include <climits>
#include <cmath>

#include <tervik/records.h>

#include "sounding/indices_detail.h"
#include "sounding/physics_detail.h"

using namespace tervik::sounding_index;

namespace {

// Slots of tag_physics_station::index, in the order of tervik_physics_table.
enum Slot {
  kA, kTc, kIQ, kTT, kLI, kSI, kK, kmK, kDCI, kSLW,
  kWd_C, kWd_D, kWd_L, kWd_P, kWd_S, kBLI, kBI, kBIC, kFaust, kIC,
  kICC, kILC, kJI, kTMJ, kTeffer, kChTT, kmKO, kShr, kLs, kw_cape,
  kw_cin, kWm, kMDPI, kVV, kSWEAT, kSSI, kSWISS00, kSWISS12, kTQG, kSRH,
  kDm, kBRN, kCAPE, kCIN, kGCAPE, kEHI, kWCAPE, kDc, kaa4, kaa8,
  kZH, kZm20H, kZm30H, kTCL_P, kTCL_T, kELC_P, kELC_T, kLFC_P, kLFC_T, kCCL_P,
  kCCL_T, kCCL_mod, kYDC_P, kYDC_T, kWd_EL, kLd_EL, kHd_020, kHd_204, kSlotCount
};
static_assert(kSlotCount == 68, "one slot per table entry");

tag_tlogp_layer level_record(double p, double t, double td, double z) {
  tag_tlogp_layer l;
  l.valid = true;
  l.p = p;
  l.t = t;
  l.td = td;
  l.z = z;
  return l;
}

// a - b, or 9999.0 when either is missing.
double depth(double a, double b) { return a == kUndef || b == kUndef ? kUndef : a - b; }

void fill_levels(tag_tlogp_layer* layers, int n, const CharacteristicLevels& lv,
                 tag_physics_station& r) {
  const int i0 = first_valid(layers, n);
  if (i0 >= 0) r.levels[0] = layers[i0];
  if (lv.lcl_ok) {
    r.levels[1] = level_record(lv.p_lcl, lv.t_lcl, lv.t_lcl, height_at_p(layers, n, lv.p_lcl));
  }
  if (lv.lfc_ok) {
    r.levels[2] = level_record(lv.p_lfc, lv.t_lfc, lv.td_lfc, height_at_p(layers, n, lv.p_lfc));
  }
  if (lv.el_ok) {
    r.levels[3] = level_record(lv.p_el, lv.t_el, lv.td_el, height_at_p(layers, n, lv.p_el));
  }
  if (lv.ccl_ok) {
    r.levels[4] = level_record(lv.p_ccl, lv.t_ccl, lv.t_ccl, height_at_p(layers, n, lv.p_ccl));
  }
  const double isotherms[3] = {0.0, -20.0, -30.0};
  for (int k = 0; k < 3; ++k) {
    const double p = interpolate_p_at_t(layers, n, isotherms[k]);
    const double z = interpolate_z_at_t(layers, n, isotherms[k]);
    if (p != kUndef) r.levels[5 + k] = level_record(p, isotherms[k], kUndef, z);
  }
}

}  // namespace

void compute_tlogp_physics(const tag_tlogp_station& sounding, tag_physics_station& r) {
  r.header[0] = sounding.station;
  if (sounding.layers.size() > static_cast<std::size_t>(INT_MAX)) return;
  // The index functions take a mutable pointer by their C interface; none writes.
  tag_tlogp_layer* layers = const_cast<tag_tlogp_layer*>(sounding.layers.data());
  const int n = static_cast<int>(sounding.layers.size());
  if (!usable_profile(layers, n)) return;
  double* x = r.index;

  const CharacteristicLevels lv = find_levels(layers, n);
  fill_levels(layers, n, lv, r);

  // Parcel energies from the levels found once.
  const AscentEnergy ascent =
      lv.lfc_ok ? ascent_from_lfc(layers, n, lv.p_lfc, lv.t_lfc) : AscentEnergy{};
  const double cape = ascent.cape;
  const double cin =
      lv.lcl_ok && lv.lfc_ok ? cin_from_levels(layers, n, lv.p_lcl, lv.t_lcl, lv.p_lfc) : kUndef;
  const double wm = ascent.wm;
  const double shear06 = Shr(layers, n, 0.0, 600.0);
  const double srh = SRH(layers, n);

  x[kA] = A(layers, n);
  x[kTc] = Tc(layers, n);
  x[kIQ] = IntQ(layers, n);
  x[kTT] = TT(layers, n);
  x[kLI] = LI(layers, n);
  x[kSI] = SI(layers, n);
  x[kK] = K(layers, n);
  x[kmK] = Kmod(layers, n);
  x[kDCI] = DCI(layers, n);
  x[kSLW] = SLW(layers, n);
  x[kWd_C] = total_energy_stability(layers, n);
  x[kWd_D] = sigma_D(layers, n);
  x[kWd_L] = sigma_L(layers, n);
  x[kWd_P] = moist_static_stability(layers, n);
  x[kWd_S] = sigma_S(layers, n);
  x[kBLI] = BLI(layers, n);
  x[kBI] = best_lifted_index(layers, n);
  x[kBIC] = best_convective_index(layers, n);
  x[kFaust] = Faust(layers, n);
  x[kIC] = Iconve(layers, n);
  x[kICC] = barber_index(layers, n);
  x[kILC] = Icondi_conve(layers, n);
  x[kJI] = JI(layers, n);
  x[kTMJ] = mJI(layers, n);
  x[kTeffer] = Teffer(layers, n);
  x[kChTT] = TTmod(layers, n);
  x[kmKO] = Kmod2(layers, n);
  x[kShr] = shear06;
  x[kLs] = lid_strength(layers, n);
  x[kw_cape] = twice_root(cape);
  x[kw_cin] = twice_root(cin);
  x[kWm] = wm;
  x[kMDPI] = MDPI(layers, n);
  x[kVV] = VV(layers, n);
  x[kSWEAT] = SWEAT(layers, n);
  x[kSSI] = ssi_from(shear06, cape);
  x[kSWISS00] = SWISS00(layers, n);
  x[kSWISS12] = SWISS12(layers, n);
  x[kTQG] = TQG(layers, n);
  x[kSRH] = srh;
  x[kDm] = dm_from(wm);
  x[kBRN] = brn_from(cape, shear06);
  x[kCAPE] = cape;
  x[kCIN] = cin;
  x[kEHI] = ehi_from(cape, srh);

  // The shape of the positive area between the LFC and the EL.
  const double z_lcl = lv.lcl_ok ? height_at_p(layers, n, lv.p_lcl) : kUndef;
  const double z_lfc = lv.lfc_ok ? height_at_p(layers, n, lv.p_lfc) : kUndef;
  const double z_el = lv.el_ok ? height_at_p(layers, n, lv.p_el) : kUndef;
  const double free_depth = depth(z_el, z_lfc);
  if (cape != kUndef && free_depth != kUndef && free_depth > 0.0) x[kGCAPE] = cape / free_depth;
  const BuoyantLayer bl = buoyant_layer(layers, n, lv);
  x[kWCAPE] = bl.net_energy;
  x[kDc] = depth(z_el, z_lcl);
  if (lv.lfc_ok && lv.el_ok) {
    x[kaa4] = lv.p_lfc - lv.p_el;
    x[kLd_EL] = std::log(lv.p_lfc / lv.p_el);
  }
  x[kaa8] = free_depth;
  x[kWd_EL] = bl.max_excess;

  x[kZH] = interpolate_z_at_t(layers, n, 0.0);
  x[kZm20H] = interpolate_z_at_t(layers, n, -20.0);
  x[kZm30H] = interpolate_z_at_t(layers, n, -30.0);
  if (lv.lcl_ok) {
    x[kTCL_P] = lv.p_lcl;
    x[kTCL_T] = lv.t_lcl;
  }
  if (lv.el_ok) {
    x[kELC_P] = lv.p_el;
    x[kELC_T] = lv.t_el;
  }
  if (lv.lfc_ok) {
    x[kLFC_P] = lv.p_lfc;
    x[kLFC_T] = lv.t_lfc;
  }
  if (lv.ccl_ok) {
    x[kCCL_P] = lv.p_ccl;
    x[kCCL_T] = lv.t_ccl;
  }
  x[kCCL_mod] = modified_ccl(layers, n);
  double p_top = 0.0, t_top = 0.0;
  if (cloud_top(layers, n, lv, &p_top, &t_top)) {
    x[kYDC_P] = p_top;
    x[kYDC_T] = t_top;
  }
  x[kHd_020] = Hd0_20(layers, n);
  x[kHd_204] = Hd20_40(layers, n);

  r.extra[0] = Shr(layers, n, 0.0, 300.0);
  r.extra[1] = Shr(layers, n, 300.0, 600.0);
  r.extra[2] = CT(layers, n, 2.0);
  r.extra[3] = precipitable_water(layers, n);
  const int i0 = first_valid(layers, n);
  r.extra[4] = i0 < 0 ? kUndef : theta_v(layers[i0].p, layers[i0].t);
  r.extra[5] = interpolate_z_at_t(layers, n, -40.0);
}

void create_tlogp_physics(const tag_tervik_data5& soundings,
                          std::vector<tag_physics_station>& out, int station) {
  out.clear();
  // The count and the sequence should agree; never index past the sequence.
  const std::size_t count = soundings.sounding_count < 0
                                ? 0
                                : std::min(static_cast<std::size_t>(soundings.sounding_count),
                                           soundings.soundings.size());
  out.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    tag_physics_station record;
    const tag_tlogp_station& s = soundings.soundings[i];
    if (station == 0 || station == s.station) compute_tlogp_physics(s, record);
    out.push_back(record);
  }
}
