// Indices from temperatures and dew points of the mandatory levels: the totals, K and A
// families, and the severe weather threat index that adds the 850 and 500 hPa winds.

#include <cmath>

#include "sounding/indices_detail.h"

using tervik::sounding_index::kRadPerDeg;
using tervik::sounding_index::kUndef;
using tervik::sounding_index::mandatory;
using tervik::sounding_index::usable_profile;

namespace {

struct Mandatory {
  const tag_tlogp_layer* l850 = nullptr;
  const tag_tlogp_layer* l700 = nullptr;
  const tag_tlogp_layer* l500 = nullptr;
};

Mandatory find_levels(tag_tlogp_layer* layers, int n) {
  Mandatory m;
  m.l850 = mandatory(layers, n, 850.0);
  m.l700 = mandatory(layers, n, 700.0);
  m.l500 = mandatory(layers, n, 500.0);
  return m;
}

}  // namespace

extern "C" {

double TT(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const Mandatory m = find_levels(layers, n);
  if (m.l850 == nullptr || m.l500 == nullptr) return kUndef;
  return m.l850->t + m.l850->td - 2.0 * m.l500->t;
}

// The low-level term is the mean t + td of the layer from the first record up to 850 hPa
// (one division of both sums by the count); invalid records in that layer are skipped.
double TTmod(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const int i850 = get_layer_p(layers, n, 850.0);
  const tag_tlogp_layer* l500 = mandatory(layers, n, 500.0);
  if (i850 < 0 || l500 == nullptr) return kUndef;
  double sum_t = 0.0, sum_td = 0.0;
  int count = 0;
  for (int i = 0; i <= i850; ++i) {
    if (!layers[i].valid) continue;
    sum_t += layers[i].t;
    sum_td += layers[i].td;
    ++count;
  }
  return (sum_t + sum_td) / count - 2.0 * l500->t;
}

double K(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const Mandatory m = find_levels(layers, n);
  if (m.l850 == nullptr || m.l700 == nullptr || m.l500 == nullptr) return kUndef;
  return (m.l850->t - m.l500->t) + m.l850->td - (m.l700->t - m.l700->td);
}

// K with the mean t and mean td (two divisions) of the records from the first up to
// 850 hPa; every record of that layer must be valid.
double Kmod(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const int i850 = get_layer_p(layers, n, 850.0);
  const Mandatory m = find_levels(layers, n);
  if (i850 < 0 || m.l700 == nullptr || m.l500 == nullptr) return kUndef;
  double sum_t = 0.0, sum_td = 0.0;
  for (int i = 0; i <= i850; ++i) {
    if (!layers[i].valid) return kUndef;
    sum_t += layers[i].t;
    sum_td += layers[i].td;
  }
  const double count = i850 + 1;
  return sum_t / count + sum_td / count - m.l500->t + (m.l700->td - m.l700->t);
}

// K with the mean of record 0 (which must itself be valid) and 850 hPa.
double Kmod2(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  if (!layers[0].valid) return kUndef;
  const Mandatory m = find_levels(layers, n);
  if (m.l850 == nullptr || m.l700 == nullptr || m.l500 == nullptr) return kUndef;
  const tag_tlogp_layer& g = layers[0];
  return 0.5 * (m.l850->td + g.td) + 0.5 * (m.l850->t + g.t) - m.l500->t +
         (m.l700->td - m.l700->t);
}

double A(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const Mandatory m = find_levels(layers, n);
  if (m.l850 == nullptr || m.l700 == nullptr || m.l500 == nullptr) return kUndef;
  return (m.l850->t - m.l500->t) -
         ((m.l850->t - m.l850->td) + (m.l700->t - m.l700->td) + (m.l500->t - m.l500->td));
}

// Low-level moisture, total totals above 49, the 850 and 500 hPa wind speeds in knots
// (1.944 kt per m/s), and a veering term for a south-westerly jet over a southerly
// low-level flow (both at least 15 kt = 7.72 m/s). The veering term can be negative.
double SWEAT(tag_tlogp_layer* layers, int n) {
  if (!usable_profile(layers, n)) return kUndef;
  const Mandatory m = find_levels(layers, n);
  if (m.l850 == nullptr || m.l500 == nullptr) return kUndef;
  const double ff850 = m.l850->wind_speed, dd850 = m.l850->wind_dir;
  const double ff500 = m.l500->wind_speed, dd500 = m.l500->wind_dir;
  if (ff850 == kUndef || dd850 == kUndef || ff500 == kUndef || dd500 == kUndef) return kUndef;
  double s = 0.0;
  if (m.l850->td > 0.0) s += 12.0 * m.l850->td;
  const double tt = m.l850->t + m.l850->td - 2.0 * m.l500->t;
  if (tt - 49.0 >= 0.0) s += 20.0 * (tt - 49.0);
  s += (2.0 * ff850 + ff500) * 1.944;
  if (dd850 >= 130.0 && dd850 <= 250.0 && dd500 >= 210.0 && dd500 <= 310.0 && dd500 > dd850 &&
      ff850 >= 7.72 && ff500 >= 7.72) {
    s += 125.0 * (std::sin((dd500 - dd850) * kRadPerDeg) + 0.2);
  }
  return s;
}

}  // extern "C"
