#include <tervik/ensemble.h>
#include <tervik/isoline.h>

#include <cfloat>
#include <cstdio>

#include "ensemble/detail.h"

using tervik::detail::accumulation_block;
using tervik::detail::malloc_array;
using tervik::detail::member_source;
using tervik::detail::scalar_selection;
using tervik::detail::source_block;

namespace {

enum class moment { mean, variance, minimum, maximum };

// Runs `step(acc, sq, x, len)` for every member's block of values in sequence order, after
// `start(acc, sq, len)`, then `finish(acc, sq, len)`; acc is the block of the result, sq a
// second accumulator of the block. Members are taken in their order at every point, so sums
// come out the same as a member-by-member pass over whole grids.
template <class Start, class Step, class Finish>
bool for_each_block(const scalar_selection& sel, double* result, Start start, Step step,
                    Finish finish) {
  malloc_array<double> rh_block;
  if (sel.derive_rh && !rh_block.allocate(accumulation_block)) return false;
  double sq[accumulation_block];
  for (std::size_t first = 0; first < sel.points; first += accumulation_block) {
    const std::size_t left = sel.points - first;
    const int len = left < accumulation_block ? static_cast<int>(left) : accumulation_block;
    double* acc = result + first;
    start(acc, sq, len);
    for (int m = 0; m < sel.count; ++m)
      step(acc, sq, source_block(sel.sources[m], first, len, rh_block.get()), len);
    finish(acc, sq, len);
  }
  return true;
}

bool compute_moment(moment which, const scalar_selection& sel, double* result) {
  const double n = sel.count;
  switch (which) {
    case moment::mean:
      return for_each_block(
          sel, result,
          [](double* acc, double*, int len) {
            for (int k = 0; k < len; ++k) acc[k] = 0.0;
          },
          [](double* acc, double*, const double* x, int len) {
            for (int k = 0; k < len; ++k) acc[k] += x[k];
          },
          [n](double* acc, double*, int len) {
            for (int k = 0; k < len; ++k) acc[k] /= n;
          });
    case moment::variance:
      // Population variance from the two sums, divisor n.
      return for_each_block(
          sel, result,
          [](double* acc, double* sq, int len) {
            for (int k = 0; k < len; ++k) acc[k] = sq[k] = 0.0;
          },
          [](double* acc, double* sq, const double* x, int len) {
            for (int k = 0; k < len; ++k) {
              acc[k] += x[k];
              sq[k] += x[k] * x[k];
            }
          },
          [n](double* acc, double* sq, int len) {
            for (int k = 0; k < len; ++k) acc[k] = (sq[k] - acc[k] * acc[k] / n) / n;
          });
    case moment::minimum:
      return for_each_block(
          sel, result,
          [](double* acc, double*, int len) {
            for (int k = 0; k < len; ++k) acc[k] = DBL_MAX;
          },
          [](double* acc, double*, const double* x, int len) {
            for (int k = 0; k < len; ++k)
              if (x[k] < acc[k]) acc[k] = x[k];
          },
          [](double*, double*, int) {});
    case moment::maximum:
      return for_each_block(
          sel, result,
          [](double* acc, double*, int len) {
            for (int k = 0; k < len; ++k) acc[k] = -DBL_MAX;
          },
          [](double* acc, double*, const double* x, int len) {
            for (int k = 0; k < len; ++k)
              if (x[k] > acc[k]) acc[k] = x[k];
          },
          [](double*, double*, int) {});
  }
  return false;
}

int scalar_statistic(const char* fn, const char* prefix, moment which,
                     const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                     int element, int level, tervik_data4& out) {
  scalar_selection sel;
  if (!tervik::detail::select_scalar_members(fn, fn, members, codes, element, level, sel))
    return -1;
  malloc_array<double> result;
  if (!result.allocate(sel.points)) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  std::fprintf(stderr, "%s(): element=%d, level=%d, member_cnt=%d\n", fn, element, level,
               sel.count);
  if (!compute_moment(which, sel, result.get())) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }

  double lo = DBL_MAX, hi = -DBL_MAX;
  if (which == moment::variance) {
    for (std::size_t k = 0; k < sel.points; ++k) {
      if (result[k] < lo) lo = result[k];
      if (result[k] > hi) hi = result[k];
    }
  }
  char label[64];
  tervik::detail::statistic_label(label, prefix, element);
  tervik::detail::install_result(out, members[sel.header], level, label, result.release());

  if (which == moment::variance) {
    find_isoline_values(lo, hi, &out.contour_start, &out.contour_interval, &out.contour_end);
  } else if (sel.derive_rh) {
    // Relative humidity always spans 0 to 100 percent.
    out.contour_interval = 10;
    out.contour_end = 100;
    if (which == moment::mean) out.contour_start = 0;
  }
  return 0;
}

}  // namespace

int compute_griddata_mean(const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                          int element, int level, double, tervik_data4& out) {
  return scalar_statistic("compute_griddata_mean", "Mean", moment::mean, members, codes, element,
                          level, out);
}

int compute_griddata_var(const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                         int element, int level, double, tervik_data4& out) {
  return scalar_statistic("compute_griddata_var", "Var", moment::variance, members, codes, element,
                          level, out);
}

int compute_griddata_min(const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                         int element, int level, double, tervik_data4& out) {
  return scalar_statistic("compute_griddata_min", "Min", moment::minimum, members, codes, element,
                          level, out);
}

int compute_griddata_max(const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                         int element, int level, double, tervik_data4& out) {
  return scalar_statistic("compute_griddata_max", "Max", moment::maximum, members, codes, element,
                          level, out);
}
