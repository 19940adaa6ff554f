#ifndef TERVIK_SOUNDING_PROFILE_DETAIL_H
#define TERVIK_SOUNDING_PROFILE_DETAIL_H

// The walk shared by every profile lookup, and the temperature interpolation in ln p that
// the level searches call at every step.
//
// Every search has the same shape: take the first counting level, walk upward through the
// counting levels keeping the previous one, and stop at the first level that is at or
// beyond the target and whose coordinate differs from the previous level's (so that the
// interpolation never divides by zero). A level passed over becomes the previous level,
// even when its coordinate equals the previous one. Running off the end is a failure.
// All loops are bounded by n.

#include <cmath>

#include <tervik/sounding.h>

namespace tervik::detail {

// Index of the first level that `counts`, or -1 (also for n <= 0 or null layers).
template <typename Counts>
inline int first_level(const tag_tlogp_layer* layers, int n, Counts counts) {
  if (layers == nullptr) return -1;
  for (int i = 0; i < n; ++i)
    if (counts(layers[i])) return i;
  return -1;
}

inline bool is_valid(const tag_tlogp_layer& l) { return l.valid; }

inline int first_valid(const tag_tlogp_layer* layers, int n) {
  return first_level(layers, n, is_valid);
}

// From the first level i0, find the bracket [lo, hi] of the target: hi is the first
// counting level j > i0 with beyond(coord(j)) and coord(j) != coord(lo). With `far` the
// lower end stays i0; otherwise it is the previous counting level.
template <typename Counts, typename Coord, typename Beyond>
inline bool bracket(const tag_tlogp_layer* layers, int n, int i0, bool far, Counts counts,
                    Coord coord, Beyond beyond, int& lo, int& hi) {
  int prev = i0;
  for (int j = i0 + 1; j < n; ++j) {
    const tag_tlogp_layer& l = layers[j];
    if (!counts(l)) continue;
    if (beyond(coord(l)) && coord(l) != coord(layers[prev])) {
      lo = prev;
      hi = j;
      return true;
    }
    if (!far) prev = j;
  }
  return false;
}

// a + (b - a) (x - xa) / (xb - xa), evaluated in this order.
inline double lerp(double a, double b, double x, double xa, double xb) {
  return a + (b - a) * (x - xa) / (xb - xa);
}

// Temperature and dew point at p, linear in ln p: with `far` between the first valid level
// and the first level above p, otherwise between the two valid levels enclosing p.
inline bool t_at_p(const tag_tlogp_layer* layers, int n, double p, bool far, double& t,
                   double& td) {
  const int i0 = first_valid(layers, n);
  if (i0 < 0 || p > layers[i0].p || i0 == n - 1) return false;
  int lo, hi;
  if (!bracket(
          layers, n, i0, far, is_valid, [](const tag_tlogp_layer& l) { return l.p; },
          [p](double pj) { return p >= pj; }, lo, hi))
    return false;
  const double x = std::log(p), xa = std::log(layers[lo].p), xb = std::log(layers[hi].p);
  t = lerp(layers[lo].t, layers[hi].t, x, xa, xb);
  td = lerp(layers[lo].td, layers[hi].td, x, xa, xb);
  return true;
}

}  // namespace tervik::detail

#endif
