// The finite-difference diagnostics on a global quarter-degree grid (1440 x 721, north
// row first), and CAPE of a small set of model columns. Each kernel reports its effective bandwidth (bytes of its arguments read and
// written per second); a memcpy of the same input arrays, run in the same program, shows
// what the memory system gives.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <tervik/diagnostics.h>

namespace {

constexpr int kNx = 1440, kNy = 721;
constexpr double kLat0 = 90.0, kDlat = -0.25, kLon0 = 0.0, kDlon = 0.25;
constexpr std::size_t kPoints = static_cast<std::size_t>(kNx) * kNy;
constexpr std::size_t kGridBytes = kPoints * sizeof(double);

std::vector<double> wave_field(double amplitude, double offset, double kx, double ky,
                               double phase) {
  std::vector<double> f(kPoints);
  for (int j = 0; j < kNy; ++j)
    for (int i = 0; i < kNx; ++i)
      f[static_cast<std::size_t>(j) * kNx + i] =
          offset + amplitude * std::sin(kx * i * 0.0043633 + phase) * std::cos(ky * j * 0.0043633);
  return f;
}

struct Inputs {
  std::vector<double> u = wave_field(20.0, 5.0, 6.0, 4.0, 0.3);
  std::vector<double> v = wave_field(15.0, 0.0, 5.0, 7.0, 1.1);
  std::vector<double> f = wave_field(30.0, 280.0, 3.0, 2.0, 0.0);
  std::vector<double> t0 = wave_field(12.0, 2.0, 4.0, 3.0, 0.0);
  std::vector<double> t1 = wave_field(12.0, 2.5, 4.0, 3.0, 0.05);
  std::vector<double> tu = wave_field(10.0, -10.0, 4.0, 3.0, 0.1);
  std::vector<double> tl = wave_field(12.0, 8.0, 4.0, 3.0, -0.1);
  std::vector<double> omega = wave_field(0.5, 0.0, 9.0, 5.0, 0.7);
};

const Inputs& inputs() {
  static const Inputs in;
  return in;
}

// Copies `count` grids, as much as a kernel with that many inputs reads.
void copy_grids(benchmark::State& state, int count) {
  const Inputs& in = inputs();
  const std::vector<double>* sources[] = {&in.u, &in.v, &in.f, &in.t0, &in.t1, &in.tu, &in.tl,
                                          &in.omega};
  std::vector<std::vector<double>> targets(count, std::vector<double>(kPoints));
  for (auto _ : state) {
    for (int g = 0; g < count; ++g)
      std::memcpy(targets[g].data(), sources[g]->data(), kGridBytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 2 * count * kGridBytes);
}

void BM_MemcpyTwoGrids(benchmark::State& state) { copy_grids(state, 2); }
void BM_MemcpyThreeGrids(benchmark::State& state) { copy_grids(state, 3); }
void BM_MemcpySevenGrids(benchmark::State& state) { copy_grids(state, 7); }

void BM_Vorticity(benchmark::State& state) {
  const Inputs& in = inputs();
  std::vector<double> out(kPoints);
  double lo, hi;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute_field_vor(out.data(), &lo, &hi, in.u.data(), in.v.data(), kNx,
                                               kNy, kLat0, kDlat, kLon0, kDlon, 1e5));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3 * kGridBytes);
}

void BM_Divergence(benchmark::State& state) {
  const Inputs& in = inputs();
  std::vector<double> out(kPoints);
  double lo, hi;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute_field_div(out.data(), &lo, &hi, in.u.data(), in.v.data(), kNx,
                                               kNy, kLat0, kDlat, kLon0, kDlon, 1e5));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3 * kGridBytes);
}

void BM_Advection(benchmark::State& state) {
  const Inputs& in = inputs();
  std::vector<double> out(kPoints);
  double lo, hi;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute_field_adv(out.data(), &lo, &hi, in.f.data(), in.u.data(),
                                               in.v.data(), kNx, kNy, kLat0, kDlat, kLon0, kDlon,
                                               3600.0));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4 * kGridBytes);
}

void BM_Frontogenesis(benchmark::State& state) {
  const Inputs& in = inputs();
  std::vector<double> out(kPoints);
  double lo, hi;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute_field_frontogen(
        out.data(), &lo, &hi, in.t0.data(), in.t1.data(), in.tu.data(), in.tl.data(), in.u.data(),
        in.v.data(), in.omega.data(), 850.0, 700.0, 925.0, kNx, kNy, 21600, kLat0, kDlat, kLon0,
        kDlon, 1e9));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 8 * kGridBytes);
}

// CAPE on a 40 x 30 grid of 20-level columns (1000 to 50 hPa): a hot, nearly saturated
// boundary layer under a constant lapse rate, strongly unstable everywhere, so every
// column walks its whole depth. The time is that of the sounding's own CAPE walk; the
// column gathering around it is what this field adds.
constexpr int kCapeNx = 40, kCapeNy = 30, kCapeNz = 20;
constexpr std::size_t kCapePoints = static_cast<std::size_t>(kCapeNx) * kCapeNy;

struct CapeColumns {
  std::vector<std::vector<double>> t, td;
  std::vector<const double*> t_levels, td_levels;
  std::vector<double> p;
  CapeColumns() {
    for (int z = 0; z < kCapeNz; ++z) {
      const double pz = 1000.0 - 50.0 * z;
      p.push_back(pz);
      std::vector<double> tz(kCapePoints), tdz(kCapePoints);
      for (std::size_t k = 0; k < kCapePoints; ++k) {
        const double surface = 24.0 + 6.0 * std::sin(0.3 * k);
        const double lapse = 0.0065 * 29.3 * (273.15 + surface) * std::log(1000.0 / pz);
        tz[k] = surface - lapse;
        tdz[k] = tz[k] - (z < 4 ? 3.0 + 2.0 * std::cos(0.2 * k) : 12.0 + z);
      }
      t.push_back(std::move(tz));
      td.push_back(std::move(tdz));
    }
    for (int z = 0; z < kCapeNz; ++z) {
      t_levels.push_back(t[z].data());
      td_levels.push_back(td[z].data());
    }
  }
  std::size_t bytes() const {
    return (2 * kCapeNz + 1) * kCapePoints * sizeof(double) + kCapeNz * sizeof(double);
  }
};

void BM_Cape(benchmark::State& state) {
  const CapeColumns c;
  std::vector<double> out(kCapePoints);
  double lo, hi;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute_field_cape(out.data(), &lo, &hi, c.t_levels.data(),
                                                c.td_levels.data(), c.p.data(), kCapeNz, kCapeNx,
                                                kCapeNy, 1.0));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * c.bytes());
  state.counters["cape_max"] = hi;
}

void BM_MemcpyCapeColumns(benchmark::State& state) {
  const CapeColumns c;
  std::vector<std::vector<double>> copies(2 * kCapeNz, std::vector<double>(kCapePoints));
  for (auto _ : state) {
    for (int z = 0; z < kCapeNz; ++z) {
      std::memcpy(copies[2 * z].data(), c.t[z].data(), kCapePoints * sizeof(double));
      std::memcpy(copies[2 * z + 1].data(), c.td[z].data(), kCapePoints * sizeof(double));
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 2 * 2 * kCapeNz *
                          kCapePoints * sizeof(double));
}

}  // namespace

BENCHMARK(BM_MemcpyTwoGrids)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Vorticity)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Divergence)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyThreeGrids)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Advection)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpySevenGrids)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Frontogenesis)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyCapeColumns)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Cape)->Unit(benchmark::kMillisecond);
