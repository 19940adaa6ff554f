#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/numerics.h"

namespace {

// One pass of the symmetric kernel over `count` values spaced `stride` apart, reading a copy
// so that every output sees the unsmoothed input.
void smooth_line(double* first, int count, long stride, const double* w, int r, double* scratch) {
  for (int k = 0; k < count; ++k) scratch[k] = first[k * stride];
  for (int k = 0; k < count; ++k) {
    double sum = w[0] * scratch[k];
    double used = w[0];
    for (int d = 1; d <= r; ++d) {
      if (k - d >= 0) {
        sum += w[d] * scratch[k - d];
        used += w[d];
      }
      if (k + d < count) {
        sum += w[d] * scratch[k + d];
        used += w[d];
      }
    }
    first[k * stride] = used != 0.0 ? sum / used : scratch[k];
  }
}

}  // namespace

int convolve(double* grid, const double* weights, int half_width, int rows, int columns,
             int row_from, int row_to, int column_from, int column_to) {
  if (!grid || !weights || half_width < 0 || rows <= 0 || columns <= 0) return 1;
  row_from = std::max(row_from, 0);
  column_from = std::max(column_from, 0);
  row_to = std::min(row_to, rows);
  column_to = std::min(column_to, columns);
  if (row_from >= row_to || column_from >= column_to) return 0;

  double total = weights[0];
  for (int d = 1; d <= half_width; ++d) total += 2.0 * weights[d];
  if (total == 0.0) return 1;

  const int width = column_to - column_from;
  const int height = row_to - row_from;
  std::vector<double> scratch;
  try {
    scratch.resize(static_cast<size_t>(std::max(width, height)));
  } catch (...) {
    return 1;
  }
  for (int j = row_from; j < row_to; ++j)
    smooth_line(grid + static_cast<long>(j) * columns + column_from, width, 1, weights, half_width,
                scratch.data());
  for (int i = column_from; i < column_to; ++i)
    smooth_line(grid + static_cast<long>(row_from) * columns + i, height, columns, weights,
                half_width, scratch.data());
  return 0;
}
