#include "isoline/shade_spline.h"

#include <algorithm>
#include <cmath>

namespace tervik::detail {

namespace {

struct vec2 {
  double x, y;
};

vec2 unit(double x, double y) {
  const double len = std::hypot(x, y);
  return len > 0 ? vec2{x / len, y / len} : vec2{0, 0};
}

// Mean of the unit directions into and out of `b`.
vec2 tangent(const vec2& a, const vec2& b, const vec2& c) {
  const vec2 in = unit(b.x - a.x, b.y - a.y), out = unit(c.x - b.x, c.y - b.y);
  return {(in.x + out.x) * 0.5, (in.y + out.y) * 0.5};
}

}  // namespace

void hermite_smooth(const double* xy, int n, bool closed, double step, std::vector<double>& out) {
  out.clear();
  if (n < 2 || !(step > 0)) {
    out.assign(xy, xy + 2 * (n > 0 ? n : 0));
    return;
  }
  auto at = [xy](int k) { return vec2{xy[2 * k], xy[2 * k + 1]}; };
  auto dist = [](const vec2& a, const vec2& b) { return std::hypot(b.x - a.x, b.y - a.y); };
  const vec2 first = at(0), last = at(n - 1);

  // The points one step inside either end give the guard points.
  int from_end = -1, from_start = -1;
  for (int k = n - 2; k >= 0 && from_end < 0; --k)
    if (dist(at(k), last) >= step) from_end = k;
  for (int k = 1; k < n && from_start < 0; ++k)
    if (dist(at(k), first) >= step) from_start = k;
  if (from_end < 0 || from_start < 0) {
    out.assign(xy, xy + 2 * n);
    return;
  }
  const vec2 before = closed ? at(from_end)
                             : vec2{2 * first.x - at(from_start).x, 2 * first.y - at(from_start).y};
  const vec2 after = closed ? at(from_start)
                            : vec2{2 * last.x - at(from_end).x, 2 * last.y - at(from_end).y};

  // Kept points, framed by the guards.
  std::vector<vec2> keep;
  keep.reserve(static_cast<size_t>(n) + 2);
  keep.push_back(before);
  keep.push_back(first);
  for (int k = 1; k < n - 1; ++k)
    if (dist(at(k), keep.back()) >= step) keep.push_back(at(k));
  keep.push_back(last);
  keep.push_back(after);

  for (size_t k = 1; k + 2 < keep.size(); ++k) {
    const vec2 a = keep[k], b = keep[k + 1];
    const double len = dist(a, b);
    out.push_back(a.x);
    out.push_back(a.y);
    if (!(len > 0)) continue;
    const double scale = std::min(len, 0.7);
    vec2 ta = tangent(keep[k - 1], a, b), tb = tangent(a, b, keep[k + 2]);
    ta = {ta.x * scale, ta.y * scale};
    tb = {tb.x * scale, tb.y * scale};
    const double h = step / len;
    for (int s = 1;; ++s) {
      const double t = s * h;
      if (!(t < 1)) break;
      const double t2 = t * t, t3 = t2 * t;
      out.push_back(a.x + ta.x * t + (3 * b.x - 3 * a.x - 2 * ta.x - tb.x) * t2 +
                    (2 * a.x - 2 * b.x + ta.x + tb.x) * t3);
      out.push_back(a.y + ta.y * t + (3 * b.y - 3 * a.y - 2 * ta.y - tb.y) * t2 +
                    (2 * a.y - 2 * b.y + ta.y + tb.y) * t3);
    }
  }
  out.push_back(last.x);
  out.push_back(last.y);
}

}  // namespace tervik::detail
