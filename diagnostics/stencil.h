#ifndef TERVIK_DIAGNOSTICS_STENCIL_H
#define TERVIK_DIAGNOSTICS_STENCIL_H

// Grid spacing and finite-difference stencils shared by the diagnostic fields.

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tervik::detail {

constexpr double kUndefined = 9999.0;
constexpr double kDegToRad = 0.017453292519943;  // truncated pi/180, used everywhere alike
constexpr double kEarthRadius = 6371110.0;       // m
constexpr double kMetresPerDegree = 111196.84650673404;  // kEarthRadius * kDegToRad
constexpr double kPlaneStep = 90000.0;           // m per grid step on a non-geographic grid
constexpr double kTwoOmega = 0.0001458423;       // 1/s

inline bool empty_grid(int nx, int ny) { return nx < 1 || ny < 1; }
inline std::size_t grid_points(int nx, int ny) {
  return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
}

// Smallest and largest value written. Two independent tests, so the first value sets both
// ends and NaN never enters.
struct Range {
  double lo = DBL_MAX;
  double hi = -DBL_MAX;
  void add(double value) {
    if (value < lo) lo = value;
    if (value > hi) hi = value;
  }
  void store(double* min, double* max) const {
    *min = lo;
    *max = hi;
  }
};

inline void reset_range(double* min, double* max) { Range().store(min, max); }

// Opening checks of a point-wise field: 1 when out, min or max is null (nothing written);
// otherwise the range is initialised and the result is 0 for an empty grid (nothing more
// to do) or -1 to go on.
inline int open_field(const double* out, double* min, double* max, int nx, int ny) {
  if (!out || !min || !max) return 1;
  reset_range(min, max);
  return empty_grid(nx, ny) ? 0 : -1;
}

// A malloc()ed buffer of doubles, freed on scope exit; null when the memory is not there
// (or the size in bytes would not even fit a size_t).
class Buffer {
 public:
  explicit Buffer(std::size_t count)
      : data_(count > SIZE_MAX / sizeof(double)
                  ? nullptr
                  : static_cast<double*>(std::malloc((count ? count : 1) * sizeof(double)))) {}
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() { std::free(data_); }
  double* get() const { return data_; }
  explicit operator bool() const { return data_ != nullptr; }

 private:
  double* data_;
};

// Grid spacing in metres. On a regular latitude-longitude grid every point of a row has
// the same spacing, so one value per row is kept (dx[j], dy[j] for row j), which is what
// any per-point spacing array would hold.
//
// Geographic: dx = |dlon| * deg2rad * R * cos(lat * deg2rad) with lat accumulated row by
// row from lat0 by repeated addition of dlat; dy = |dlat| * metres per degree. A row within
// one degree of a pole (|lat| > 89) has a vanishing cosine; the first and the last row
// take the dx of their inner neighbour there (the last row's latitude is the accumulated
// value minus dlat). A grid of a single row has no neighbour and keeps its own dx.
// Plane (not geographic): dx = dlon * 90 km and dy = dlat * 90 km, signs kept, no pole rule.
void compute_grid_spacing(double* dx, double* dy, int ny, double lat0, double dlat,
                          double dlon, bool geographic);

// The spacing rows of one grid, in malloc()ed work buffers; ok() is false when they could
// not be allocated.
class RowSpacing {
 public:
  RowSpacing(int ny, double lat0, double dlat, double dlon, bool geographic)
      : dx_(static_cast<std::size_t>(ny)), dy_(static_cast<std::size_t>(ny)) {
    if (ok()) compute_grid_spacing(dx_.get(), dy_.get(), ny, lat0, dlat, dlon, geographic);
  }
  bool ok() const { return dx_ && dy_; }
  const double* dx() const { return dx_.get(); }
  const double* dy() const { return dy_.get(); }

 private:
  Buffer dx_;
  Buffer dy_;
};

// The two interior forms of a centred difference. Vorticity (also advection) divides by
// twice the point's own spacing; divergence (also the undefined-aware gradients) by the sum
// of the two neighbours' spacings. On these grids the two agree, but they are different
// formulas and each field keeps its own.
enum class Stencil { vorticity, divergence };

// Where a difference at one point reads and what it divides by: d = (f[plus] - f[minus]) / den.
struct Difference {
  std::size_t plus, minus;
  double den;
};

// y-difference of row j (north minus south, row j-1 minus row j+1) for the point at
// column 0 of the row; add i to both indices for column i. One-sided on the first and the
// last row. With a single row the missing neighbour is the row itself.
inline Difference y_difference(Stencil stencil, int j, int nx, int ny, const double* dy) {
  const std::size_t row = static_cast<std::size_t>(j) * static_cast<std::size_t>(nx);
  const std::size_t step = static_cast<std::size_t>(nx);
  if (j == 0) return {row, ny > 1 ? row + step : row, dy[j]};
  if (j == ny - 1) return {row - step, row, dy[j]};
  const double den = stencil == Stencil::vorticity ? 2 * dy[j] : dy[j - 1] + dy[j + 1];
  return {row - step, row + step, den};
}

// Calls point(k, x, y) for every point k of the grid, with the x- and y-differences that
// the stencil takes there, row by row, and row_done(first, count) after each row (so that
// a row's results can be ranged while they are still in cache). Each row's interior is a
// plain loop over columns that the compiler can vectorise.
// Column 0 takes the forward difference f[k+1] - f[k]; with nx = 1 that is the next row's
// point, and on the very last point of the grid (no next row) the point itself.
template <class Point, class RowDone>
void sweep(Stencil stencil, int nx, int ny, const double* dx, const double* dy, Point point,
           RowDone row_done) {
  const std::size_t n = grid_points(nx, ny);
  const std::size_t width = static_cast<std::size_t>(nx);
  for (int j = 0; j < ny; ++j) {
    const Difference ydiff = y_difference(stencil, j, nx, ny, dy);
    const std::size_t row = static_cast<std::size_t>(j) * width;
    const double dxj = dx[j];
    const double interior_den = stencil == Stencil::vorticity ? 2 * dxj : dxj + dxj;

    point(row, Difference{row + 1 < n ? row + 1 : row, row, dxj}, ydiff);
    for (std::size_t i = 1; i + 1 < width; ++i) {
      const std::size_t k = row + i;
      point(k, Difference{k + 1, k - 1, interior_den},
            Difference{ydiff.plus + i, ydiff.minus + i, ydiff.den});
    }
    if (width > 1) {
      const std::size_t i = width - 1;
      point(row + i, Difference{row + i, row + i - 1, dxj},
            Difference{ydiff.plus + i, ydiff.minus + i, ydiff.den});
    }
    row_done(row, width);
  }
}

template <class Point>
void sweep(Stencil stencil, int nx, int ny, const double* dx, const double* dy, Point point) {
  sweep(stencil, nx, ny, dx, dy, point, [](std::size_t, std::size_t) {});
}

// Adds count values to the range, with the result of adding them one by one.
inline void add_to_range(Range& range, const double* values, std::size_t count) {
#if defined(__SSE2__)
  // Eight lanes at a time (four accumulators, so that the compare latency overlaps):
  // minpd(x, lo) is exactly "x < lo ? x : lo" (NaN keeps lo), and maxpd likewise. Values
  // that compare equal are the same number except for the sign of zero, so the lanes can
  // disagree with a one-by-one pass only when the extreme is a zero reached with both
  // signs; such a row is redone one by one.
  if (count >= 16) {
    const Range before = range;
    __m128d lo[4], hi[4];
    for (int a = 0; a < 4; ++a) {
      lo[a] = _mm_set1_pd(range.lo);
      hi[a] = _mm_set1_pd(range.hi);
    }
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
      for (int a = 0; a < 4; ++a) {
        const __m128d x = _mm_loadu_pd(values + i + 2 * a);
        lo[a] = _mm_min_pd(x, lo[a]);
        hi[a] = _mm_max_pd(x, hi[a]);
      }
    }
    double l[8], h[8];
    for (int a = 0; a < 4; ++a) {
      _mm_storeu_pd(l + 2 * a, lo[a]);
      _mm_storeu_pd(h + 2 * a, hi[a]);
    }
    Range lanes;
    lanes.lo = l[0];
    lanes.hi = h[0];
    for (int a = 1; a < 8; ++a) {
      if (l[a] < lanes.lo) lanes.lo = l[a];
      if (h[a] > lanes.hi) lanes.hi = h[a];
    }
    bool ambiguous = false;
    for (int a = 0; a < 8; ++a) {
      ambiguous |= l[a] == lanes.lo && std::signbit(l[a]) != std::signbit(lanes.lo);
      ambiguous |= h[a] == lanes.hi && std::signbit(h[a]) != std::signbit(lanes.hi);
    }
    if (!ambiguous) {
      range = lanes;
      for (; i < count; ++i) range.add(values[i]);
      return;
    }
    range = before;
  }
#endif
  for (std::size_t i = 0; i < count; ++i) range.add(values[i]);
}

// The difference quotient of f.
inline double difference(const double* f, const Difference& d) {
  return (f[d.plus] - f[d.minus]) / d.den;
}

// The undefined-aware form: 9999.0 when either value read is 9999.0.
inline double gradient(const double* f, const Difference& d) {
  const double a = f[d.plus];
  const double b = f[d.minus];
  if (a == kUndefined || b == kUndefined) return kUndefined;
  return (a - b) / d.den;
}

// Undefined-aware gradients of a whole grid (divergence stencil), x with the spacing rows
// dx, y with the spacing rows dy (either may be any per-row spacing).
void gradient_x(double* out, const double* f, int nx, int ny, const double* dx);
void gradient_y(double* out, const double* f, int nx, int ny, const double* dy);

}  // namespace tervik::detail

#endif
