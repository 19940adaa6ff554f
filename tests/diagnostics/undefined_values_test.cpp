// Which fields skip the undefined value 9999.0 and which compute through it, and the range
// each one reports: over the values written, never 9999.0 nor NaN.

#include <cfloat>
#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>

namespace {

constexpr double kU = 9999.0;

struct UndefinedCase {
  const char* name;
  std::function<int(const double* in, double* out, double* lo, double* hi)> run;
  // 'U' where the output is 9999.0, '.' where it is not
  const char* mask;
  double first;  // expected output at point 0, NaN to leave unchecked
  bool ranged;
};

TEST(UndefinedValues, SkippedOrComputedThroughAsEachFieldDefines) {
  // 3 x 3 with the centre undefined; a[k] = 10 + k elsewhere
  std::vector<double> a(9), plain(9), zero(9, 0.0), four(9, 4.0), psi(9), spare(9);
  for (int k = 0; k < 9; ++k) {
    a[k] = plain[k] = 10.0 + k;
    psi[k] = k == 4 ? kU : a[k] * 9.81e4;
  }
  a[4] = kU;
  const UndefinedCase cases[] = {
      {"diff", [&](const double* in, double* o, double* lo, double* hi) {
         return compute_field_diff(o, lo, hi, in, four.data(), 3, 3, 2.0);
       }, "....U....", 3.0, true},
      {"isotachs", [&](const double* in, double* o, double* lo, double* hi) {
         return compute_field_isotachs(o, lo, hi, zero.data(), in, 3, 3, 0.5);
       }, "....U....", 20.0, true},
      {"ttd2rh", [&](const double* in, double* o, double* lo, double* hi) {
         return compute_field_ttd2rh(o, lo, hi, plain.data(), in, 3, 3, 7.0);  // saturated
       }, "....U....", 100.0, true},
      {"psi2h", [&](const double*, double* o, double* lo, double* hi) {
         return compute_field_psi2h(o, lo, hi, psi.data(), 3, 3);
       }, "....U....", 1.0, true},
      // at 1000 hPa the potential temperature is the temperature in kelvin
      {"theta", [&](const double* in, double* o, double* lo, double* hi) {
         return compute_field_theta(o, lo, hi, in, 1000.0, 3, 3, 1.0);
       }, ".........", 283.15, true},
      // the kinematic fields difference 9999.0 like any other number
      {"vor", [&](const double* in, double* o, double* lo, double* hi) {
         return compute_field_vor(o, lo, hi, in, zero.data(), 3, 3, 0, -1, 0, 1, 1.0);
       }, ".........", NAN, true},
      // a gradient reading the undefined value is undefined; the centre's own skips it
      // a difference reading the undefined value is undefined, the centre's own skips it;
      // the streamfunction's wind divides both differences by the x spacing (90 km a step)
      {"psi2wind u", [&](const double* in, double* o, double*, double*) {
         return compute_field_psi2wind(o, spare.data(), in, 3, 3, 0, -0.5, 0, 1);
       }, ".U.....U.", 3.0 / 90000, false},
      {"psi2wind v", [&](const double* in, double* o, double*, double*) {
         return compute_field_psi2wind(spare.data(), o, in, 3, 3, 0, -0.5, 0, 1);
       }, "...U.U...", 1.0 / 90000, false},
  };
  for (const auto& c : cases) {
    std::vector<double> out(9, -1.0);
    double lo = 0, hi = 0;
    ASSERT_EQ(c.run(a.data(), out.data(), &lo, &hi), 0) << c.name;
    double want_lo = DBL_MAX, want_hi = -DBL_MAX;
    for (int k = 0; k < 9; ++k) {
      EXPECT_EQ(out[k] == kU, c.mask[k] == 'U') << c.name << " point " << k << ": " << out[k];
      EXPECT_NE(out[k], -kU) << c.name << " point " << k;
      if (out[k] == kU || std::isnan(out[k])) continue;
      want_lo = std::fmin(want_lo, out[k]);
      want_hi = std::fmax(want_hi, out[k]);
    }
    if (!std::isnan(c.first)) {
      EXPECT_NEAR(out[0], c.first, 1e-9 * std::fabs(c.first)) << c.name;
    }
    if (c.ranged) {
      EXPECT_EQ(lo, want_lo) << c.name;
      EXPECT_EQ(hi, want_hi) << c.name;
    }
  }
}

}  // namespace
