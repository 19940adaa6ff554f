#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include <tervik/isoline.h>

namespace {

const int kSide = 1000;
const int kLevels = 20;

// A smooth field of a few dozen hills and hollows over a gentle slope, with a little noise
// for the smoothing to take out.
std::vector<double> field(int nx, int ny) {
  std::vector<double> g(static_cast<size_t>(nx) * ny);
  unsigned state = 12345;
  for (int j = 0; j < ny; ++j) {
    for (int i = 0; i < nx; ++i) {
      state = state * 1103515245u + 12345u;
      const double noise = ((state >> 16) & 0x7fff) / 32768.0 - 0.5;
      g[static_cast<size_t>(j) * nx + i] = std::sin(i * 0.021) * std::cos(j * 0.017) +
                                           0.6 * std::sin((i + j) * 0.009) + 0.0004 * i +
                                           0.02 * noise;
    }
  }
  return g;
}

tervik_data4 record(const std::vector<double>& g) {
  tervik_data4 r;
  r.nx = r.ny = kSide;
  r.first_lon = 60;
  r.first_lat = 0;
  r.lon_step = r.lat_step = 0.1;
  r.last_lon = r.first_lon + (kSide - 1) * r.lon_step;
  r.last_lat = r.first_lat + (kSide - 1) * r.lat_step;
  double* v = static_cast<double*>(std::malloc(g.size() * sizeof(double)));
  std::copy(g.begin(), g.end(), v);
  r.set_gridPtr(v);
  return r;
}

// 20 levels evenly inside the field's range.
isoline_analysis_param param(const std::vector<double>& g, bool shade) {
  const auto [lo, hi] = std::minmax_element(g.begin(), g.end());
  isoline_analysis_param p;
  p.area_set = true;
  p.first_lon = 60;
  p.last_lon = 60 + (kSide - 1) * 0.1;
  p.first_lat = 0;
  p.last_lat = (kSide - 1) * 0.1;
  p.lon_step = p.lat_step = 0.1;
  p.use_interval = true;
  p.level_interval = (*hi - *lo) / (kLevels + 1);
  p.level_start = *lo + p.level_interval;
  p.level_end = p.level_start + (kLevels - 0.5) * p.level_interval;
  p.shade = shade;
  p.spline = true;
  p.shade_spline = true;
  p.smoothing = 3;
  return p;
}

// The whole job: smoothing 3, lines and (with the argument 1) filled bands, both splined.
void BM_IsolineAnalysis(benchmark::State& state) {
  const std::vector<double> g = field(kSide, kSide);
  const tervik_data4 r = record(g);
  const isoline_analysis_param p = param(g, state.range(0) != 0);
  size_t lines = 0, polygons = 0;
  for (auto _ : state) {
    tag_isoline_layer out{};
    benchmark::DoNotOptimize(do_isoline_analysis(r, out, p));
    lines = out.lines.size();
    polygons = out.polygons.size();
  }
  state.counters["lines"] = static_cast<double>(lines);
  state.counters["polygons"] = static_cast<double>(polygons);
}
BENCHMARK(BM_IsolineAnalysis)->ArgName("shade")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The two tracers alone on the same field and levels, into builders that keep nothing, to
// compare the cost of bands with that of lines.
void BM_Tracer(benchmark::State& state) {
  std::vector<double> g = field(kSide, kSide);
  const isoline_analysis_param p = param(g, false);
  std::vector<double> levels;
  std::vector<int> colours;
  for (int k = 0; k < kLevels; ++k) {
    levels.push_back(p.level_start + k * p.level_interval);
    colours.push_back(k);
  }
  const bool shade = state.range(0) != 0;
  const bool spline = state.range(1) != 0;
  contourBuilder discard;
  for (auto _ : state) {
    if (shade) {
      isoline_shade shader(&discard);
      shader.enable_spline(spline);
      benchmark::DoNotOptimize(shader.create_isoshade(g.data(), kSide, kSide, 0, 0, 0.1, 0.1,
                                                      levels.data(), colours.data(), kLevels,
                                                      9999.0, 3));
    } else {
      isoline_analysis_gx tracer(&discard);
      tracer.enable_spline(spline);
      benchmark::DoNotOptimize(
          tracer.create_isoline(g.data(), kSide, kSide, 0, 0, 0.1, 0.1, levels, 9999.0));
    }
  }
}
BENCHMARK(BM_Tracer)
    ->ArgNames({"shade", "spline"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
