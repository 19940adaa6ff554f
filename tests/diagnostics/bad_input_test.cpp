// Bad input to the diagnostic fields: null arrays, empty stacks and grids too large to
// allocate fail with 1 and leave the caller's output alone; empty grids succeed.

#include <cfloat>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

namespace {

TEST(DiagnosticsBadInput, FailsWithOneAndWritesNothing) {
  const std::vector<double> a(4, 1.0);
  const double* d = a.data();
  const double* stack[] = {d, d};
  const double p[] = {500.0, 700.0};
  const int huge = 2147483647;  // huge x huge work grids do not fit a size_t of bytes
  enum RangeAfter { kept, initialised, unchecked };
  struct Case {
    const char* name;
    std::function<int(double* out, double* lo, double* hi)> run;
    int code;
    RangeAfter range;
  };
  const Case cases[] = {
      {"pointwise null out", [&](double*, double* lo, double* hi) {
         return compute_field_isotachs(nullptr, lo, hi, d, d, 2, 1, 1.0);
       }, 1, kept},
      // work grids come before the output is checked, so the range is initialised
      {"kinematic null out", [&](double*, double* lo, double* hi) {
         return compute_field_vor(nullptr, lo, hi, d, d, 2, 2, 0, 1, 0, 1, 1.0);
       }, 1, initialised},
      {"cape without levels", [&](double* o, double* lo, double* hi) {
         return compute_field_cape(o, lo, hi, stack, stack, p, 0, 2, 1, 1.0);
       }, 1, unchecked},
      {"qdiv too large", [&](double* o, double* lo, double* hi) {
         return compute_field_qdiv(o, lo, hi, d, d, d, d, 850, huge, huge, 0, 1, 0, 1, 1);
       }, 1, unchecked},
      // empty grids succeed with the range initialised, whatever the arrays
      {"empty diff", [&](double* o, double* lo, double* hi) {
         return compute_field_diff(o, lo, hi, nullptr, nullptr, -2, -3, 1.0);
       }, 0, initialised},
      // not divided by 100 like the values of a non-empty grid
      {"empty qdiv", [&](double* o, double* lo, double* hi) {
         return compute_field_qdiv(o, lo, hi, d, d, d, d, 850, 0, 2, 0, 1, 0, 1, 1);
       }, 0, initialised},
  };
  for (const auto& c : cases) {
    std::vector<double> out(4, -7.0);
    double lo = 0, hi = 0;
    EXPECT_EQ(c.run(out.data(), &lo, &hi), c.code) << c.name;
    EXPECT_EQ(out, std::vector<double>(4, -7.0)) << c.name;
    if (c.range != unchecked) {
      EXPECT_EQ(lo, c.range == kept ? 0.0 : DBL_MAX) << c.name;
      EXPECT_EQ(hi, c.range == kept ? 0.0 : -DBL_MAX) << c.name;
    }
  }
}

}  // namespace
