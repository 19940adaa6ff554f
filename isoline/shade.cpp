// The filled-contour tracer: orders the levels, walks the rings of every band (see
// shade_rings.cpp), tidies and optionally smooths each ring and hands it to the builder.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include <tervik/isoline.h>

#include "isoline/contour_detail.h"
#include "isoline/shade_rings.h"

namespace {

using tervik::detail::edge_border;
using tervik::detail::edge_lower;
using tervik::detail::shade_ring;

// Turns walked rings (grid units) into builder calls (map units).
class ring_emitter {
 public:
  ring_emitter(contourBuilder* builder, int nx, int ny, double x0, double y0, double dx,
               double dy, bool spline)
      : builder_(builder), nx_(nx), ny_(ny), x0_(x0), y0_(y0), dx_(dx), dy_(dy),
        spline_(spline),
        // the contour tracer's spline step
        step_(std::min(std::fabs(dx), std::fabs(dy)) > 0.1 ? 0.25 : 0.1) {}
  ring_emitter(const ring_emitter&) = delete;
  ring_emitter& operator=(const ring_emitter&) = delete;
  ~ring_emitter() { std::free(spline_out_); }

  void emit(const shade_ring& ring, double level, int colour);

 private:
  void tidy(const shade_ring& ring);
  void smooth();
  void smooth_run(size_t from, size_t to, bool reverse);

  void spline_run();

