// Wind indices: bulk shear, the indices that combine it with CAPE or the lifted indices,
// storm-relative helicity and the 850-300 hPa wind difference.

#include <cmath>
#include <vector>

#include "sounding/indices_detail.h"

using tervik::sounding_index::kUndef;
using tervik::sounding_index::usable_profile;
using tervik::sounding_index::wind_east;
using tervik::sounding_index::wind_north;

namespace {

// A level takes part in height sampling only with a height and a wind.
bool samples_in_height(const tag_tlogp_layer& l) {
  return l.valid && l.z != kUndef && l.wind_dir != kUndef && l.wind_speed != kUndef;
}

// Density (up to a constant factor) of a sample: p / (R T), with R T formed as
// 287.217 t + 287.217 x 273.15.
double density(const layer_sample& s) { return s.p / (287.217 * s.t + 78453.32355); }

}  // namespace

extern "C" {

// The shear of the bulk Richardson number between two heights: the density-weighted mean
// wind of the layer minus the wind at its bottom. The mean is the trapezoidal rule in
// height over nodes at the layer's ends and at every level of the profile inside it, each
// sampled with interpolate_layer_at_z (so the profile's own levels are used exactly and
// the wind between them varies linearly, direction as a plain number).
double Shr(tag_tlogp_layer* layers, int n, double bottom, double top) {
  if (!usable_profile(layers, n)) return kUndef;
  int first = -1;
  for (int i = 0; i < n && first < 0; ++i) {
    if (samples_in_height(layers[i])) first = i;
  }
  if (first < 0 || !std::isfinite(bottom) || !std::isfinite(top)) return kUndef;
  // A bottom under the lowest level (for instance 0 at a station above sea level) means
  // the ground.
  if (bottom < layers[first].z) bottom = layers[first].z;
  if (!(top > bottom)) return kUndef;

  std::vector<double> nodes{bottom};
  for (int i = first; i < n; ++i) {
    if (samples_in_height(layers[i]) && layers[i].z > nodes.back() && layers[i].z < top) {
      nodes.push_back(layers[i].z);
    }
  }
  nodes.push_back(top);

  double sum_w = 0.0, sum_e = 0.0, sum_n = 0.0;
  double prev_w = 0.0, prev_e = 0.0, prev_n = 0.0, bottom_e = 0.0, bottom_n = 0.0;
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    const layer_sample s = interpolate_layer_at_z(layers, n, nodes[k]);
    if (!s.valid || s.t == kUndef) return kUndef;
    const double w = density(s);
    const double e = wind_east(s.wind_dir, s.wind_speed);
    const double nn = wind_north(s.wind_dir, s.wind_speed);
    if (k == 0) {
      bottom_e = e;
      bottom_n = nn;
    } else {
      const double dz = nodes[k] - nodes[k - 1];
      sum_w += 0.5 * (prev_w + w) * dz;
      sum_e += 0.5 * (prev_w * prev_e + w * e) * dz;
      sum_n += 0.5 * (prev_w * prev_n + w * nn) * dz;
    }
    prev_w = w;
    prev_e = e;
    prev_n = nn;
  }
  if (!(sum_w > 0.0)) return kUndef;
  return std::hypot(sum_e / sum_w - bottom_e, sum_n / sum_w - bottom_n);
}

double SSI(tag_tlogp_layer* layers, int n) {
  return tervik::sounding_index::ssi_from(Shr(layers, n, 0.0, 600.0), CAPE(layers, n));
}

double SWISS00(tag_tlogp_layer* layers, int n) {
  const double si = SI(layers, n);
  const double shear = Shr(layers, n, 300.0, 600.0);
  if (si == kUndef || shear == kUndef) return kUndef;
  const layer_sample s = interpolate_layer_at_p(layers, n, 600.0);
  if (!s.valid) return kUndef;
  return si + 0.4 * shear + 0.1 * (s.t - s.td);
}

