// Runs every profile function and the parcel primitives on small soundings built from the
// input bytes: the first byte chooses the record count (including zero), each level takes
// seven bytes (validity, then p, z, t, td, wind direction and speed from a palette that
// includes missing, zero, negative, NaN, infinite and huge values), and the remaining
// bytes give the lookup targets. The array has exactly n records, so a read outside it is
// reported by the address sanitizer; a walk that never ends shows as a timeout.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <tervik/sounding.h>

namespace {

double special(uint8_t b) {
  switch (b % 8) {
    case 0: return 0.0;
    case 1: return 9999.0;
    case 2: return std::numeric_limits<double>::quiet_NaN();
    case 3: return std::numeric_limits<double>::infinity();
    case 4: return -std::numeric_limits<double>::infinity();
    case 5: return 1e300;
    case 6: return -1e300;
    default: return 1e-300;
  }
}

// Ordinary values most of the time, so that walks get past their first tests.
double pressure(uint8_t b) { return b < 224 ? 1100.0 - b * 5.0 : special(b); }
double height(uint8_t b) { return b < 224 ? b * 80.0 - 100.0 : special(b); }
double temperature(uint8_t b) { return b < 224 ? 40.0 - b * 0.5 : special(b); }
double direction(uint8_t b) { return b < 224 ? b * 1.7 : special(b); }
double speed(uint8_t b) { return b < 224 ? b * 0.3 : special(b); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const int n = data[0] % 12;
  ++data;
  --size;
  if (size < static_cast<size_t>(7 * n)) return 0;
  std::vector<tag_tlogp_layer> layers(n);
  for (auto& l : layers) {
    l.valid = data[0] & 1;
    l.p = pressure(data[1]);
    l.z = height(data[2]);
    l.t = temperature(data[3]);
    l.td = temperature(data[4]);
    l.wind_dir = direction(data[5]);
    l.wind_speed = speed(data[6]);
    data += 7;
    size -= 7;
  }
  const double tp = size > 0 ? pressure(data[0]) : 850.0;
  const double tz = size > 1 ? height(data[1]) : 1500.0;
  const double tt = size > 2 ? temperature(data[2]) : 0.0;
  tag_tlogp_layer* L = n > 0 ? layers.data() : nullptr;

  double a = 0, b = 0, c = 0;
  volatile double sink = 0;
  sink = get_layer_p(L, n, tp) + get_layer_n(L, n, size > 3 ? data[3] - 128 : 0);
  sink = interpolate_t_at_p_far(L, n, tp, &a, &b) + interpolate_t_at_p_near(L, n, tp, &a, &b);
  sink = interpolate_z_at_t(L, n, tt) + interpolate_p_at_t(L, n, tt) + interpolate_p_at_z(L, n, tz);
  sink = interpolate_layer_at_p(L, n, tp).t + interpolate_layer_at_z(L, n, tz).p;
  sink = LCL(L, n, &a, &b) + CCL(L, n, &a, &b) + Tc(L, n);
  sink = LFC(L, n, &a, &b, &c) + EL(L, n, &a, &b, &c);
  sink = z_t0(L, n) + p_tm20(L, n);
  if (n > 0) {
    const tag_tlogp_layer& g = layers[0];
    sink = pt_LCL(g.p, g.t, g.td, &a, &b) + t_lift2p(g.p, g.t, g.td, tp);
    sink = theta_se(g.p, g.t, g.td) + t_iso_humidity(tp, g.z) + uv2magdir(g.t, g.td, &a, &b);
  }
  (void)sink;
  return 0;
}
