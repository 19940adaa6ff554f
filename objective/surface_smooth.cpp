// Least-squares surface smoothing: a moving polynomial fit (a two-dimensional
// Savitzky-Golay filter).

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"

namespace {

// Weights that give, from the values of the window [-left, right] x [-down, up] (row-major
// from the lower-left corner), the value at the window's origin of the least-squares
// polynomial of total degree `degree`. A window too narrow in one direction to determine the
// higher powers there uses only the powers it can (at most width - 1), which keeps the normal
// equations positive definite: the monomials x^p y^q with p < width and q < height are
// independent on a tensor grid.
std::vector<double> fit_weights(int left, int right, int down, int up, int degree) {
  const int width = left + right + 1;
  const int height = down + up + 1;
  std::vector<std::pair<int, int>> powers;
  for (int total = 0; total <= degree; ++total)
    for (int p = total; p >= 0; --p)
      if (p < width && total - p < height) powers.emplace_back(p, total - p);
  const int m = static_cast<int>(powers.size());

  std::vector<double> phi(static_cast<size_t>(width) * height * m);
  for (int b = -down, k = 0; b <= up; ++b)
    for (int a = -left; a <= right; ++a, ++k)
      for (int c = 0; c < m; ++c)
        phi[static_cast<size_t>(k) * m + c] =
            std::pow(a, powers[c].first) * std::pow(b, powers[c].second);

  // Normal equations M c = e0 (e0 picks the constant term, the value at the origin).
  std::vector<double> M(static_cast<size_t>(m) * (m + 1), 0.0);
  for (int k = 0; k < width * height; ++k)
    for (int r = 0; r < m; ++r)
      for (int c = 0; c < m; ++c)
        M[static_cast<size_t>(r) * (m + 1) + c] +=
            phi[static_cast<size_t>(k) * m + r] * phi[static_cast<size_t>(k) * m + c];
  M[m] = 1.0;
  for (int col = 0; col < m; ++col) {  // Gaussian elimination with partial pivoting
    int pivot = col;
    for (int r = col + 1; r < m; ++r)
      if (std::fabs(M[r * (m + 1) + col]) > std::fabs(M[pivot * (m + 1) + col])) pivot = r;
    for (int c = 0; c <= m; ++c) std::swap(M[col * (m + 1) + c], M[pivot * (m + 1) + c]);
    for (int r = 0; r < m; ++r) {
      if (r == col) continue;
      const double f = M[r * (m + 1) + col] / M[col * (m + 1) + col];
      for (int c = col; c <= m; ++c) M[r * (m + 1) + c] -= f * M[col * (m + 1) + c];
    }
  }
  std::vector<double> coef(m);
  for (int r = 0; r < m; ++r) coef[r] = M[r * (m + 1) + m] / M[r * (m + 1) + r];

  std::vector<double> w(static_cast<size_t>(width) * height);
  for (size_t k = 0; k < w.size(); ++k) {
    double sum = 0.0;
    for (int c = 0; c < m; ++c) sum += phi[k * m + c] * coef[c];
    w[k] = sum;
  }
  return w;
}

}  // namespace

void daBase::surfaceSmooth(double* grid, int nx, int ny, int levels, int mode) {
  if (!grid || nx <= 0 || ny <= 0 || levels <= 0) return;
  const int degree = mode >= 1 && mode <= 3 ? mode : 1;
  const int h = degree;  // half-width of the window: the smallest that fits the degree
  const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
  tervik::detail::MallocArray<double> source;
  if (!source.allocate(cells)) return;  // out of memory: left unsmoothed
  std::vector<std::vector<double>> kernels;
  try {
    // One kernel per way the window can be cut by the grid edges.
    const int n = h + 1;
    kernels.resize(static_cast<size_t>(n) * n * n * n);
    for (int l = 0; l <= h; ++l)
      for (int r = 0; r <= h; ++r)
        for (int d = 0; d <= h; ++d)
          for (int u = 0; u <= h; ++u)
            kernels[((l * n + r) * n + d) * n + u] = fit_weights(l, r, d, u, degree);
  } catch (const std::bad_alloc&) {
    return;
  }
  const int n = h + 1;
  for (int pass = 0; pass < levels; ++pass) {
    std::copy(grid, grid + cells, source.get());
    for (int j = 0; j < ny; ++j) {
      const int d = std::min(h, j);
      const int u = std::min(h, ny - 1 - j);
      for (int i = 0; i < nx; ++i) {
        const int l = std::min(h, i);
        const int r = std::min(h, nx - 1 - i);
        const std::vector<double>& w = kernels[((l * n + r) * n + d) * n + u];
        double sum = 0.0;
        size_t k = 0;
        for (int b = j - d; b <= j + u; ++b) {
          const double* row = source.get() + static_cast<size_t>(b) * nx;
          for (int a = i - l; a <= i + r; ++a) sum += w[k++] * row[a];
        }
        grid[static_cast<size_t>(j) * nx + i] = sum;
      }
    }
  }
}
