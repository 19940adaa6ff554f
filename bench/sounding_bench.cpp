// Costs of the sounding functions that run per grid point and per profile.

#include <benchmark/benchmark.h>

#include <vector>

#include <tervik/sounding.h>

#include "tests/sounding/convective_profile.h"

// Ten million pseudo-equivalent potential temperatures over a spread of pressures and
// temperatures (both the water and the ice branch).
static void BM_ThetaSeS10M(benchmark::State& state) {
  std::vector<double> p(1000), t(1000);
  for (int i = 0; i < 1000; ++i) {
    p[i] = 1000.0 - 0.8 * i;
    t[i] = 35.0 - 0.08 * i;
  }
  for (auto _ : state) {
    double sum = 0.0;
    for (int rep = 0; rep < 10000; ++rep)
      for (int i = 0; i < 1000; ++i) sum += theta_se_s(p[i], t[i]);
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_ThetaSeS10M)->Unit(benchmark::kMillisecond);

static void BM_LCL(benchmark::State& state) {
  auto L = tervik::test::convective_profile();
  for (auto _ : state) {
    double p, t;
    benchmark::DoNotOptimize(LCL(L.data(), 40, &p, &t));
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_LCL)->Unit(benchmark::kMicrosecond);

static void BM_LFC(benchmark::State& state) {
  auto L = tervik::test::convective_profile();
  for (auto _ : state) {
    double p, t, td;
    benchmark::DoNotOptimize(LFC(L.data(), 40, &p, &t, &td));
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_LFC)->Unit(benchmark::kMicrosecond);

static void BM_EL(benchmark::State& state) {
  auto L = tervik::test::convective_profile();
  for (auto _ : state) {
    double p = 9999.0, t = 9999.0, td = 9999.0;
    benchmark::DoNotOptimize(EL(L.data(), 40, &p, &t, &td));
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_EL)->Unit(benchmark::kMillisecond);
