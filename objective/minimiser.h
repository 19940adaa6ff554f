#ifndef TERVIK_OBJECTIVE_MINIMISER_H
#define TERVIK_OBJECTIVE_MINIMISER_H

// Unconstrained minimisation of a smooth function of many variables.

namespace tervik::detail {

// A function of n variables and its gradient.
class CostFunction {
 public:
  virtual ~CostFunction() = default;
  virtual double value(const double* x) = 0;
  virtual void gradient(const double* x, double* grad) = 0;
};

// Minimises f by nonlinear conjugate gradients (Polak-Ribiere directions, which reduce to
// Fletcher-Reeves on a quadratic) with a Brent line minimisation along each direction,
// starting from x[0..n) and leaving the minimiser there. Stops when one iteration lowers f by
// no more than the fractional tolerance ftol (2|f1 - f0| <= ftol (|f1| + |f0| + 1e-10)), when
// the gradient vanishes, or after max_iterations. A direction that does not descend restarts
// the method along the steepest descent.
//
// Returns false (x unchanged) only when scratch memory runs out. *iterations receives the
// number of iterations made and *fmin the final value; either may be null.
bool minimise_conjugate_gradient(CostFunction& f, double* x, int n, double ftol,
                                 int max_iterations, int* iterations, double* fmin);

// Brent's minimisation of a function of one variable inside the bracket a < b < c (or
// c < b < a) with f(b) below f(a) and f(c): golden-section steps safeguarding parabolic
// interpolation, to a fractional tolerance `tol` in the abscissa. Returns the abscissa of the
// minimum and its value in *fmin.
template <typename F>
double brent_minimise(F&& f, double a, double b, double c, double tol, double* fmin);

}  // namespace tervik::detail

#include "objective/minimiser_brent.h"

#endif
