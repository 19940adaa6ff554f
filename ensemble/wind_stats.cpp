// Wind statistics written as a scalar grid of the wind speed.

#include <cfloat>
#include <cstdio>

#include <tervik/ensemble.h>
#include <tervik/isoline.h>

#include "ensemble/detail.h"
#include "ensemble/wind_detail.h"
#include "platform/numerics.h"

using tervik::detail::accumulation_block;
using tervik::detail::malloc_array;
using tervik::detail::wind_block;
using tervik::detail::wind_pairs;

namespace {

enum class speed_stat { mean, variance, minimum, maximum };

void compute_speed_stat(speed_stat which, const wind_pairs& pairs, double* result) {
  const double n = pairs.count;
  double speed[accumulation_block], direction[accumulation_block], sq[accumulation_block];
  for (std::size_t first = 0; first < pairs.points; first += accumulation_block) {
    const std::size_t left = pairs.points - first;
    const int len = left < accumulation_block ? static_cast<int>(left) : accumulation_block;
    double* acc = result + first;
    const double start = which == speed_stat::minimum   ? DBL_MAX
                         : which == speed_stat::maximum ? -DBL_MAX
                                                        : 0.0;
    for (int k = 0; k < len; ++k) acc[k] = sq[k] = start;
    for (int m = 0; m < pairs.count; ++m) {
      wind_block(pairs, m, first, len, speed, direction);
      switch (which) {
        case speed_stat::mean:
          for (int k = 0; k < len; ++k) acc[k] += speed[k];
          break;
        case speed_stat::variance:
          for (int k = 0; k < len; ++k) {
            acc[k] += speed[k];
            sq[k] += speed[k] * speed[k];
          }
          break;
        case speed_stat::minimum:
          for (int k = 0; k < len; ++k)
            if (speed[k] < acc[k]) acc[k] = speed[k];
          break;
        case speed_stat::maximum:
          for (int k = 0; k < len; ++k)
            if (speed[k] > acc[k]) acc[k] = speed[k];
          break;
      }
    }
    if (which == speed_stat::mean)
      for (int k = 0; k < len; ++k) acc[k] /= n;
    else if (which == speed_stat::variance)
      for (int k = 0; k < len; ++k) acc[k] = (sq[k] - acc[k] * acc[k] / n) / n;
  }
}

int speed_statistic(const char* fn, const char* alloc_fn, const char* label, speed_stat which,
                    const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                    int element, int level, tervik_data4& out) {
  wind_pairs pairs;
  if (!tervik::detail::open_wind_pairs(fn, members, codes, element, level, &out, pairs))
    return -1;
  malloc_array<double> result;
  if (!result.allocate(pairs.points)) {
    std::fprintf(stderr, "%s(): memory allocation error\n", alloc_fn);
    return -1;
  }
  compute_speed_stat(which, pairs, result.get());
  tervik::detail::report_wind_pairs(fn, element, level, pairs);

  double lo = DBL_MAX, hi = -DBL_MAX;
  if (which == speed_stat::variance) {
    for (std::size_t k = 0; k < pairs.points; ++k) {
      if (result[k] < lo) lo = result[k];
      if (result[k] > hi) hi = result[k];
    }
  }
  tervik::detail::install_result(out, members[pairs.header], level, label, result.release());
  if (which == speed_stat::variance)
    find_isoline_values(lo, hi, &out.contour_start, &out.contour_interval, &out.contour_end);
  return 0;
}

}  // namespace

int compute_winddata_mean(const std::vector<tervik_data4>& members,
                          const std::vector<int>& codes, int element, int level, double,
                          tervik_data4& out) {
  return speed_statistic("compute_winddata_mean", "compute_winddata_mean", "MeanIsotachs",
                         speed_stat::mean, members, codes, element, level, out);
}

// The variance reports a failed allocation in the mean's words.
int compute_winddata_var(const std::vector<tervik_data4>& members,
                         const std::vector<int>& codes, int element, int level, double,
                         tervik_data4& out) {
  return speed_statistic("compute_winddata_var", "compute_winddata_mean", "VarIsotachs",
                         speed_stat::variance, members, codes, element, level, out);
}

int compute_winddata_min(const std::vector<tervik_data4>& members,
                         const std::vector<int>& codes, int element, int level, double,
                         tervik_data4& out) {
  return speed_statistic("compute_winddata_min", "compute_winddata_min", "MinIsotachs",
                         speed_stat::minimum, members, codes, element, level, out);
}

int compute_winddata_max(const std::vector<tervik_data4>& members,
                         const std::vector<int>& codes, int element, int level, double,
                         tervik_data4& out) {
  return speed_statistic("compute_winddata_max", "compute_winddata_max", "MaxIsotachs",
                         speed_stat::maximum, members, codes, element, level, out);
}

// The speed median keeps the title "MedianWind", the same as the wind-record median.
int compute_winddata_median(const std::vector<tervik_data4>& members,
                            const std::vector<int>& codes, int element, int level, double f,
                            tervik_data4& out) {
  const char* fn = "compute_winddata_median";
  wind_pairs pairs;
  if (!tervik::detail::open_wind_pairs(fn, members, codes, element, level, &out, pairs))
    return -1;
  const int n = pairs.count;
  const int block = tervik::detail::gather_block(n);
  malloc_array<double> result, gathered, speed, direction;
  if (!result.allocate(pairs.points) ||
      !gathered.allocate(static_cast<std::size_t>(block) * static_cast<std::size_t>(n)) ||
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
      for (int k = 0; k < len; ++k) gathered[static_cast<std::size_t>(k) * n + m] = speed[k];
    }
    for (int k = 0; k < len; ++k) {
      double* a = gathered.get() + static_cast<std::size_t>(k) * n;
      do_quick_sort(a, 0, n - 1);
      result[first + k] = a[at];
    }
  }
  tervik::detail::report_wind_pairs(fn, element, level, pairs);
  tervik::detail::install_result(out, members[pairs.header], level, "MedianWind",
                                 result.release());
  return 0;
}
