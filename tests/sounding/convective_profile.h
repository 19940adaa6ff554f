#ifndef TERVIK_TESTS_SOUNDING_CONVECTIVE_PROFILE_H
#define TERVIK_TESTS_SOUNDING_CONVECTIVE_PROFILE_H

// Synthetic soundings for tests and benchmarks.

#include <algorithm>
#include <cmath>
#include <vector>

#include <tervik/sounding.h>

namespace tervik::test {

// One record; a missing wind is 9999.0.
inline tag_tlogp_layer make_level(double p, double z, double t, double td, double dir = 9999.0,
                                  double speed = 9999.0, bool valid = true) {
  return {valid, p, z, t, td, dir, speed};
}

// A warm-season convective sounding of 40 levels from 1000 to 100 hPa: a moist surface
// parcel (30 / 22 deg C), a weak capping inversion near 850 hPa, a conditionally unstable
// troposphere, an isothermal stratosphere (at `stratosphere_t`, -58 deg C above about
// 230 hPa by default), and winds veering from south-east to west with height. Heights
// follow the hypsometric equation.
inline std::vector<tag_tlogp_layer> convective_profile(double stratosphere_t = -58.0) {
  std::vector<tag_tlogp_layer> levels;
  double z = 110.0, prev_p = 0.0, prev_t = 0.0;
  for (int k = 0; k < 40; ++k) {
    const double p = 1000.0 - k * (900.0 / 39.0);
    double t = std::max(30.0 - 60.0 * std::log(1000.0 / p), stratosphere_t);
    if (p <= 880.0 && p >= 820.0) t += 3.0;  // the cap
    const double td = t - 8.0 - 20.0 * (1.0 - p / 1000.0);
    if (k > 0) z += 29.2898 * (0.5 * (t + prev_t) + 273.15) * std::log(prev_p / p);
    const double frac = (1000.0 - p) / 900.0;
    levels.push_back(make_level(p, z, t, td, 140.0 + 130.0 * frac, 5.0 + 30.0 * frac));
    prev_p = p;
    prev_t = t;
  }
  return levels;
}

}  // namespace tervik::test

#endif
