#ifndef TERVIK_TOOLS_CONTOUR_LEVELS_H
#define TERVIK_TOOLS_CONTOUR_LEVELS_H

#include <cmath>
#include <vector>

#include <tervik/isoline.h>
#include <tervik/records.h>

namespace tervik::cli {

// Levels for contouring a grid: the interval given, else the record's suggested interval,
// else the round interval find_isoline_values proposes (about ten levels); from the first
// multiple of the interval at or above the smallest value to the largest value. Empty when
// the grid has no defined value.
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
    // The library's proposal: a round interval giving about ten levels.
    find_isoline_values(lo, hi, nullptr, &interval, nullptr);
    if (hi - lo < 1e-16) return {lo};
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
