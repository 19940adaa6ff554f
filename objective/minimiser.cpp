// Nonlinear conjugate gradients with Brent line minimisation.

#include "objective/minimiser.h"

#include <cmath>
#include <cstddef>

#include "objective/analysis_detail.h"

namespace tervik::detail {

namespace {

constexpr double kGoldenRatio = 1.618033988749895;

// f along the line x + t*d.
class LineFunction {
 public:
  LineFunction(CostFunction& f, const double* x, const double* d, double* scratch, int n)
      : f_(f), x_(x), d_(d), xt_(scratch), n_(n) {}
  double operator()(double t) {
    for (int k = 0; k < n_; ++k) xt_[k] = x_[k] + t * d_[k];
    return f_.value(xt_);
  }

 private:
  CostFunction& f_;
  const double* x_;
  const double* d_;
  double* xt_;
  int n_;
};

// Finds a < b < c with phi(b) below phi(a) and phi(c), starting from a = 0, b = 1 along a
// descent direction: shrinks b while it is not lower than phi(0), then walks c outwards by
// the golden ratio while phi keeps falling. False when no point lower than phi(0) is found
// (the line's minimum is at 0 to working precision).
bool bracket(LineFunction& phi, double f0, double& a, double& b, double& c, double& fb) {
  a = 0.0;
  b = 1.0;
  fb = phi(b);
  double fc;
  if (fb >= f0) {
    c = b, fc = fb;
    for (int k = 0;; ++k) {
      if (k == 80) return false;
      b = c / (1.0 + kGoldenRatio);
      fb = phi(b);
      if (fb < f0) break;
      c = b, fc = fb;
    }
    return true;
  }
  c = b + kGoldenRatio * (b - a);
  fc = phi(c);
  for (int k = 0; fc < fb && k < 200; ++k) {
    a = b;
    b = c, fb = fc;
    c = b + kGoldenRatio * (b - a);
    fc = phi(c);
  }
  return fc >= fb;
}

double dot(const double* a, const double* b, int n) {
  double s = 0.0;
  for (int k = 0; k < n; ++k) s += a[k] * b[k];
  return s;
}

}  // namespace

bool minimise_conjugate_gradient(CostFunction& f, double* x, int n, double ftol,
                                 int max_iterations, int* iterations, double* fmin) {
  const size_t size = n > 0 ? static_cast<size_t>(n) : 0;
  MallocArray<double> grad, g, h, scratch;
  if (!grad.allocate(size) || !g.allocate(size) || !h.allocate(size) ||
      !scratch.allocate(size))
    return false;
  int done = 0;
  double fx = f.value(x);
  f.gradient(x, grad.get());
  for (int k = 0; k < n; ++k) g[k] = h[k] = -grad[k];

  while (done < max_iterations) {
    ++done;
    // Line minimisation along h.
    LineFunction phi(f, x, h.get(), scratch.get(), n);
    double a, b, c, fb;
    double f_new = fx;
    if (bracket(phi, fx, a, b, c, fb)) {
      const double t = brent_minimise(phi, a, b, c, 2e-4, &f_new);
      if (f_new < fx) {
        for (int k = 0; k < n; ++k) x[k] += t * h[k];
      } else {
        f_new = fx;
      }
    }
    if (2.0 * std::fabs(f_new - fx) <= ftol * (std::fabs(f_new) + std::fabs(fx) + 1e-10)) {
      fx = f_new;
      break;
    }
    fx = f_new;
    f.gradient(x, grad.get());
    const double gg = dot(g.get(), g.get(), n);
    if (gg == 0.0) break;
    double dgg = 0.0;  // Polak-Ribiere: (grad_new + g_old) . grad_new, with g_old = -grad_old
    for (int k = 0; k < n; ++k) dgg += (grad[k] + g[k]) * grad[k];
    const double gamma = dgg / gg;
    for (int k = 0; k < n; ++k) {
      g[k] = -grad[k];
      h[k] = g[k] + gamma * h[k];
    }
    if (dot(h.get(), grad.get(), n) >= 0.0)  // not downhill: restart along -grad
      for (int k = 0; k < n; ++k) h[k] = g[k];
  }
  if (iterations) *iterations = done;
  if (fmin) *fmin = fx;
  return true;
}

}  // namespace tervik::detail
