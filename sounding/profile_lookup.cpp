// Lookups and interpolations along one station's profile.

#include <tervik/sounding.h>

#include "sounding/profile_detail.h"
#include "sounding/thermo_detail.h"

using namespace tervik::detail;

namespace {

double level_p(const tag_tlogp_layer& l) { return l.p; }
double level_z(const tag_tlogp_layer& l) { return l.z; }
double level_t(const tag_tlogp_layer& l) { return l.t; }

bool has_height(const tag_tlogp_layer& l) { return l.valid && l.z != kUndef; }

// A level that can take part in a full sample: its height and wind are present too
// (t and td are not checked).
bool is_complete(const tag_tlogp_layer& l) {
  return l.valid && l.z != kUndef && l.wind_dir != kUndef && l.wind_speed != kUndef;
}

layer_sample failed_sample() {
  return layer_sample{false, kUndef, kUndef, kUndef, kUndef, kUndef, kUndef};
}

// The first crossing of temperature t from below, linear in temperature; the chosen field
// (height or pressure) is interpolated. The target must not be warmer than the first level.
template <typename Field>
double value_at_t(const tag_tlogp_layer* layers, int n, double t, Field field) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0 || t > layers[i0].t) return kUndef;
  int lo, hi;
  if (!bracket(layers, n, i0, false, is_valid, level_t, [t](double tj) { return t >= tj; }, lo,
               hi))
    return kUndef;
  return lerp(field(layers[lo]), field(layers[hi]), t, layers[lo].t, layers[hi].t);
}

}  // namespace

extern "C" {

int get_layer_p(tag_tlogp_layer* layers, int n, double p) {
  return first_level(layers, n, [p](const tag_tlogp_layer& l) { return l.valid && l.p == p; });
}

// A negative index is rejected like one past the end rather than read before the array.
int get_layer_n(tag_tlogp_layer* layers, int n, int i) {
  if (layers == nullptr || i < 0 || i >= n || !layers[i].valid) return -1;
  return i;
}

bool interpolate_t_at_p_far(tag_tlogp_layer* layers, int n, double p, double* t, double* td) {
  if (t == nullptr || td == nullptr) return false;
  return t_at_p(layers, n, p, true, *t, *td);
}

bool interpolate_t_at_p_near(tag_tlogp_layer* layers, int n, double p, double* t, double* td) {
  if (t == nullptr || td == nullptr) return false;
  return t_at_p(layers, n, p, false, *t, *td);
}

double interpolate_z_at_t(tag_tlogp_layer* layers, int n, double t) {
  return value_at_t(layers, n, t, level_z);
}

double interpolate_p_at_t(tag_tlogp_layer* layers, int n, double t) {
  return value_at_t(layers, n, t, level_p);
}

double interpolate_p_at_z(tag_tlogp_layer* layers, int n, double z) {
  const int i0 = first_level(layers, n, has_height);
  if (i0 < 0 || z < layers[i0].z) return kUndef;
  int lo, hi;
  if (!bracket(layers, n, i0, false, has_height, level_z, [z](double zj) { return z <= zj; },
               lo, hi))
    return kUndef;
  return lerp(layers[lo].p, layers[hi].p, z, layers[lo].z, layers[hi].z);
}

layer_sample interpolate_layer_at_p(tag_tlogp_layer* layers, int n, double p) {
  layer_sample s = failed_sample();
  const int i0 = first_level(layers, n, is_complete);
  if (i0 < 0 || !(p <= layers[i0].p)) return s;
  int lo, hi;
  if (!bracket(layers, n, i0, false, is_complete, level_p, [p](double pj) { return p >= pj; },
               lo, hi))
    return s;
  const tag_tlogp_layer &a = layers[lo], &b = layers[hi];
  s.valid = true;
  s.p = p;
  s.z = lerp(a.z, b.z, p, a.p, b.p);
  s.t = lerp(a.t, b.t, p, a.p, b.p);
  s.td = lerp(a.td, b.td, p, a.p, b.p);
  s.wind_dir = lerp(a.wind_dir, b.wind_dir, p, a.p, b.p);
  s.wind_speed = lerp(a.wind_speed, b.wind_speed, p, a.p, b.p);
  return s;
}

layer_sample interpolate_layer_at_z(tag_tlogp_layer* layers, int n, double z) {
  layer_sample s = failed_sample();
  const int i0 = first_level(layers, n, is_complete);
  if (i0 < 0 || !(z >= layers[i0].z)) return s;
  int lo, hi;
  if (!bracket(layers, n, i0, false, is_complete, level_z, [z](double zj) { return z <= zj; },
               lo, hi))
    return s;
  const tag_tlogp_layer &a = layers[lo], &b = layers[hi];
  s.valid = true;
  s.p = lerp(a.p, b.p, z, a.z, b.z);
  s.z = z;
  s.t = lerp(a.t, b.t, z, a.z, b.z);
  s.td = lerp(a.td, b.td, z, a.z, b.z);
  s.wind_dir = lerp(a.wind_dir, b.wind_dir, z, a.z, b.z);
  s.wind_speed = lerp(a.wind_speed, b.wind_speed, z, a.z, b.z);
  return s;
}

}  // extern "C"
