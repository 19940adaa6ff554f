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

// A warm-season sounding of 40 levels from 1000 to 100 hPa: a moist surface parcel
// (30 / 22 deg C), a weak cap near 850 hPa, a conditionally unstable troposphere, an
// isothermal stratosphere at `stratosphere_t` and winds veering from south-east to west.
// Heights follow the hypsometric equation.
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

// Dew point (deg C) of vapour pressure e (hPa), inverting the Magnus form over water
// (or over ice below 0 deg C) that the library uses.
inline double dew_point_of(double e) {
  const double l = std::log10(e / 6.112);
  const double td = 237.3 * l / (7.5 - l);
  return td >= 0.0 ? td : 265.5 * l / (9.5 - l);
}

// The analytic convective sounding of Weisman and Klemp (1982): theta 300 K at the ground
// rising as z^1.25 to 343 K at the 12 km tropopause (213 K), isothermal above; humidity
// 1 - 0.75 (z/12 km)^1.25, 25 % above, capped at `q_cap`; hydrostatic from 1000 hPa; levels
// every `dz` m up to `top` m; winds veering through a 10 m/s half circle in the lowest 6 km.
inline std::vector<tag_tlogp_layer> weisman_klemp(double dz = 400.0, double top = 16000.0,
                                                  double q_cap = 0.014) {
  const double g = 9.81, rd = 287.05, cp = 1004.0;
  const double theta0 = 300.0, theta_tr = 343.0, z_tr = 12000.0, t_tr = 213.0;
  auto theta_at = [&](double z) {
    return z <= z_tr ? theta0 + (theta_tr - theta0) * std::pow(z / z_tr, 1.25)
                     : theta_tr * std::exp(g * (z - z_tr) / (cp * t_tr));
  };
  auto rh_at = [&](double z) { return z <= z_tr ? 1.0 - 0.75 * std::pow(z / z_tr, 1.25) : 0.25; };
  std::vector<tag_tlogp_layer> out;
  double p = 1000.0;
  for (double z = 0.0; z <= top + 1e-9; z += dz) {
    if (z > 0.0) {
      // Midpoint hydrostatic step with the temperature of the layer's middle.
      const double zm = z - 0.5 * dz;
      const double tm = theta_at(zm) * std::pow(p / 1000.0, 0.286);
      const double pm = p * std::exp(-g * 0.5 * dz / (rd * tm));
      const double tmid = theta_at(zm) * std::pow(pm / 1000.0, 0.286);
      p = p * std::exp(-g * dz / (rd * tmid));
    }
    const double t = theta_at(z) * std::pow(p / 1000.0, 0.286) - 273.15;
    const double es = t >= 0.0 ? 6.112 * std::pow(10.0, 7.5 * t / (t + 237.3))
                               : 6.112 * std::pow(10.0, 9.5 * t / (t + 265.5));
    double e = rh_at(z) * es;
    const double qv = 0.622 * e / (p - 0.378 * e);
    if (qv > q_cap) e = q_cap * p / (0.622 + 0.378 * q_cap);
    const double td = std::min(t, dew_point_of(e));
    const double angle = 3.14159265358979 * std::min(z, 6000.0) / 6000.0;
    const double ue = 10.0 - 10.0 * std::cos(angle), vn = 10.0 * std::sin(angle);
    double dir = std::atan2(ue, vn) * 57.29577951308232 + 180.0;
    if (dir > 360.0) dir -= 360.0;
    // Pressure rounded to 0.01 hPa like an archived sounding.
    out.push_back(make_level(std::round(p * 100.0) / 100.0, z, t, td, dir, std::hypot(ue, vn)));
  }
  return out;
}

// Inserts a record at pressure `p` (a mandatory level), interpolated linearly in ln p
// between the records around it; a record already at `p` is left alone.
inline void insert_level(std::vector<tag_tlogp_layer>& levels, double p) {
  for (std::size_t i = 1; i < levels.size(); ++i) {
    const tag_tlogp_layer& a = levels[i - 1];
    const tag_tlogp_layer& b = levels[i];
    if (a.p == p || b.p == p) return;
    if (a.p > p && b.p < p) {
      const double w = std::log(p / a.p) / std::log(b.p / a.p);
      auto mix = [w](double x, double y) { return x + (y - x) * w; };
      tag_tlogp_layer l = make_level(p, mix(a.z, b.z), mix(a.t, b.t), mix(a.td, b.td),
                                     mix(a.wind_dir, b.wind_dir), mix(a.wind_speed, b.wind_speed));
      levels.insert(levels.begin() + static_cast<long>(i), l);
      return;
    }
  }
}

// The Weisman-Klemp sounding with the 850, 700, 500 and 300 hPa levels reported.
inline std::vector<tag_tlogp_layer> convective_sounding(double dz = 400.0) {
  std::vector<tag_tlogp_layer> levels = weisman_klemp(dz);
  for (double p : {850.0, 700.0, 500.0, 300.0}) insert_level(levels, p);
  return levels;
}

}  // namespace tervik::test

#endif
