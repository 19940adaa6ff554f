// Objective analysis of scattered stations onto a 0.5 degree grid over 70-140 E, 15-60 N.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include <tervik/objective.h>

namespace {

constexpr int kNx = 141, kNy = 91;
constexpr double kLonMin = 70, kLonMax = 140, kLatMin = 15, kLatMax = 60;
const int kColumns[6] = {1, 2, 3, 4, 5, 6};
const int kGuessCode[2] = {11, 0};

double height(double lon, double lat) {
  return 5700.0 - 4.0 * (lat - 15.0) + 60.0 * std::sin(lon * M_PI / 35.0) * std::cos(lat * M_PI / 50.0);
}

// Station columns (number, lon, lat, value, wind direction, wind speed) back to back, with a
// few metres of observation noise, and a first guess off by a wave of 15 m (close enough
// that the passes reject no station).
struct Input {
  int count;
  std::vector<double> stations, guess;
  explicit Input(int n) : count(n), stations(6 * static_cast<size_t>(n)), guess(kNx * kNy) {
    std::mt19937 rng(42);
    std::uniform_real_distribution<double> ux(kLonMin, kLonMax), uy(kLatMin, kLatMax), ud(0, 360), us(0, 30);
    std::normal_distribution<double> noise(0.0, 3.0);
    for (int s = 0; s < n; ++s) {
      const double lon = ux(rng), lat = uy(rng);
      stations[s] = 50000 + s;
      stations[n + s] = lon;
      stations[2 * n + s] = lat;
      stations[3 * n + s] = height(lon, lat) + noise(rng);
      stations[4 * n + s] = ud(rng);
      stations[5 * n + s] = us(rng);
    }
    for (int j = 0; j < kNy; ++j)
      for (int i = 0; i < kNx; ++i)
        guess[j * kNx + i] = height(kLonMin + 0.5 * i, kLatMin + 0.5 * j) + 15 * std::sin(i / 12.0 + j / 18.0);
  }
};

template <typename Scheme>
void analyse(benchmark::State& state, Scheme& scheme, Input& in, const int* options) {
  for (auto _ : state) {
    double* g = scheme.assimilate(kNx, kNy, kLonMin, kLonMax, kLatMin, kLatMax, in.count, 9999.0, kColumns,
                                  in.stations.data(), kGuessCode, in.guess.data(), options);
    benchmark::DoNotOptimize(g);
    std::free(g);
  }
}

void BM_Cressman(benchmark::State& state) {
  Input in(static_cast<int>(state.range(0)));
  daCressman scheme(5);
  analyse(state, scheme, in, nullptr);
}

void BM_CressmanHQ(benchmark::State& state) {
  Input in(static_cast<int>(state.range(0)));
  daCressmanHQ scheme(5);
  const int options[3] = {1, 500, 0};
  analyse(state, scheme, in, options);
}

void BM_Barnes(benchmark::State& state) {
  Input in(static_cast<int>(state.range(0)));
  daBarnes scheme;
  analyse(state, scheme, in, nullptr);
}

void BM_SurfaceFit(benchmark::State& state) {
  Input in(static_cast<int>(state.range(0)));
  daSurfaceFit scheme;
  analyse(state, scheme, in, nullptr);
  state.counters["iterations"] = scheme.iteration_count;
}

}  // namespace

BENCHMARK(BM_Cressman)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CressmanHQ)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Barnes)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SurfaceFit)->Arg(2000)->Unit(benchmark::kMillisecond);
