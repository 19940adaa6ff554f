#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "isoline/contour_detail.h"

// A traced line is a chain of points on cell sides, with a corner in every cell. The spline
// rounds those corners: it walks the line in steps of at least `step` grid units (points
// closer than that to the current one are dropped), and replaces each step A -> B by a
// cubic Hermite curve whose tangents follow the neighbouring steps, sampled about `step`
// apart along the curve's parameter.

namespace {

struct Point {
  double x, y;
};

double distance(Point a, Point b) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  return std::sqrt(dx * dx + dy * dy);
}

// Unit vector from a to b; zero when the two coincide (only possible at a guard point of a
// line that doubles back on itself), so that the tangent falls back to the other segment.
Point unit(Point a, Point b) {
  const double length = distance(a, b);
  if (length == 0.0) return {0.0, 0.0};
  return {(b.x - a.x) / length, (b.y - a.y) / length};
}

// The spline's output buffer, doubled whenever fewer than four doubles of room are left.
class Output {
 public:
  Output(double*& data, size_t& capacity) : data_(data), capacity_(capacity) {}

  void put(Point p) {
    if (failed_) return;
    if (capacity_ < used_ + 4) {
      const size_t larger = capacity_ < 8 ? 16 : 2 * capacity_;
      double* grown = static_cast<double*>(std::realloc(data_, larger * sizeof(double)));
      if (!grown) {
        failed_ = true;
        return;
      }
      data_ = grown;
      capacity_ = larger;
    }
    data_[used_++] = p.x;
    data_[used_++] = p.y;
  }

  size_t used() const { return failed_ ? 0 : used_; }

 private:
  double*& data_;
  size_t& capacity_;
  size_t used_ = 0;
  bool failed_ = false;
};

class Spline {
 public:
  Spline(const double* xy, size_t count, double step, int nx, int ny, Output& out)
      : xy_(xy), count_(count), step_(step), nx_(nx), ny_(ny), out_(out) {}

  Point at(size_t k) const { return {xy_[2 * k], xy_[2 * k + 1]}; }

  // The first point after `from` that lies at least a step away from it, or count_.
  size_t next_end(size_t from) const {
    for (size_t k = from + 1; k < count_; ++k)
      if (distance(at(from), at(k)) >= step_) return k;
    return count_;
  }

  // The last point before the end that lies at least a step away from the end, or count_.
  size_t last_end() const {
    const Point last = at(count_ - 1);
    for (size_t k = count_ - 1; k-- > 0;)
      if (distance(at(k), last) >= step_) return k;
    return count_;
  }

  // A segment along the grid border is the border itself: it stays straight.
  bool on_border(Point a, Point b) const {
    return (a.y == 1.0 && b.y == 1.0) || (a.y == ny_ && b.y == ny_) ||
           (a.x == 1.0 && b.x == 1.0) || (a.x == nx_ && b.x == nx_);
  }

  // Samples the curve from A to B (B itself excluded), between the segment ends `before` A
  // and `after` B. Each end tangent is the plain mean of the unit vectors into and out of
  // its point, scaled by the segment length up to 0.7 so that short steps bend gently.
  void segment(Point before, Point a, Point b, Point after) {
    if (on_border(a, b)) {
      out_.put(a);
      return;
    }
    const double length = distance(a, b);
    const double s = std::fmin(length, 0.7);
    const Point in = unit(before, a), ab = unit(a, b), out = unit(b, after);
    const Point ta{s * ((in.x + ab.x) / 2.0), s * ((in.y + ab.y) / 2.0)};
    const Point tb{s * ((ab.x + out.x) / 2.0), s * ((ab.y + out.y) / 2.0)};
    const Point c2{3.0 * b.x - 3.0 * a.x - 2.0 * ta.x - tb.x, 3.0 * b.y - 3.0 * a.y - 2.0 * ta.y - tb.y};
    const Point c3{2.0 * a.x - 2.0 * b.x + ta.x + tb.x, 2.0 * a.y - 2.0 * b.y + ta.y + tb.y};
    const double h = step_ / length;
    for (double t = 0.0; t < 1.0; t += h) {
      const double t2 = t * t, t3 = t * t * t;
      out_.put({a.x + ta.x * t + c2.x * t2 + c3.x * t3, a.y + ta.y * t + c2.y * t2 + c3.y * t3});
    }
  }

  // Returns false when no point lies a step away from either end.
  bool run() {
    const Point first = at(0), last = at(count_ - 1);
    const size_t from_start = next_end(0);
    const size_t from_end = last_end();
    if (from_start == count_ || from_end == count_) return false;

    // Guard points beyond the ends give the end tangents: a closed ring continues into
    // itself, an open line is extended by reflecting its first and last steps.
    const bool closed = first.x == last.x && first.y == last.y;
    const Point guard_before = closed ? at(from_end)
                                      : Point{2.0 * first.x - at(from_start).x,
                                              2.0 * first.y - at(from_start).y};
    const Point guard_after = closed ? at(from_start)
                                     : Point{2.0 * last.x - at(from_end).x,
                                             2.0 * last.y - at(from_end).y};

    Point before = guard_before;
    size_t current = 0, next = from_start;
    while (next < count_) {
      const size_t after = next_end(next);
      segment(before, at(current), at(next), after < count_ ? at(after) : guard_after);
      before = at(current);
      current = next;
      next = after;
    }
    // Points within a step of the last segment end are dropped, but the line keeps its end.
    out_.put(last);
    return true;
  }

 private:
  const double* xy_;
  size_t count_;
  double step_;
  int nx_, ny_;
  Output& out_;
};

}  // namespace

namespace tervik::detail {

size_t spline_line(const double* xy, size_t count, double step, int nx, int ny, double*& out,
                   size_t& capacity) {
  if (!xy || count < 2 || !(step > 0.0) || !std::isfinite(step)) return 0;
  Output output(out, capacity);
  Spline spline(xy, count, step, nx, ny, output);
  if (!spline.run()) return 0;
  return output.used();
}

}  // namespace tervik::detail
