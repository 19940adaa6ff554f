#include <algorithm>
#include <cmath>

#include "platform/numerics.h"

void do_quick_sort(double* values, int lo, int hi) {
  if (!values || lo < 0 || lo >= hi) return;
  double* first = values + lo;
  double* last = values + hi + 1;
  // NaN breaks the ordering a sort relies on; set them apart first.
  double* numbers_end = std::partition(first, last, [](double v) { return !std::isnan(v); });
  std::sort(first, numbers_end);
}
