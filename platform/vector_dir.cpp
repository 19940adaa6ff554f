#include <cmath>

#include "platform/numerics.h"

double vector_dir(double x1, double y1, double x2, double y2) {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  if (dx == 0.0 && dy == 0.0) return 0.0;
  double deg = std::atan2(dy, dx) * (180.0 / M_PI);
  if (deg < 0.0) deg += 360.0;
  if (deg >= 360.0) deg -= 360.0;
  return deg;
}
