#ifndef TERVIK_TESTS_ENSEMBLE_FIXTURE_H
#define TERVIK_TESTS_ENSEMBLE_FIXTURE_H

// Small ensembles for the ensemble-statistics tests.

#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <tervik/ensemble.h>

namespace tervik::test {

// A member of nx x ny values, a malloc()ed copy of `values`, contoured -40 to 40 every 4.
inline tervik_data4 member(int nx, int ny, int level, const std::vector<double>& values,
                           const char* title = "ECMF 24011512 500hPa T") {
  tervik_data4 m;
  std::strncpy(m.description, title, sizeof m.description - 1);
  m.level = level;
  m.nx = nx;
  m.ny = ny;
  m.contour_interval = 4;
  m.contour_start = -40;
  m.contour_end = 40;
  if (values.empty()) return m;
  double* a = static_cast<double*>(std::malloc(values.size() * sizeof(double)));
  std::memcpy(a, values.data(), values.size() * sizeof(double));
  m.set_gridPtr(a);
  return m;
}

inline std::vector<double> random_values(std::mt19937& rng, std::size_t n, double lo,
                                         double hi) {
  std::uniform_real_distribution<double> d(lo, hi);
  std::vector<double> v(n);
  for (double& x : v) x = d(rng);
  return v;
}

struct ensemble {
  std::vector<tervik_data4> members;
  std::vector<int> codes;
  void add(int code, const tervik_data4& m) {
    members.push_back(m);
    codes.push_back(code);
  }
};

inline std::vector<double> values_of(const tervik_data4& g) {
  return std::vector<double>(g.data(), g.data() + static_cast<std::size_t>(g.nx) * g.ny);
}

// A statistic as a grid and as a wind record.
using stat4 = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int, double,
                      tervik_data4&);
using stat11 = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int,
                       double, tervik_data11&);

}  // namespace tervik::test

#endif
