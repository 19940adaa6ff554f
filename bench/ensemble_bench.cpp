// Ensemble statistics over 51 members of a global 0.25-degree grid (1440 x 721).

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <tervik/ensemble.h>

namespace {

constexpr int nx = 1440, ny = 721, member_count = 51;

// A temperature-like field: a smooth pattern that differs between members, plus noise.
tervik_data4 make_member(int m, int level) {
  tervik_data4 g;
  g.nx = nx;
  g.ny = ny;
  g.level = level;
  g.lon_step = 0.25;
  g.lat_step = -0.25;
  g.first_lat = 90;
  g.last_lat = -90;
  g.last_lon = 359.75;
  double* a = static_cast<double*>(std::malloc(sizeof(double) * nx * ny));
  std::uint64_t state = 0x9E3779B97F4A7C15ull * static_cast<std::uint64_t>(m + 1);
  for (int j = 0; j < ny; ++j) {
    for (int i = 0; i < nx; ++i) {
      state = state * 6364136223846793005ull + 1442695040888963407ull;
      const double noise = static_cast<double>(state >> 11) * 0x1.0p-53 - 0.5;
      a[j * nx + i] = 15.0 * std::cos(j * 0.0087) + 3.0 * std::sin(i * 0.01 + m) + 2.0 * noise;
    }
  }
  g.set_gridPtr(a);
  return g;
}

struct big_ensemble {
  std::vector<tervik_data4> members;
  std::vector<int> codes;
  big_ensemble() {
    // 51 temperature members; the wind members share their arrays (records share values),
    // V taking the next member's field so that U and V differ.
    std::vector<tervik_data4> t;
    for (int m = 0; m < member_count; ++m) t.push_back(make_member(m, 500));
    for (int m = 0; m < member_count; ++m) {
      members.push_back(t[m]);
      codes.push_back(2);
      members.push_back(t[m]);
      codes.push_back(5);
      members.push_back(t[(m + 1) % member_count]);
      codes.push_back(6);
    }
  }
};

const big_ensemble& ensemble() {
  static const big_ensemble e;
  return e;
}

using statistic = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int,
                          double, tervik_data4&);

void run(benchmark::State& state, statistic fn, int element, double arg) {
  const big_ensemble& e = ensemble();
  for (auto _ : state) {
    tervik_data4 out;
    benchmark::DoNotOptimize(fn(e.members, e.codes, element, 500, arg, out));
    benchmark::DoNotOptimize(out.data());
  }
}

void BM_Mean(benchmark::State& s) { run(s, compute_griddata_mean, 2, 0); }
void BM_Variance(benchmark::State& s) { run(s, compute_griddata_var, 2, 0); }
void BM_Median(benchmark::State& s) { run(s, compute_griddata_median, 2, 0.5); }
void BM_Percentile90(benchmark::State& s) { run(s, compute_griddata_percentile, 2, 0.9); }

void BM_WindRecordMean(benchmark::State& state) {
  const big_ensemble& e = ensemble();
  for (auto _ : state) {
    tervik_data11 out;
    benchmark::DoNotOptimize(compute_winddata_mean(e.members, e.codes, 10, 500, 0, out));
    benchmark::DoNotOptimize(out.u());
  }
}

}  // namespace

BENCHMARK(BM_Mean)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Variance)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Median)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Percentile90)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WindRecordMean)->Unit(benchmark::kMillisecond);
