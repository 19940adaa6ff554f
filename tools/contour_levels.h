#ifndef TERVIK_TOOLS_CONTOUR_LEVELS_H
#define TERVIK_TOOLS_CONTOUR_LEVELS_H

#include <cmath>
#include <vector>

#include <tervik/records.h>

namespace tervik::cli {

// Levels for contouring a grid: the interval given, else the record's suggested interval,
// else about 12 levels of a round step; from the first multiple of the interval at or above
// the smallest value to the largest value. Empty when the grid has no defined value.
inline std::vector<double> contour_levels(const tervik_data4& grid, double interval) {
  const double* v = grid.data();
  double lo = INFINITY, hi = -INFINITY;
  const long n = static_cast<long>(grid.nx) * grid.ny;
  for (long k = 0; v && k < n; ++k) {
    if (v[k] == tervik_data4::undef || !std::isfinite(v[k])) continue;
    lo = std::fmin(lo, v[k]);
    hi = std::fmax(hi, v[k]);
  }
  if (!(lo <= hi)) return {};
  if (!(interval > 0)) interval = grid.contour_interval;
  if (!(interval > 0)) {
    const double raw = (hi - lo) / 12.0;
    if (raw <= 0) return {lo};
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double steps[] = {1, 2, 2.5, 5, 10};
    interval = mag * 10;
    for (double s : steps) {
      if (s * mag >= raw) {
        interval = s * mag;
        break;
      }
    }
  }
  std::vector<double> levels;
  const double first = std::ceil(lo / interval) * interval;
  for (int k = 0; k < 1000; ++k) {
    const double level = first + k * interval;
    if (level > hi) break;
    levels.push_back(level);
  }
  return levels;
}

}  // namespace tervik::cli

#endif