  contourBuilder* builder_;
  int nx_, ny_;
  double x0_, y0_, dx_, dy_;
  bool spline_;
  double step_;
  // The ring being emitted as a cycle without its closing point: x, y and how each point
  // was reached (edge_[0]: by the step that closes the ring).
  std::vector<double> x_, y_;
  std::vector<uint8_t> edge_;
  std::vector<double> run_, smoothed_, closed_, map_;
  double* spline_out_ = nullptr;  // the contour tracer's spline buffer
  size_t spline_capacity_ = 0;
};

// Smooths run_ into smoothed_ with the contour tracer's spline; a run it leaves as it is
// (too short) is copied.
void ring_emitter::spline_run() {
  const size_t used = tervik::detail::spline_line(run_.data(), run_.size() / 2, step_, nx_, ny_,
                                                  spline_out_, spline_capacity_);
  if (used == 0) {
    smoothed_ = run_;
  } else {
    smoothed_.assign(spline_out_, spline_out_ + used);
  }
}

// Drops the repeated point at the end of a chord of no length (a crossing that falls on a
// grid point), keeping the first of the pair so that the two bands along a piece of a level
// keep the same points. A border step of no length stays: it separates two pieces of level
// that are smoothed apart, as they are in the band on their other side.
void ring_emitter::tidy(const shade_ring& ring) {
  x_.clear();
  y_.clear();
  edge_.clear();
  const size_t n = ring.xy.size() / 2;
  if (n < 2) return;
  for (size_t k = 0; k + 1 < n; ++k) {
    const double x = ring.xy[2 * k], y = ring.xy[2 * k + 1];
    if (!x_.empty() && ring.edge[k] != edge_border && x == x_.back() && y == y_.back())
      continue;
    x_.push_back(x);
    y_.push_back(y);
    edge_.push_back(ring.edge[k]);
  }
  uint8_t closing = ring.edge[n - 1];
  while (x_.size() > 1 && closing != edge_border && x_.back() == x_.front() &&
         y_.back() == y_.front()) {
    closing = edge_.back();
    x_.pop_back();
    y_.pop_back();
    edge_.pop_back();
  }
  if (!edge_.empty()) edge_[0] = closing;
}

// Smooths the points run_ (x, y pairs) into smoothed_, as an open or closed line. A piece
// of a level is smoothed in the direction in which the band above the level walks it, so
// that the band below, walking it backwards, gets exactly the same curve.
void ring_emitter::smooth_run(size_t from, size_t to, bool reverse) {
  run_.clear();
  for (size_t k = from; k <= to; ++k) {
    const size_t i = k % x_.size();
    run_.push_back(x_[i]);
    run_.push_back(y_[i]);
  }
  const int n = static_cast<int>(run_.size() / 2);
  if (reverse) {
    for (int a = 0, b = n - 1; a < b; ++a, --b) {
      std::swap(run_[2 * a], run_[2 * b]);
      std::swap(run_[2 * a + 1], run_[2 * b + 1]);
    }
  }
  spline_run();
  if (reverse) {
    const size_t m = smoothed_.size() / 2;
    for (size_t a = 0, b = m - 1; a < b; ++a, --b) {
      std::swap(smoothed_[2 * a], smoothed_[2 * b]);
      std::swap(smoothed_[2 * a + 1], smoothed_[2 * b + 1]);
    }
  }
}

// Replaces the ring by its smoothed form in closed_ (closed, x, y pairs). Pieces along the
// border stay straight.
void ring_emitter::smooth() {
  const size_t n = x_.size();
  closed_.clear();
  size_t start = n;
  for (size_t k = 0; k < n; ++k) {
    if (edge_[k] == edge_border) {
      start = k;
      break;
    }
  }
  if (start == n) {
    // A closed line of one level. The band below walks it backwards from the same first
    // point, so reverse all but the first point to get the common direction.
    const bool reverse = edge_[0] != edge_lower;
    run_.clear();
    for (size_t k = 0; k <= n; ++k) {
      const size_t i = reverse ? (n - k) % n : k % n;
      run_.push_back(x_[i]);
      run_.push_back(y_[i]);
    }
    spline_run();
    const size_t m = smoothed_.size() / 2;
    for (size_t k = 0; k < m; ++k) {
      const size_t i = reverse ? (m - 1 - k) : k;
      closed_.push_back(smoothed_[2 * i]);
      closed_.push_back(smoothed_[2 * i + 1]);
    }
    return;
  }
  // Start at a point reached along the border and go once round.
  closed_.push_back(x_[start]);
  closed_.push_back(y_[start]);
  size_t k = start;
  while (k < start + n) {
    const size_t next = (k + 1) % n;
    if (edge_[next] == edge_border) {
      closed_.push_back(x_[next]);
      closed_.push_back(y_[next]);
      ++k;
      continue;
    }
    // A run of chords ends before the next border step; the start is reached by one, so a
    // run never wraps past it.
    size_t end = k + 1;
    while (edge_[(end + 1) % n] != edge_border) ++end;
    smooth_run(k, end, edge_[next] != edge_lower);
    closed_.insert(closed_.end(), smoothed_.begin() + 2, smoothed_.end());
    k = end;
  }
}

// Twice the signed area of the closed ring xy (x, y pairs), taken about its first point.
double twice_area(const std::vector<double>& xy) {
  const size_t n = xy.size() / 2;
  double sum = 0;
  for (size_t k = 1; k + 1 < n; ++k)
    sum += (xy[2 * k] - xy[0]) * (xy[2 * k + 3] - xy[1]) -
           (xy[2 * k + 2] - xy[0]) * (xy[2 * k + 1] - xy[1]);
  return sum;
}

void ring_emitter::emit(const shade_ring& ring, double level, int colour) {
  tidy(ring);
  const size_t n = x_.size();
  if (n < 2) return;
  if (spline_) {
    // Even a ring that encloses nothing is smoothed and kept: the band beside it bends the
    // same pieces of level, and only together do the two still tile the grid.
    smooth();
  } else {
    closed_.clear();
    for (size_t k = 0; k <= n; ++k) {
      closed_.push_back(x_[k % n]);
      closed_.push_back(y_[k % n]);
    }
  }
  // Repeated points left for the smoothing go now.
  size_t kept = 1;
  for (size_t k = 1; k < closed_.size() / 2; ++k) {
    if (closed_[2 * k] == closed_[2 * kept - 2] && closed_[2 * k + 1] == closed_[2 * kept - 1])
      continue;
    closed_[2 * kept] = closed_[2 * k];
    closed_[2 * kept + 1] = closed_[2 * k + 1];
    ++kept;
  }
  closed_.resize(2 * kept);
  // Map coordinates, in the contour tracer's conversion so that bands meet the lines point
  // for point; a mirrored map (dx and dy of opposite signs) turns the ring round so that
  // outer rings stay counter-clockwise.
  const bool mirror = (dx_ < 0) != (dy_ < 0);
  const size_t m = closed_.size() / 2;
  map_.resize(closed_.size());
  for (size_t k = 0; k < m; ++k) {
    const size_t i = mirror ? m - 1 - k : k;
    map_[2 * k] = (closed_[2 * i] - 1.0) * dx_ + x0_;
    map_[2 * k + 1] = (closed_[2 * i + 1] - 1.0) * dy_ + y0_;
  }
  // Orientation, as delivered, tells outer rings from holes.
  const double area = twice_area(map_);
  if (area == 0 || std::isnan(area)) return;  // the band pinched to a line or a point
  builder_->newShadedLine(level, colour, area < 0 ? 1 : 0);
  for (size_t k = 0; k < m; ++k)
    builder_->addShadedPoint(map_[2 * k], map_[2 * k + 1], k == 0 || k + 1 == m);
  builder_->addShadedLine();
}

}  // namespace

