// Wind components, speed and direction, and the water-vapour flux.

#include <tervik/sounding.h>

#include <cmath>

#include "sounding/thermo_detail.h"

using namespace tervik::detail;

namespace {
// Degrees to radians, truncated: callers compare components made with this very factor.
constexpr double kRadPerDeg = 0.017453292519943;
constexpr double kDegPerRad = 57.29577951308232;
}  // namespace

extern "C" {

// A wind from `dir` blows towards dir - 180.
double u(double speed, double dir) { return std::sin((dir - 180.0) * kRadPerDeg) * speed; }

double v(double speed, double dir) { return std::cos((dir - 180.0) * kRadPerDeg) * speed; }

// atan2(u, v) is the direction the air moves to, clockwise from north; adding 180 turns it
// into the direction it comes from. The result lies in [0, 360]: a northerly (u = 0,
// v < 0) gives 360, never 0, and calm gives 180. The loops run at most once for finite
// components (atan2 is bounded) and not at all for NaN.
double uv2magdir(double u, double v, double* speed, double* dir) {
  const double s = std::sqrt(u * u + v * v);
  if (speed != nullptr) *speed = s;
  double d = std::atan2(u, v) * kDegPerRad + 180.0;
  while (d < 0.0) d += 360.0;
  while (d > 360.0) d -= 360.0;
  if (dir != nullptr) *dir = d;
  return s;
}

double wvflux(double u, double v, double p, double t, double rh) {
  return std::sqrt(u * u + v * v) * (q(p, t) * rh / 100.0) / kG;
}

}  // extern "C"
