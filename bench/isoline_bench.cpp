#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <tervik/isoline.h>

namespace {

const int kSide = 1000;
const int kLevels = 20;

// A smooth field of a few dozen hills and hollows over a gentle slope.
std::vector<double> smooth_field(int nx, int ny) {
  std::vector<double> g(static_cast<size_t>(nx) * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i)
      g[static_cast<size_t>(j) * nx + i] =
          std::sin(i * 0.021) * std::cos(j * 0.017) + 0.6 * std::sin((i + j) * 0.009) + 0.0004 * i;
  return g;
}

// `count` levels evenly inside the field's range.
std::vector<double> regular_levels(const std::vector<double>& g, int count) {
  const auto [lo, hi] = std::minmax_element(g.begin(), g.end());
  std::vector<double> levels;
  for (int k = 1; k <= count; ++k) levels.push_back(*lo + (*hi - *lo) * k / (count + 1));
  return levels;
}

// The whole job: trace into a layer, as the analysis driver does.
void BM_ContourLines(benchmark::State& state) {
  std::vector<double> g = smooth_field(kSide, kSide);
  const std::vector<double> levels = regular_levels(g, kLevels);
  const bool spline = state.range(0) != 0;
  size_t lines = 0, points = 0;
  for (auto _ : state) {
    isolineContourBuilder builder;
    isoline_analysis_gx tracer(&builder);
    tracer.enable_spline(spline);
    benchmark::DoNotOptimize(
        tracer.create_isoline(g.data(), kSide, kSide, 0, 0, 0.25, 0.25, levels, 9999.0));
    lines = builder.getLayer()->lines.size();
    points = 0;
    for (const tag_isoline& line : builder.getLayer()->lines) points += line.points.size();
    builder.releaseContour();
  }
  state.counters["lines"] = static_cast<double>(lines);
  state.counters["points"] = static_cast<double>(points);
}
BENCHMARK(BM_ContourLines)->ArgName("spline")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Marking and walking alone: the base builder keeps nothing. The tracer object is reused,
// so its buffers are allocated once.
void BM_TraceOnly(benchmark::State& state) {
  std::vector<double> g = smooth_field(kSide, kSide);
  const std::vector<double> levels = regular_levels(g, kLevels);
  contourBuilder discard;
  isoline_analysis_gx tracer(&discard);
  tracer.enable_spline(false);
  for (auto _ : state)
    benchmark::DoNotOptimize(
        tracer.create_isoline(g.data(), kSide, kSide, 0, 0, 0.25, 0.25, levels, 9999.0));
}
BENCHMARK(BM_TraceOnly)->Unit(benchmark::kMillisecond);

// Reference: one read of the grid per level, to compare the tracer's cost per level with.
void BM_GridPassPerLevel(benchmark::State& state) {
  const std::vector<double> g = smooth_field(kSide, kSide);
  for (auto _ : state) {
    for (int k = 0; k < kLevels; ++k) {
      double above = 0;
      for (const double v : g) above += v > 0.01 * k;
      benchmark::DoNotOptimize(above);
    }
  }
}
BENCHMARK(BM_GridPassPerLevel)->Unit(benchmark::kMillisecond);

}  // namespace
