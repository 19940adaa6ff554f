// Point-wise diagnostic fields: which ones skip the undefined value and which compute
// through it, the range they report, and their failure codes.

#include <cfloat>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

namespace {

constexpr double kU = 9999.0;

using PointwiseFn = int (*)(double*, double*, double*, const double*, const double*, int, int,
                            double);

struct SkippingCase {
  const char* name;
  PointwiseFn fn;
  double a, b, scale, expected;
};

TEST(PointwiseFields, SkipUndefinedPointsAndKeepThemOutOfTheRange) {
  const SkippingCase cases[] = {
      {"diff", compute_field_diff, 12.0, 4.0, 2.0, 4.0},
      {"isotachs", compute_field_isotachs, 3.0, -4.0, 0.5, 10.0},
      // 20 deg C air with a 20 deg C dew point is saturated; scale is ignored
      {"ttd2rh", compute_field_ttd2rh, 20.0, 20.0, 7.0, 100.0},
  };
  for (const auto& c : cases) {
    // one defined point between two undefined ones (each input undefined once)
    const std::vector<double> a = {kU, c.a, c.a};
    const std::vector<double> b = {c.b, c.b, kU};
    std::vector<double> out(3, -1.0);
    double lo = 0, hi = 0;
    ASSERT_EQ(c.fn(out.data(), &lo, &hi, a.data(), b.data(), 3, 1, c.scale), 0) << c.name;
    EXPECT_EQ(out[0], kU) << c.name;
    EXPECT_DOUBLE_EQ(out[1], c.expected) << c.name;
    EXPECT_EQ(out[2], kU) << c.name;
    EXPECT_DOUBLE_EQ(lo, c.expected) << c.name;
    EXPECT_DOUBLE_EQ(hi, c.expected) << c.name;
  }
}

using AtPressureFn = int (*)(double*, double*, double*, const double*, double, int, int, double);

TEST(PointwiseFields, ThermodynamicFieldsComputeThroughTheUndefinedValue) {
  struct Case {
    const char* name;
    AtPressureFn fn;
    double (*expected)(double p, double t);
  };
  const Case cases[] = {
      {"q", compute_field_q, [](double p, double t) { return q(p, t); }},
      {"theta", compute_field_theta, [](double p, double t) { return t2T(theta(p, t)); }},
      {"thetase", compute_field_thetase,
       [](double p, double t) { return t2T(theta_se_s(p, t)); }},
  };
  const std::vector<double> t = {-30.0, 5.0, kU};
  const double p = 700.0, scale = 3.0;
  for (const auto& c : cases) {
    std::vector<double> out(3);
    double lo, hi;
    ASSERT_EQ(c.fn(out.data(), &lo, &hi, t.data(), p, 3, 1, scale), 0) << c.name;
    double want_lo = DBL_MAX, want_hi = -DBL_MAX;
    for (int k = 0; k < 3; ++k) {
      const double want = c.expected(p, t[k]) * scale;
      // 9999 deg C is fed to the formula; some of them turn it into NaN
      if (std::isnan(want))
        EXPECT_TRUE(std::isnan(out[k])) << c.name << " " << k;
      else
        EXPECT_EQ(out[k], want) << c.name << " " << k;
      if (want < want_lo) want_lo = want;
      if (want > want_hi) want_hi = want;
    }
    EXPECT_NE(out[2], kU) << c.name;
    EXPECT_EQ(lo, want_lo) << c.name;
    EXPECT_EQ(hi, want_hi) << c.name;
  }
  // potential temperature at 1000 hPa is the temperature itself, in kelvin
  std::vector<double> th(1);
  double lo, hi;
  const double t15 = 15.0;
  ASSERT_EQ(compute_field_theta(th.data(), &lo, &hi, &t15, 1000.0, 1, 1, 1.0), 0);
  EXPECT_NEAR(th[0], 288.15, 1e-9);
}

TEST(PointwiseFields, EmptyGridsNullPointersAndNaN) {
  const std::vector<double> a = {1.0, 2.0};
  std::vector<double> out(2, -7.0);
  double lo = 0, hi = 0;
  // An empty grid initialises the range, writes nothing and succeeds, even without inputs.
  for (const auto& size : {std::pair{0, 5}, std::pair{5, 0}, std::pair{-2, -3}}) {
    lo = hi = 0;
    EXPECT_EQ(compute_field_diff(out.data(), &lo, &hi, nullptr, nullptr, size.first,
                                 size.second, 1.0), 0);
    EXPECT_EQ(lo, DBL_MAX);
    EXPECT_EQ(hi, -DBL_MAX);
  }
  EXPECT_EQ(out[0], -7.0);
  // A null output is refused before anything is touched.
  lo = hi = 0;
  EXPECT_EQ(compute_field_isotachs(nullptr, &lo, &hi, a.data(), a.data(), 2, 1, 1.0), 1);
  EXPECT_EQ(lo, 0.0);
  EXPECT_EQ(compute_field_isotachs(out.data(), nullptr, &hi, a.data(), a.data(), 2, 1, 1.0), 1);
  EXPECT_EQ(compute_field_q(out.data(), &lo, &hi, nullptr, 500.0, 2, 1, 1.0), 1);
  EXPECT_EQ(out[0], -7.0);
  // NaN is written but never enters the range.
  const std::vector<double> b = {NAN, 1.0};
  ASSERT_EQ(compute_field_diff(out.data(), &lo, &hi, a.data(), b.data(), 2, 1, 1.0), 0);
  EXPECT_TRUE(std::isnan(out[0]));
  EXPECT_EQ(lo, 1.0);
  EXPECT_EQ(hi, 1.0);
}

}  // namespace
