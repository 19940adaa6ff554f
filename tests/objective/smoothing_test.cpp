#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <tervik/objective.h>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

// daBase is abstract; its smoothers are what these tests need.
struct Smoother : daBase {
  double* assimilate(int, int, double, double, double, double, int, double, const int*, double*, const int*,
                     double*, const int*) override {
    return nullptr;
  }
};

std::vector<double> noise(int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> z(0.0, 1.0);
  std::vector<double> v(n);
  for (double& x : v) x = z(rng);
  return v;
}

double variance(const std::vector<double>& v) {
  double m = 0, s = 0;
  for (double x : v) m += x;
  m /= v.size();
  for (double x : v) s += (x - m) * (x - m);
  return s / v.size();
}

TEST(SurfaceSmooth, ReproducesPolynomialsOfItsDegreeUpToTheEdges) {
  struct Case { int mode; double (*f)(double, double); };
  const Case cases[] = {
      {1, [](double x, double y) { return 3 + 2 * x - y; }},
      {2, [](double x, double y) { return 1 + x * x - 0.5 * x * y + 0.25 * y * y; }},
      {3, [](double x, double y) { return x * x * x / 50 - x * y * y / 30 + y; }},
  };
  for (const Case& c : cases) {
    for (int nx : {2, 4, 13}) {
      const int ny = 9;
      std::vector<double> g(nx * ny);
      for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i) g[j * nx + i] = c.f(i, j);
      std::vector<double> smoothed = g;
      Smoother s;
      s.surfaceSmooth(smoothed.data(), nx, ny, 3, c.mode);
      for (size_t k = 0; k < g.size(); ++k) ASSERT_NEAR(smoothed[k], g[k], 1e-9) << c.mode << " " << nx << " " << k;
    }
  }
}

TEST(SurfaceSmooth, DampsNoiseAndTreatsUnknownModesAsPlanes) {
  const int nx = 30, ny = 20;
  const std::vector<double> g = noise(nx * ny, 1);
  Smoother s;
  std::vector<double> plane = g;
  s.surfaceSmooth(plane.data(), nx, ny, 6, 1);
  EXPECT_LT(variance(plane), 0.1 * variance(g));
  std::vector<double> quadratic = g;
  s.surfaceSmooth(quadratic.data(), nx, ny, 6, 2);
  EXPECT_LT(variance(quadratic), 0.5 * variance(g));
  EXPECT_GT(variance(quadratic), variance(plane));  // the quadratic keeps more detail
  for (int mode : {0, 4, -2}) {
    std::vector<double> other = g;
    s.surfaceSmooth(other.data(), nx, ny, 6, mode);
    EXPECT_EQ(other, plane) << mode;
  }
  std::vector<double> none = g;
  s.surfaceSmooth(none.data(), nx, ny, 0, 2);
  EXPECT_EQ(none, g);
}

TEST(SmoothField, AveragesThePresentPointsOfTheSquare) {
  const double u = tervik_data4::undef;
  std::vector<double> g = {1, 2, 3, 4, u, 6, 7, 8, 9};
  Smoother s;
  s.smoothField(g.data(), 3, 3, 1);
  EXPECT_DOUBLE_EQ(g[0], (1 + 2 + 4) / 3.0);
  EXPECT_DOUBLE_EQ(g[1], (1 + 2 + 3 + 4 + 6) / 5.0);
  EXPECT_EQ(g[4], u);
  EXPECT_DOUBLE_EQ(g[8], (6 + 8 + 9) / 3.0);

  std::vector<double> flat(50 * 40, 273.15);
  s.smoothField(flat.data(), 50, 40, 3);
  for (double v : flat) ASSERT_DOUBLE_EQ(v, 273.15);
  std::vector<double> n = noise(50 * 40, 2), m = n;
  s.smoothField(m.data(), 50, 40, 0);
  EXPECT_EQ(m, n);
  s.smoothField(m.data(), 50, 40, 2);
  EXPECT_LT(variance(m), 0.1 * variance(n));
}

TEST(GaussianSmooth, KeepsAConstantAndWarnsBeyondTheMaskCapacity) {
  Smoother s;
  struct Case { double sigma; const char* warning; };
  const Case cases[] = {{4.0, ""}, {10.0, ""}, {11.0, "Warning: mask size (34) is greater than capacity (32)\n"}};
  for (const Case& c : cases) {
    std::vector<double> flat(40 * 30, 5500.0);
    CaptureStderr();
    s.gaussianSmooth(flat.data(), 40, 30, c.sigma);
    EXPECT_EQ(GetCapturedStderr(), c.warning);
    for (double v : flat) ASSERT_NEAR(v, 5500.0, 1e-9);
  }
  std::vector<double> n = noise(40 * 30, 3), m = n;
  s.gaussianSmooth(m.data(), 40, 30, 0.0);
  s.gaussianSmooth(m.data(), 40, 30, NAN);
  EXPECT_EQ(m, n);
  s.gaussianSmooth(m.data(), 40, 30, 2.0);
  EXPECT_LT(variance(m), 0.1 * variance(n));
}

}  // namespace
