// Feeds arbitrary profiles to every index and to the physics record: none may crash, read
// outside the profile or hang. Half the inputs are raw doubles (NaN, infinities, absurd
// pressures); the other half are scaled into plausible soundings so that the parcel walks
// are reached.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <tervik/sounding.h>

namespace {

constexpr std::size_t kRawLevel = 1 + 6 * sizeof(double);
constexpr std::size_t kScaledLevel = 7;

double scaled(uint8_t b, double lo, double hi) { return lo + (hi - lo) * b / 255.0; }

std::vector<tag_tlogp_layer> decode(const uint8_t* data, std::size_t size) {
  std::vector<tag_tlogp_layer> levels;
  if (size == 0) return levels;
  const bool raw = data[0] & 1;
  ++data;
  --size;
  if (raw) {
    for (; size >= kRawLevel && levels.size() < 64; data += kRawLevel, size -= kRawLevel) {
      tag_tlogp_layer l;
      l.valid = data[0] & 1;
      double v[6];
      std::memcpy(v, data + 1, sizeof(v));
      l.p = v[0];
      l.z = v[1];
      l.t = v[2];
      l.td = v[3];
      l.wind_dir = v[4];
      l.wind_speed = v[5];
      levels.push_back(l);
    }
    return levels;
  }
  double p = 1050.0, z = 0.0;
  for (; size >= kScaledLevel && levels.size() < 64; data += kScaledLevel, size -= kScaledLevel) {
    tag_tlogp_layer l;
    l.valid = data[0] != 0;
    p -= scaled(data[1], 0.0, 60.0);
    z += scaled(data[1], 0.0, 600.0);
    l.p = p;
    l.z = data[0] == 2 ? 9999.0 : z;
    l.t = scaled(data[2], -90.0, 45.0);
    l.td = l.t - scaled(data[3], 0.0, 40.0);
    l.wind_dir = data[4] == 255 ? 9999.0 : scaled(data[4], 0.0, 360.0);
    l.wind_speed = data[5] == 255 ? 9999.0 : scaled(data[5], 0.0, 60.0);
    if (data[6] == 0) l.t = 9999.0;  // a missing temperature that enters the arithmetic
    levels.push_back(l);
  }
  return levels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::vector<tag_tlogp_layer> levels = decode(data, size);
  // An exactly sized heap copy, so that any read past the last level is caught.
  tag_tlogp_station station{1, levels};
  tag_physics_station record;
  compute_tlogp_physics(station, record);
  tag_tlogp_layer* l = station.layers.data();
  const int n = static_cast<int>(station.layers.size());
  volatile double sink = BLI(l, n) + SLW(l, n) + Faust(l, n) + JI(l, n) + TQG(l, n) +
                         SRH(l, n) + Shr(l, n, 100.0, 3000.0) + CT(l, n, 3.0) + VV(l, n);
  (void)sink;
  return 0;
}
