#ifndef TERVIK_SOUNDING_PHYSICS_DETAIL_H
#define TERVIK_SOUNDING_PHYSICS_DETAIL_H

// The quantities of the physics record that no index function provides, computed from the
// characteristic levels that the record finds once. Each returns 9999.0 when undefined.
// docs/physics-indices.md lists the formulas.

#include <tervik/sounding.h>

namespace tervik::sounding_index {

// The characteristic levels of one profile; `*_ok` false when the level was not found.
struct CharacteristicLevels {
  bool lcl_ok = false, lfc_ok = false, el_ok = false, ccl_ok = false;
  double p_lcl = 9999.0, t_lcl = 9999.0;
  double p_lfc = 9999.0, t_lfc = 9999.0, td_lfc = 9999.0;
  double p_el = 9999.0, t_el = 9999.0, td_el = 9999.0;
  double p_ccl = 9999.0, t_ccl = 9999.0;
};

// Finds the LCL, LFC, EL and CCL with the profile functions.
CharacteristicLevels find_levels(tag_tlogp_layer* layers, int n);

// Height at `p`, linear in ln p between the valid records with a height that bracket it;
// 9999.0 below the lowest or above the highest of them.
double height_at_p(const tag_tlogp_layer* layers, int n, double p);

// Lifted indices of the parcels from every valid record of the lowest 300 hPa (below
// 500 hPa): the lowest of them.
double best_lifted_index(tag_tlogp_layer* layers, int n);
// theta_se at 500 hPa minus the highest theta_se of the lowest 300 hPa.
double best_convective_index(tag_tlogp_layer* layers, int n);
// Ground theta_se minus 500 hPa theta_se (positive when convectively unstable).
double barber_index(tag_tlogp_layer* layers, int n);
// Lid strength: the highest saturated theta_se of the lid (from 50 hPa above the ground
// to 500 hPa) minus the mean theta_se of the lowest 50 hPa.
double lid_strength(tag_tlogp_layer* layers, int n);
// Static-energy differences 500 minus 850 hPa of the mandatory levels, as temperatures:
// total energy (convective stability) and moist static energy (potential stability).
double total_energy_stability(tag_tlogp_layer* layers, int n);
double moist_static_stability(tag_tlogp_layer* layers, int n);
// CCL of the mean specific humidity of the lowest 50 hPa (pressure, hPa).
double modified_ccl(tag_tlogp_layer* layers, int n);
// Precipitable water (mm): the pressure integral of specific humidity over g.
double precipitable_water(const tag_tlogp_layer* layers, int n);

// The positive area between the LFC and the EL walked in 1 hPa steps on the
// pseudo-adiabat through the LFC: its greatest excess (deg C), its net energy (J/kg,
// negative pockets subtracted).
struct BuoyantLayer {
  double max_excess = 9999.0;
  double net_energy = 9999.0;
};
BuoyantLayer buoyant_layer(tag_tlogp_layer* layers, int n, const CharacteristicLevels& lv);

// Theoretical cloud top: walking up from the CCL in 1 hPa steps on the pseudo-adiabat
// through it, the first step after a buoyant run where the parcel is no longer warmer than
// the environment; writes that pressure and the environment temperature. False when the
// parcel is never buoyant or the profile ends first.
bool cloud_top(tag_tlogp_layer* layers, int n, const CharacteristicLevels& lv, double* p,
               double* t);

}  // namespace tervik::sounding_index

#endif
