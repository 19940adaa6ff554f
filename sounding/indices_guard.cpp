// The check every index makes before it walks a profile, and the level lookups they share.

#include <cmath>

#include "sounding/indices_detail.h"

namespace tervik::sounding_index {

bool usable_profile(const tag_tlogp_layer* layers, int n) {
  if (layers == nullptr || n < 1) return false;
  double below = 1100.0;
  for (int i = 0; i < n; ++i) {
    const tag_tlogp_layer& l = layers[i];
    if (!l.valid) continue;
    if (!std::isfinite(l.t) || !std::isfinite(l.td) || !std::isfinite(l.z) ||
        !std::isfinite(l.wind_dir) || !std::isfinite(l.wind_speed)) {
      return false;
    }
    // The negated test also rejects a NaN pressure.
    if (!(l.p > 0.0 && l.p <= below)) return false;
    below = l.p;
  }
  return true;
}

int first_valid(const tag_tlogp_layer* layers, int n) {
  for (int i = 0; i < n; ++i) {
    if (layers[i].valid) return i;
  }
  return -1;
}

const tag_tlogp_layer* mandatory(tag_tlogp_layer* layers, int n, double p) {
  const int i = get_layer_p(layers, n, p);
  return i < 0 ? nullptr : &layers[i];
}

}  // namespace tervik::sounding_index
