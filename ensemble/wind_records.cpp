// Wind statistics written as a wind record: a chosen speed and direction per point, turned
// back into u and v.

#include <cmath>
#include <cstdio>

#include <tervik/ensemble.h>
#include <tervik/sounding.h>

#include "ensemble/detail.h"
#include "ensemble/wind_detail.h"
#include "platform/numerics.h"

using tervik::detail::accumulation_block;
using tervik::detail::malloc_array;
using tervik::detail::wind_block;
using tervik::detail::wind_pairs;

namespace {

// The output arrays of a wind record; they hold speed and direction while the statistic
// runs and u and v once it is done.
struct wind_result {
  malloc_array<double> east;
  malloc_array<double> north;
};

bool open_wind_result(const char* fn, const std::vector<tervik_data4>& members,
                      const std::vector<int>& codes, int element, int level, wind_pairs& pairs,
                      wind_result& result) {
  if (!tervik::detail::open_wind_pairs(fn, members, codes, element, level, nullptr, pairs))
    return false;
  if (!result.east.allocate(pairs.points) || !result.north.allocate(pairs.points)) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return false;
  }
  return true;
}

// Converts the speed and direction held in `result` to u and v and gives them to `out`.
void finish(const char* fn, const char* label, const std::vector<tervik_data4>& members,
            int element, int level, const wind_pairs& pairs, wind_result& result,
            tervik_data11& out) {
  for (std::size_t k = 0; k < pairs.points; ++k) {
    const double speed = result.east[k];
    const double direction = result.north[k];
    result.east[k] = u(speed, direction);
    result.north[k] = v(speed, direction);
  }
  tervik::detail::report_wind_pairs(fn, element, level, pairs);
  tervik::detail::wind_record_header(out, members[pairs.header], level, label);
  out.set_gridPtrU(result.east.release());
  out.set_gridPtrV(result.north.release());
}

// Keeps, at every point, the speed and direction of the pair whose speed `better` prefers
// over the one held; the first pair starts, so the earlier pair wins a tie.
template <class Better>
void choose_pair(const wind_pairs& pairs, wind_result& result, Better better) {
  double speed[accumulation_block], direction[accumulation_block];
  for (std::size_t first = 0; first < pairs.points; first += accumulation_block) {
    const std::size_t left = pairs.points - first;
    const int len = left < accumulation_block ? static_cast<int>(left) : accumulation_block;
    double* best_speed = result.east.get() + first;
    double* best_direction = result.north.get() + first;
    for (int m = 0; m < pairs.count; ++m) {
      wind_block(pairs, m, first, len, speed, direction);
      for (int k = 0; k < len; ++k) {
        if (m == 0 || better(speed[k], best_speed[k])) {
          best_speed[k] = speed[k];
          best_direction[k] = direction[k];
        }
      }
    }
  }
}

int chosen_wind(const char* fn, const char* label, bool smallest,
                const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                int element, int level, tervik_data11& out) {
  wind_pairs pairs;
  wind_result result;
  if (!open_wind_result(fn, members, codes, element, level, pairs, result)) return -1;
  if (smallest)
    choose_pair(pairs, result, [](double s, double best) { return s < best; });
  else
    choose_pair(pairs, result, [](double s, double best) { return s > best; });
  finish(fn, label, members, element, level, pairs, result, out);
  return 0;
}

}  // namespace

// Directions are averaged as plain numbers of degrees, not as vectors: 350 and 10 give 180.
int compute_winddata_mean(const std::vector<tervik_data4>& members,
                          const std::vector<int>& codes, int element, int level, double,
                          tervik_data11& out) {
  const char* fn = "compute_winddata_mean";
  wind_pairs pairs;
  wind_result result;
  if (!open_wind_result(fn, members, codes, element, level, pairs, result)) return -1;
  const double n = pairs.count;
  double speed[accumulation_block], direction[accumulation_block];
  for (std::size_t first = 0; first < pairs.points; first += accumulation_block) {
    const std::size_t left = pairs.points - first;
    const int len = left < accumulation_block ? static_cast<int>(left) : accumulation_block;
    double* speed_sum = result.east.get() + first;
    double* direction_sum = result.north.get() + first;
    for (int k = 0; k < len; ++k) speed_sum[k] = direction_sum[k] = 0.0;
    for (int m = 0; m < pairs.count; ++m) {
      wind_block(pairs, m, first, len, speed, direction);
      for (int k = 0; k < len; ++k) {
        speed_sum[k] += speed[k];
        direction_sum[k] += direction[k];
      }
    }
    for (int k = 0; k < len; ++k) {
      speed_sum[k] /= n;
      direction_sum[k] /= n;
    }
  }
  finish(fn, "MeanWind", members, element, level, pairs, result, out);
  return 0;
}

int compute_winddata_min(const std::vector<tervik_data4>& members,
                         const std::vector<int>& codes, int element, int level, double,
                         tervik_data11& out) {
  return chosen_wind("compute_winddata_min", "MinWind", true, members, codes, element, level,
                     out);
}

int compute_winddata_max(const std::vector<tervik_data4>& members,
                         const std::vector<int>& codes, int element, int level, double,
                         tervik_data11& out) {
  return chosen_wind("compute_winddata_max", "MaxWind", false, members, codes, element, level,
                     out);
}

// The speeds are sorted on their own; the chosen speed then keeps the direction of its own
// pair, the earliest pair when several share that speed.
int compute_winddata_median(const std::vector<tervik_data4>& members,
                            const std::vector<int>& codes, int element, int level, double f,
                            tervik_data11& out) {
  const char* fn = "compute_winddata_median";
  wind_pairs pairs;
  wind_result result;
  if (!open_wind_result(fn, members, codes, element, level, pairs, result)) return -1;
  const int n = pairs.count;
  const int block = tervik::detail::gather_block(n);
  const std::size_t held = static_cast<std::size_t>(block) * static_cast<std::size_t>(n);
  malloc_array<double> speeds, directions, sorted, speed, direction;
  if (!speeds.allocate(held) || !directions.allocate(held) || !sorted.allocate(n) ||
      !speed.allocate(block) || !direction.allocate(block)) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  const int at = tervik::detail::rank_index(n, f);
  for (std::size_t first = 0; first < pairs.points; first += block) {
    const std::size_t left = pairs.points - first;
    const int len = left < static_cast<std::size_t>(block) ? static_cast<int>(left) : block;
    for (int m = 0; m < n; ++m) {
      wind_block(pairs, m, first, len, speed.get(), direction.get());
      for (int k = 0; k < len; ++k) {
        speeds[static_cast<std::size_t>(k) * n + m] = speed[k];
        directions[static_cast<std::size_t>(k) * n + m] = direction[k];
      }
    }
    for (int k = 0; k < len; ++k) {
      const double* s = speeds.get() + static_cast<std::size_t>(k) * n;
      for (int m = 0; m < n; ++m) sorted[m] = s[m];
      do_quick_sort(sorted.get(), 0, n - 1);
      const double chosen = sorted[at];
      int own = 0;
      while (own < n - 1 && !(s[own] == chosen || (std::isnan(s[own]) && std::isnan(chosen))))
        ++own;
      result.east[first + k] = chosen;
      result.north[first + k] = directions[static_cast<std::size_t>(k) * n + own];
    }
  }
  finish(fn, "MedianWind", members, element, level, pairs, result, out);
  return 0;
}
