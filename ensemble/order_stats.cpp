#include <cfloat>
#include <climits>
#include <cstdio>

#include <tervik/ensemble.h>
#include <tervik/isoline.h>

#include "ensemble/detail.h"
#include "platform/numerics.h"

using tervik::detail::malloc_array;
using tervik::detail::scalar_selection;
using tervik::detail::source_block;

namespace {

// Where a percentile lies among n sorted values: a[lower] + (a[upper] - a[lower]) * weight.
// The rank n * p is truncated to k and the value interpolated between ranks k - 1 and k;
// both are clamped to the values, so p below 1/n gives the smallest and p = 1 the largest
// value instead of reading past either end.
struct percentile_rank {
  int lower;
  int upper;
  double weight;
};

percentile_rank rank_of_percentile(int n, double p) {
  double rank = n * p;
  if (!(rank >= 0)) rank = 0;  // negative or NaN
  if (rank > n) rank = n;
  const int k = static_cast<int>(rank);
  percentile_rank r{k - 1, k, rank - k};
  if (r.lower < 0) r.lower = 0;
  if (r.upper > n - 1) r.upper = n - 1;
  if (r.lower > r.upper) r.lower = r.upper;
  return r;
}

// (int)(p * 100) for the label, computed in double as it is (0.29 * 100 is just below 29,
// so p = 0.29 reads 28); values beyond the range of int are held at its ends and NaN reads 0,
// since converting those to int is undefined.
int percent_of(double p) {
  const double percent = p * 100;
  if (percent != percent) return 0;
  if (percent >= static_cast<double>(INT_MAX)) return INT_MAX;
  if (percent <= static_cast<double>(INT_MIN)) return INT_MIN;
  return static_cast<int>(percent);
}

// Sorts every point's values and writes pick(sorted values) into result. Only one block of
// points' values is held at a time.
template <class Pick>
bool for_each_sorted_point(const scalar_selection& sel, double* result, Pick pick) {
  const int n = sel.count;
  const int block = tervik::detail::gather_block(n);
  malloc_array<double> gathered, rh_block;
  if (!gathered.allocate(static_cast<std::size_t>(block) * static_cast<std::size_t>(n)))
    return false;
  if (sel.derive_rh && !rh_block.allocate(static_cast<std::size_t>(block))) return false;
  for (std::size_t first = 0; first < sel.points; first += block) {
    const std::size_t left = sel.points - first;
    const int len = left < static_cast<std::size_t>(block) ? static_cast<int>(left) : block;
    for (int m = 0; m < n; ++m) {
      const double* x = source_block(sel.sources[m], first, len, rh_block.get());
      for (int k = 0; k < len; ++k) gathered[static_cast<std::size_t>(k) * n + m] = x[k];
    }
    for (int k = 0; k < len; ++k) {
      double* a = gathered.get() + static_cast<std::size_t>(k) * n;
      do_quick_sort(a, 0, n - 1);
      result[first + k] = pick(a);
    }
  }
  return true;
}

bool prepare(const char* fn, const char* not_found_fn, const std::vector<tervik_data4>& members,
             const std::vector<int>& codes, int element, int level, scalar_selection& sel,
             malloc_array<double>& result) {
  if (!tervik::detail::select_scalar_members(fn, not_found_fn, members, codes, element, level,
                                             sel))
    return false;
  if (!result.allocate(sel.points)) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return false;
  }
  std::fprintf(stderr, "%s(): element=%d, level=%d, member_cnt=%d\n", fn, element, level,
               sel.count);
  return true;
}

}  // namespace

int compute_griddata_median(const std::vector<tervik_data4>& members,
                            const std::vector<int>& codes, int element, int level, double f,
                            tervik_data4& out) {
  const char* fn = "compute_griddata_median";
  scalar_selection sel;
  malloc_array<double> result;
  if (!prepare(fn, fn, members, codes, element, level, sel, result)) return -1;
  const int at = tervik::detail::rank_index(sel.count, f);
  if (!for_each_sorted_point(sel, result.get(), [at](const double* a) { return a[at]; })) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  char label[64];
  tervik::detail::statistic_label(label, "Median", element);
  tervik::detail::install_result(out, members[sel.header], level, label, result.release());
  if (sel.derive_rh) {
    out.contour_interval = 10;
    out.contour_end = 100;
  }
  return 0;
}

int compute_griddata_percentile(const std::vector<tervik_data4>& members,
                                const std::vector<int>& codes, int element, int level,
                                double p, tervik_data4& out) {
  const char* fn = "compute_griddata_percentile";
  scalar_selection sel;
  malloc_array<double> result;
  // The percentile reports a missing element under the median's name.
  if (!prepare(fn, "compute_griddata_median", members, codes, element, level, sel, result))
    return -1;
  const percentile_rank r = rank_of_percentile(sel.count, p);
  double lo = DBL_MAX, hi = -DBL_MAX;
  const bool done = for_each_sorted_point(sel, result.get(), [&](const double* a) {
    const double value =
        r.lower == r.upper ? a[r.lower] : a[r.lower] + (a[r.upper] - a[r.lower]) * r.weight;
    if (value < lo) lo = value;
    if (value > hi) hi = value;
    return value;
  });
  if (!done) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  char label[64];
  std::snprintf(label, sizeof label, "%s%d%%Percentile", ensemble_element_name(element),
                percent_of(p));
  tervik::detail::install_result(out, members[sel.header], level, label, result.release());
  find_isoline_values(lo, hi, &out.contour_start, &out.contour_interval, &out.contour_end);
  return 0;
}