isoline_shade::isoline_shade(contourBuilder* builder) : builder_(builder), spline_(true) {}

isoline_shade::~isoline_shade() = default;

void isoline_shade::enable_spline(bool on) { spline_ = on; }

bool isoline_shade::create_isoshade(const double* grid, int nx, int ny, double x0, double y0,
                                    double dx, double dy, const double* levels,
                                    const int* colours, int count, double undef,
                                    int open_bands) {
  return shade(grid, nx, ny, x0, y0, dx, dy, levels, colours, count, undef, open_bands, false);
}

bool isoline_shade::create_isoshade_high2low(const double* grid, int nx, int ny, double x0,
                                             double y0, double dx, double dy,
                                             const double* levels, const int* colours,
                                             int count, double undef, int open_bands) {
  return shade(grid, nx, ny, x0, y0, dx, dy, levels, colours, count, undef, open_bands, true);
}

bool isoline_shade::shade(const double* grid, int nx, int ny, double x0, double y0, double dx,
                          double dy, const double* levels, const int* colours, int count,
                          double undef, int open_bands, bool colour_from_upper_edge) {
  if (!builder_ || !grid || !levels || !colours || count < 1 || nx < 2 || ny < 2) return false;
  // A map position that is not finite, or a step of zero, leaves no area to fill.
  if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(dx) || !std::isfinite(dy) ||
      dx == 0 || dy == 0)
    return false;
  try {
    // Levels ascending with their colours; a stable sort keeps equal levels in list order.
    std::vector<int> order;
    order.reserve(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k)
      if (!std::isnan(levels[k])) order.push_back(k);
    if (order.empty()) return false;
    std::stable_sort(order.begin(), order.end(),
                     [levels](int a, int b) { return levels[a] < levels[b]; });
    const int m = static_cast<int>(order.size());
    std::vector<double> sorted(static_cast<size_t>(m));
    for (int k = 0; k < m; ++k) sorted[k] = levels[order[k]];

    tervik::detail::band_rings rings;
    if (!rings.prepare(grid, nx, ny, undef, sorted.data(), m)) return false;
    if (!rings.any_defined_cell()) return false;

    ring_emitter emitter(builder_, nx, ny, x0, y0, dx, dy, spline_);
    for (int b = 0; b <= m; ++b) {
      if (b == 0 && !(open_bands & 1)) continue;
      if (b == m && !(open_bands & 2)) continue;
      if (b > 0 && b < m && sorted[b - 1] == sorted[b]) continue;  // empty band
      // The band's colour comes from the level at its lower edge (ascending shading) or its
      // upper edge (high to low); the open band beyond the first level of that order has -1.
      int edge = colour_from_upper_edge ? b : b - 1;
      int colour = -1;
      if (edge >= 0 && edge < m) {
        colour = colours[order[edge]];
      } else {
        edge = edge < 0 ? 0 : m - 1;
      }
      const double level = sorted[edge];
      if (!rings.trace(b, [&](const shade_ring& r) { emitter.emit(r, level, colour); }))
        return false;
    }
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}
