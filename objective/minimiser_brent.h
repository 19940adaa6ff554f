#ifndef TERVIK_OBJECTIVE_MINIMISER_BRENT_H
#define TERVIK_OBJECTIVE_MINIMISER_BRENT_H

// Brent's one-dimensional minimisation (see minimiser.h).

#include <algorithm>
#include <cmath>

namespace tervik::detail {

template <typename F>
double brent_minimise(F&& f, double ax, double bx, double cx, double tol, double* fmin) {
  constexpr double kGolden = 0.3819660112501051;  // 2 - golden ratio
  constexpr double kTiny = 1e-12;                 // absolute floor of the tolerance
  constexpr int kMaxSteps = 200;
  double a = std::min(ax, cx);
  double b = std::max(ax, cx);
  double x = bx, w = bx, v = bx;  // best, second best, previous second best
  double fx = f(x), fw = fx, fv = fx;
  double step = 0.0, last_step = 0.0;
  for (int k = 0; k < kMaxSteps; ++k) {
    const double mid = 0.5 * (a + b);
    const double tol1 = tol * std::fabs(x) + kTiny;
    const double tol2 = 2.0 * tol1;
    if (std::fabs(x - mid) <= tol2 - 0.5 * (b - a)) break;
    bool golden = true;
    if (std::fabs(last_step) > tol1) {
      // Parabola through x, w and v; accept its vertex only when it falls inside the
      // bracket and moves less than half the step before last (otherwise it may cycle).
      const double r = (x - w) * (fx - fv);
      double q = (x - v) * (fx - fw);
      double p = (x - v) * q - (x - w) * r;
      q = 2.0 * (q - r);
      if (q > 0.0) p = -p;
      q = std::fabs(q);
      const double older = last_step;
      last_step = step;
      if (std::fabs(p) < std::fabs(0.5 * q * older) && p > q * (a - x) && p < q * (b - x)) {
        step = p / q;
        const double u = x + step;
        if (u - a < tol2 || b - u < tol2) step = mid > x ? tol1 : -tol1;
        golden = false;
      }
    }
    if (golden) {
      last_step = x >= mid ? a - x : b - x;
      step = kGolden * last_step;
    }
    const double u = std::fabs(step) >= tol1 ? x + step : x + (step >= 0.0 ? tol1 : -tol1);
    const double fu = f(u);
    if (fu <= fx) {
      if (u >= x)
        a = x;
      else
        b = x;
      v = w, fv = fw;
      w = x, fw = fx;
      x = u, fx = fu;
    } else {
      if (u < x)
        a = u;
      else
        b = u;
      if (fu <= fw || w == x) {
        v = w, fv = fw;
        w = u, fw = fu;
      } else if (fu <= fv || v == x || v == w) {
        v = u, fv = fu;
      }
    }
  }
  if (fmin) *fmin = fx;
  return x;
}

}  // namespace tervik::detail

#endif
