#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include <tervik/streamline.h>

namespace {

struct GlobalWind {
  int nx = 361, ny = 181;  // 1-degree grid, 0..360 E, 90 S..90 N
  std::vector<double> u, v;
};

// A Rossby-Haurwitz wave of wavenumber 4 (m/s): a westerly current with four troughs and
// ridges, the classic smooth global test flow.
GlobalWind rossby_haurwitz() {
  GlobalWind g;
  g.u.resize(static_cast<size_t>(g.nx) * g.ny);
  g.v.resize(g.u.size());
  const double a = 6.37122e6, omega = 7.848e-6, k = 7.848e-6, r = 4;
  const double deg = std::acos(-1.0) / 180;
  for (int j = 0; j < g.ny; ++j) {
    const double phi = (-90 + j) * deg;
    const double c = std::cos(phi), s = std::sin(phi);
    for (int i = 0; i < g.nx; ++i) {
      const double lambda = i * deg;
      const size_t n = static_cast<size_t>(j) * g.nx + i;
      g.u[n] = a * omega * c + a * k * std::pow(c, r - 1) * (r * s * s - c * c) * std::cos(r * lambda);
      g.v[n] = -a * k * r * std::pow(c, r - 1) * s * std::sin(r * lambda);
    }
  }
  return g;
}

void BM_GlobalStreamlinesDensity4(benchmark::State& state) {
  GlobalWind g = rossby_haurwitz();
  int64_t lines = 0;
  for (auto _ : state) {
    tagSTREAMLINE_LAYER layer;
    strmStreamlineBuilder builder(&layer);
    streamline_analysis_gx tracer(&builder);
    benchmark::DoNotOptimize(tracer.create_streamline(g.u.data(), g.v.data(), g.nx, g.ny, 0, -90,
                                                      1, 1, 9999.0, 4));
    lines = layer.line_count;
    benchmark::ClobberMemory();
  }
  state.counters["lines"] = static_cast<double>(lines);
}
BENCHMARK(BM_GlobalStreamlinesDensity4)->Unit(benchmark::kMillisecond);

}  // namespace