double SWISS12(tag_tlogp_layer* layers, int n) {
  const double li = LI(layers, n);
  const double shear = Shr(layers, n, 0.0, 300.0);
  if (li == kUndef || shear == kUndef) return kUndef;
  const layer_sample s = interpolate_layer_at_p(layers, n, 650.0);
  if (!s.valid) return kUndef;
  return li + 0.3 * shear + 0.3 * (s.t - s.td);
}

double BRN(tag_tlogp_layer* layers, int n) {
  return tervik::sounding_index::brn_from(CAPE(layers, n), Shr(layers, n, 0.0, 600.0));
}

// Helicity of the lowest 300 height units relative to a storm moving at 0.75 of the
// 400-850 hPa mean wind, veered 40 degrees. The records' valid flags are not consulted:
// a record counts by its pressure, height and wind alone.
double SRH(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double mean_e = 0.0, mean_n = 0.0;
  int count = 0;
  for (int i = 0; i < n; ++i) {
    const tag_tlogp_layer& l = layers[i];
    if (l.p >= 400.0 && l.p <= 850.0 && l.wind_speed != kUndef) {
      mean_e += wind_east(l.wind_dir, l.wind_speed);
      mean_n += wind_north(l.wind_dir, l.wind_speed);
      ++count;
    }
  }
  if (count > 0) {
    mean_e /= count;
    mean_n /= count;
  }
  const double storm_speed = 0.75 * std::sqrt(mean_e * mean_e + mean_n * mean_n);
  const double storm_dir = 270.0 - std::atan2(mean_n, mean_e) * 57.29577951308232 + 40.0;
  const double ce = wind_east(storm_dir, storm_speed);
  const double cn = wind_north(storm_dir, storm_speed);

  int bottom = 0;
  while (bottom < n && layers[bottom].z == kUndef) ++bottom;
  // Without any height the layer has no bottom: the helicity is undefined.
  if (bottom == n) return kUndef;
  const double ztop = layers[bottom].z + 300.0;
  double pe = wind_east(layers[bottom].wind_dir, layers[bottom].wind_speed);
  double pn = wind_north(layers[bottom].wind_dir, layers[bottom].wind_speed);
  double sum = 0.0;
  for (int i = bottom + 1; i < n && layers[i].z <= ztop; ++i) {
    if (layers[i].wind_speed == kUndef) continue;
    const double e = wind_east(layers[i].wind_dir, layers[i].wind_speed);
    const double nn = wind_north(layers[i].wind_dir, layers[i].wind_speed);
    sum += (pn - cn) * (e - ce) - (pe - ce) * (nn - cn);
    pe = e;
    pn = nn;
  }
  const layer_sample s = interpolate_layer_at_z(layers, n, ztop);
  if (s.valid && s.wind_speed != kUndef) {
    const double e = wind_east(s.wind_dir, s.wind_speed);
    const double nn = wind_north(s.wind_dir, s.wind_speed);
    sum += (pn - cn) * (e - ce) - (pe - ce) * (nn - cn);
  }
  return sum;
}

double EHI(tag_tlogp_layer* layers, int n) {
  return tervik::sounding_index::ehi_from(CAPE(layers, n), SRH(layers, n));
}

// Squared length of the vector wind difference between 850 and 300 hPa. A reported level
// is used as it stands; an unreported one is sampled from the profile.
double TQG(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  double e[2], nn[2];
  const double levels[2] = {850.0, 300.0};
  for (int k = 0; k < 2; ++k) {
    double dd = 0.0, ff = 0.0;
    const int i = get_layer_p(layers, n, levels[k]);
    if (i >= 0) {
      dd = layers[i].wind_dir;
      ff = layers[i].wind_speed;
    } else {
      const layer_sample s = interpolate_layer_at_p(layers, n, levels[k]);
      if (s.wind_speed == kUndef || s.wind_dir == kUndef) return kUndef;
      dd = s.wind_dir;
      ff = s.wind_speed;
    }
    e[k] = wind_east(dd, ff);
    nn[k] = wind_north(dd, ff);
  }
  return (e[0] - e[1]) * (e[0] - e[1]) + (nn[0] - nn[1]) * (nn[0] - nn[1]);
}

}  // extern "C"
