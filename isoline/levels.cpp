// Contour settings for a range of values.

#include <cmath>

#include <tervik/isoline.h>

void find_isoline_values(double min, double max, double* start, double* interval, double* end) {
  double range = max - min;
  double step = 1, first = 0, last = 0;
  // Non-finite input would scale forever (an infinite range) or give NaN levels.
  if (range >= 1e-16 && std::isfinite(range)) {
    // Bring the range into [1, 10], remembering the power of ten.
    double factor = 1;
    while (range > 10) {
      range /= 10;
      factor *= 10;
    }
    while (range < 1) {
      range *= 10;
      factor /= 10;
    }
    step = factor * std::trunc(range + 0.5) * 0.1;
    first = std::trunc(std::floor((min + step) / step)) * step;
    last = std::trunc(std::floor(max / step)) * step;
  }
  if (start) *start = first;
  if (interval) *interval = step;
  if (end) *end = last;
}
