#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include <tervik/objective.h>

#include "objective/minimiser.h"
#include "objective/stations.h"

using namespace tervik::test;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

struct Rosenbrock : tervik::detail::CostFunction {
  double value(const double* x) override {
    return 100 * (x[1] - x[0] * x[0]) * (x[1] - x[0] * x[0]) + (1 - x[0]) * (1 - x[0]);
  }
  void gradient(const double* x, double* g) override {
    g[0] = -400 * x[0] * (x[1] - x[0] * x[0]) - 2 * (1 - x[0]);
    g[1] = 200 * (x[1] - x[0] * x[0]);
  }
};

// sum_k c_k (x_k - k)^2 with very different curvatures c_k.
struct Bowl : tervik::detail::CostFunction {
  int n = 50;
  double value(const double* x) override {
    double s = 0;
    for (int k = 0; k < n; ++k) s += (1.0 + k * k) * (x[k] - k) * (x[k] - k);
    return s;
  }
  void gradient(const double* x, double* g) override {
    for (int k = 0; k < n; ++k) g[k] = 2 * (1.0 + k * k) * (x[k] - k);
  }
};

TEST(Minimiser, FindsTheMinimaOfAValleyAndAnIllConditionedBowl) {
  Rosenbrock r;
  double x[2] = {-1.2, 1.0};
  int iterations = 0;
  double fmin = -1;
  ASSERT_TRUE(tervik::detail::minimise_conjugate_gradient(r, x, 2, 1e-12, 1000, &iterations, &fmin));
  EXPECT_NEAR(x[0], 1.0, 1e-3);
  EXPECT_NEAR(x[1], 1.0, 2e-3);
  EXPECT_LT(fmin, 1e-6);
  EXPECT_GT(iterations, 1);

  Bowl b;
  std::vector<double> y(b.n, 0.0);
  ASSERT_TRUE(tervik::detail::minimise_conjugate_gradient(b, y.data(), b.n, 1e-14, 1000, &iterations, &fmin));
  for (int k = 0; k < b.n; ++k) EXPECT_NEAR(y[k], k, 1e-3) << k;
  EXPECT_LT(iterations, 1000);  // converged, not stopped by the cap
}

TEST(Minimiser, BrentFindsTheMinimumInsideItsBracket) {
  double fmin = 0;
  const double x = tervik::detail::brent_minimise([](double t) { return std::cos(t); }, 2.0, 3.0, 5.0, 1e-8, &fmin);
  EXPECT_NEAR(x, M_PI, 1e-6);
  EXPECT_NEAR(fmin, -1.0, 1e-12);
}

TEST(SurfaceFit, PassesCloseToTheStationsAndIsSmoothBetweenThem) {
  const Domain d{71, 46, 70.0, 140.0, 15.0, 60.0};
  Stations s = random_stations(d, 800, 17, height_field);
  daSurfaceFit fit;
  const std::vector<double> g = run(fit, d, s);
  ASSERT_FALSE(g.empty());
  EXPECT_GT(fit.iteration_count, 0);
  EXPECT_LT(rms_at_stations(g, d, s, height_field), 3.0);
  // Smooth: no second difference along a row much beyond the field's own (about 0.2 m).
  double worst = 0;
  for (int j = 0; j < d.ny; ++j)
    for (int i = 1; i + 1 < d.nx; ++i) {
      const double* r = &g[j * d.nx];
      worst = std::max(worst, std::fabs(r[i - 1] + r[i + 1] - 2 * r[i]));
    }
  EXPECT_LT(worst, 3.0);
}

TEST(SurfaceFit, FailsWithoutUsableStations) {
  const Domain d{11, 11, 100.0, 110.0, 30.0, 40.0};
  Stations none, undef;
  undef.add(1, 105, 35, 9999.0);
  undef.add(2, NAN, 35, 10.0);
  for (Stations* s : {&none, &undef}) {
    daSurfaceFit fit;
    CaptureStderr();
    EXPECT_TRUE(run(fit, d, *s).empty());
    EXPECT_EQ(GetCapturedStderr(), "daSurfaceFit::assimilate: no station has valid height.\n");
  }
}

}  // namespace
