// Variational surface fit: the smoothest grid whose bilinear values meet the stations.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <tervik/objective.h>

#include "objective/analysis_detail.h"
#include "objective/minimiser.h"

using namespace tervik::detail;

namespace {

constexpr double kRoughnessWeight = 0.2;
constexpr double kPi = 3.1415926;  // the metric factor's own value of pi
// The metric factor 1/cos^4 grows without bound towards the poles; rows beyond 80 degrees
// take the factor of 80 degrees (about 1100) so the problem stays well posed there.
constexpr double kMetricLatitudeLimit = 80.0;
constexpr int kMaxIterations = 20000;

// The fit's data, shared by the cost and its gradient during one fit.
struct FitProblem : CostFunction {
  int nx = 0, ny = 0;
  int count = 0;                 // stations used
  MallocArray<int> cell;         // lower-left grid index of each used station's cell
  MallocArray<double> fx, fy, observed;
  MallocArray<double> metric;    // per row: 1/cos^4 of its latitude

  // J = sum over stations of (bilinear - observed)^2 + 0.2 * (sum of squared second
  // differences along rows + the same along columns times the row's metric factor).
  double value_of(const double* g) const {
    double misfit = 0.0;
    for (int s = 0; s < count; ++s) {
      const double r = background(g, nx, cell[s], fx[s], fy[s]) - observed[s];
      misfit += r * r;
    }
    double rough = 0.0;
    for (int j = 0; j < ny; ++j) {
      const double* row = g + static_cast<size_t>(j) * nx;
      for (int i = 1; i < nx - 1; ++i) {
        const double e = row[i - 1] + row[i + 1] - 2.0 * row[i];
        rough += e * e;
      }
    }
    for (int j = 1; j < ny - 1; ++j) {
      const double* row = g + static_cast<size_t>(j) * nx;
      double sum = 0.0;
      for (int i = 0; i < nx; ++i) {
        const double e = row[i - nx] + row[i + nx] - 2.0 * row[i];
        sum += e * e;
      }
      rough += metric[j] * sum;
    }
    return misfit + kRoughnessWeight * rough;
  }

  double value(const double* g) override { return value_of(g); }

  void gradient(const double* g, double* grad) override {
    std::fill(grad, grad + static_cast<size_t>(nx) * ny, 0.0);
    for (int s = 0; s < count; ++s) {
      const int n = cell[s];
      const double r2 = 2.0 * (background(g, nx, n, fx[s], fy[s]) - observed[s]);
      grad[n] += r2 * (1.0 - fy[s]) * (1.0 - fx[s]);
      grad[n + 1] += r2 * (1.0 - fy[s]) * fx[s];
      grad[n + nx] += r2 * (1.0 - fx[s]) * fy[s];
      grad[n + nx + 1] += r2 * fx[s] * fy[s];
    }
    for (int j = 0; j < ny; ++j) {
      const double* row = g + static_cast<size_t>(j) * nx;
      double* out = grad + static_cast<size_t>(j) * nx;
      for (int i = 1; i < nx - 1; ++i) {
        const double e = 2.0 * kRoughnessWeight * (row[i - 1] + row[i + 1] - 2.0 * row[i]);
        out[i - 1] += e;
        out[i + 1] += e;
        out[i] -= 2.0 * e;
      }
    }
    for (int j = 1; j < ny - 1; ++j) {
      const double* row = g + static_cast<size_t>(j) * nx;
      double* out = grad + static_cast<size_t>(j) * nx;
      const double m = 2.0 * kRoughnessWeight * metric[j];
      for (int i = 0; i < nx; ++i) {
        const double e = m * (row[i - nx] + row[i + nx] - 2.0 * row[i]);
        out[i - nx] += e;
        out[i + nx] += e;
        out[i] -= 2.0 * e;
      }
    }
  }
};

}  // namespace

daSurfaceFit::daSurfaceFit() = default;

double* daSurfaceFit::assimilate(int nx_, int ny_, double lon_min_, double lon_max_,
                                 double lat_min_, double lat_max_, int count, double undef,
                                 const int* column_codes, double* station_buffer,
                                 const int* grid_codes, double* grid_buffer, const int*) {
  bind_input(*this, nx_, ny_, lon_min_, lon_max_, lat_min_, lat_max_, count, column_codes,
             station_buffer, grid_codes, grid_buffer);
  if (!check_domain("daSurfaceFit", nx, ny, lon_min, lon_max, lat_min, lat_max) ||
      !check_columns("daSurfaceFit", *this))
    return nullptr;

  const size_t cells = static_cast<size_t>(nx) * static_cast<size_t>(ny);
  const size_t n = station_count > 0 ? static_cast<size_t>(station_count) : 0;
  FitProblem problem;
  problem.nx = nx;
  problem.ny = ny;
  LocatedStations located;
  MallocArray<double> surface;
  if (!located.allocate(station_count) || !problem.cell.allocate(n) ||
      !problem.fx.allocate(n) || !problem.fy.allocate(n) || !problem.observed.allocate(n) ||
      !problem.metric.allocate(static_cast<size_t>(ny)) || !surface.allocate(cells)) {
    std::fprintf(stderr, "daSurfaceFit::assimilate: memory allocation error.\n");
    return nullptr;
  }
  // Stations are placed in their cells as the Cressman schemes place them.
  locate_stations(*this, undef, nullptr, located);
  if (located.accepted == 0) {
    std::fprintf(stderr, "daSurfaceFit::assimilate: no station has valid height.\n");
    return nullptr;
  }
  for (size_t s = 0; s < n; ++s) {
    if (located.cell[s] == -1) continue;
    problem.cell[problem.count] = located.cell[s];
    problem.fx[problem.count] = located.fx[s];
    problem.fy[problem.count] = located.fy[s];
    problem.observed[problem.count] = value_column[s];
    ++problem.count;
  }
  const double dlat = (lat_max - lat_min) / (ny - 1);
  for (int j = 0; j < ny; ++j) {
    // The column differences centred on row j take row j's latitude.
    const double lat = std::min(std::fabs(lat_min + j * dlat), kMetricLatitudeLimit);
    const double c = std::cos(lat * kPi / 180.0);
    problem.metric[j] = 1.0 / (c * c * c * c);
  }
  // The smoothest surface of all, level at the stations' mean, is where the fit starts.
  std::fill(surface.get(), surface.get() + cells, located.mean);
  int iterations = 0;
  if (!minimise_conjugate_gradient(problem, surface.get(), static_cast<int>(cells), 1e-4,
                                   kMaxIterations, &iterations, nullptr)) {
    std::fprintf(stderr, "daSurfaceFit::assimilate: memory allocation error.\n");
    return nullptr;
  }
  iteration_count = iterations;
  return surface.release();
}
