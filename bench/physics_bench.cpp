// Speed of the per-station physics record: the whole 68-quantity record of one 40-level
// sounding, and the driver over 1000 soundings.

#include <vector>

#include <benchmark/benchmark.h>

#include <tervik/records.h>
#include <tervik/sounding.h>

#include "tests/sounding/indices_profiles.h"

namespace {

// The analytic convective sounding with 36 levels every 457.14 m to 16 km and the 850, 700,
// 500 and 300 hPa levels: 40 levels.
tag_tlogp_station forty_levels(int station, double warming = 0.0) {
  tag_tlogp_station s{station, tervik::test::weisman_klemp(457.1428, 16000.0)};
  for (double p : {850.0, 700.0, 500.0, 300.0}) tervik::test::insert_level(s.layers, p);
  for (auto& l : s.layers) l.t += warming;
  return s;
}

void BM_PhysicsRecordOneSounding(benchmark::State& state) {
  const tag_tlogp_station s = forty_levels(1);
  if (s.layers.size() != 40) state.SkipWithError("the sounding should have 40 levels");
  for (auto _ : state) {
    tag_physics_station r;
    compute_tlogp_physics(s, r);
    benchmark::DoNotOptimize(r.index);
  }
  state.counters["soundings/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_PhysicsRecordOneSounding)->Unit(benchmark::kMillisecond);

void BM_CreatePhysics1000Soundings(benchmark::State& state) {
  tag_tervik_data5 data;
  for (int i = 0; i < 1000; ++i) {
    // Soundings differ a little so that no two walks are the same.
    data.soundings.push_back(forty_levels(1000 + i, 0.002 * (i % 500)));
  }
  data.sounding_count = 1000;
  std::vector<tag_physics_station> out;
  for (auto _ : state) {
    create_tlogp_physics(data, out, 0);
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["soundings/s"] = benchmark::Counter(
      1000.0 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CreatePhysics1000Soundings)->Unit(benchmark::kMillisecond);

// The indices one at a time, as a caller without the record would compute them, for
// comparison with the record's shared walks.
void BM_IndexFunctionsOneByOne(benchmark::State& state) {
  tag_tlogp_station s = forty_levels(1);
  tag_tlogp_layer* l = s.layers.data();
  const int n = static_cast<int>(s.layers.size());
  for (auto _ : state) {
    double sum = CAPE(l, n) + CIN(l, n) + w_cape(l, n) + w_cin(l, n) + Wm(l, n) + Dm(l, n) +
                 SSI(l, n) + BRN(l, n) + EHI(l, n);
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_IndexFunctionsOneByOne)->Unit(benchmark::kMillisecond);

}  // namespace
