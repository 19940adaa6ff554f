// The one-call isoline analysis of a grid record.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include <tervik/isoline.h>

#include "isoline/limits.h"
#include "platform/numerics.h"

namespace {

struct free_deleter {
  void operator()(void* p) const { std::free(p); }
};
template <class T>
using malloc_ptr = std::unique_ptr<T, free_deleter>;

// Number of levels the parameters ask for; 0 or less means none. An interval count is
// truncated towards zero; a quotient that is NaN (zero over zero) or beyond the level limit
// (a zero or tiny interval) is no count at all, where converting it to int would be
// undefined.
long level_count(const isoline_analysis_param& p) {
  if (!p.use_interval) return static_cast<long>(p.levels.size());
  const double q = (p.level_end - p.level_start) / p.level_interval;
  if (!(q > -1) || !(q < tervik::detail::kMaxLevels)) return 0;
  return static_cast<long>(q) + 1;
}

// Half-kernel (weights of offsets 0..r) of a smoothing choice; returns r, or -1 for none.
int smoothing_kernel(int smoothing, double* w) {
  switch (smoothing) {
    case 1:  // box of 3
      w[0] = w[1] = 1.0 / 3;
      return 1;
    case 2:  // box of 5
      w[0] = w[1] = w[2] = 1.0 / 5;
      return 2;
    case 3: {  // Gaussian, cut where it has fallen to a hundredth of its peak
      const double sigma = 1.4, pi = 3.14159265358979323846;
      const int r = 1 - static_cast<int>(std::trunc(-3 * sigma));
      for (int k = 0; k <= r; ++k)
        w[k] = std::exp(-k * k / (2 * sigma * sigma)) / (std::sqrt(2 * pi) * sigma);
      return r;
    }
    default:
      return -1;
  }
}

// The grid that gets contoured and where it lies on the map.
struct area_view {
  double* values = nullptr;
  int nx = 0, ny = 0;
  double x0 = 0, y0 = 0, dx = 0, dy = 0;
};

bool near(double a, double b) { return std::fabs(a - b) < 0.001; }

// Picks the grid to contour: the whole field (with the parameters' geometry when the record
// asks for it, or when the area is the record's own), or an area cut out of it into `cut`.
// Returns false when the area reaches outside the grid. A cut-out whose size formula gives
// no rows or no columns leaves an empty view, which contours nothing. Beyond the inside
// test on the six area values, every index the cut-out would read is checked against the
// grid, so a record whose corners disagree with its size cannot be read outside its array.
bool choose_area(const tervik_data4& g, const isoline_analysis_param& p, double* field,
                 std::vector<double>& cut, area_view& view) {
  if (g.geometry_override) {
    view = {field, g.nx, g.ny, p.first_lon, p.first_lat, p.lon_step, p.lat_step};
    return true;
  }
  if (near(p.first_lon, g.first_lon) && near(p.last_lon, g.last_lon) &&
      near(p.first_lat, g.first_lat) && near(p.last_lat, g.last_lat) &&
      near(p.lon_step, g.lon_step) && near(p.lat_step, g.lat_step)) {
    view = {field, g.nx, g.ny, g.first_lon, g.first_lat, g.lon_step, g.lat_step};
    return true;
  }
  // Latitudes are compared in the direction the rows run.
  const double s = g.lat_step > 0 ? 1 : -1;
  const bool inside = g.first_lon <= p.first_lon && p.last_lon <= g.last_lon &&
                      s * g.first_lat <= s * p.first_lat && s * p.last_lat <= s * g.last_lat &&
                      g.lon_step <= p.lon_step && s * g.lat_step <= s * p.lat_step;
  if (!inside) return false;
  const double nxa = std::trunc(std::fabs(p.last_lon - p.first_lon) / p.lon_step + 1);
  const double nya = std::trunc(std::fabs(p.last_lat - p.first_lat) / p.lat_step + 1);
  view = {nullptr, 0, 0, p.first_lon, p.first_lat, p.lon_step, p.lat_step};
  if (!(nxa >= 1) || !(nya >= 1)) return true;  // no rows or columns (or NaN): nothing
  const double c0 = std::trunc((p.first_lon - g.first_lon) / g.lon_step);
  const double r0 = std::trunc((p.first_lat - g.first_lat) / g.lat_step);
  const double cs = std::trunc(p.lon_step / g.lon_step);
  const double rs = std::trunc(p.lat_step / g.lat_step);
  auto within = [](double first, double stride, double n, int size) {
    const double last = first + (n - 1) * stride;
    return std::isfinite(last) && first >= 0 && last >= 0 && first < size && last < size;
  };
  if (!within(c0, cs, nxa, g.nx) || !within(r0, rs, nya, g.ny)) return false;
  view.nx = static_cast<int>(nxa);
  view.ny = static_cast<int>(nya);
  cut.resize(static_cast<size_t>(view.nx) * view.ny);
  const long ic0 = static_cast<long>(c0), ir0 = static_cast<long>(r0);
  const long ics = static_cast<long>(cs), irs = static_cast<long>(rs);
  for (long jj = 0; jj < view.ny; ++jj)
    for (long ii = 0; ii < view.nx; ++ii)
      cut[jj * view.nx + ii] = field[(ir0 + jj * irs) * g.nx + ic0 + ii * ics];
  view.values = cut.data();
  return true;
}

// The levels that can cross a side of the view. A side is crossed only when the level lies
// between two defined values, so levels outside the defined range mark nothing; leaving them
// out draws the same lines and spares the tracer a pass over the grid per level.
std::vector<double> crossing_levels(const area_view& view, const double* levels, long count) {
  double lo = INFINITY, hi = -INFINITY;
  const long n = static_cast<long>(view.nx) * view.ny;
  for (long k = 0; k < n; ++k) {
    const double v = view.values[k];
    if (v == tervik_data4::undef || std::isnan(v)) continue;
    lo = std::fmin(lo, v);
    hi = std::fmax(hi, v);
  }
  std::vector<double> used;
  for (long k = 0; k < count; ++k)
    if (levels[k] >= lo && levels[k] <= hi) used.push_back(levels[k]);
  return used;
}

void shade_bands(isolineContourBuilder& builder, const area_view& view, const double* levels,
                 long count, const isoline_analysis_param& p) {
  bool ok = false;
  try {
    std::vector<int> colours(static_cast<size_t>(count));
    for (long k = 0; k < count; ++k) colours[k] = static_cast<int>(k);
    isoline_shade shader(&builder);
    shader.enable_spline(p.shade_spline);
    // Both open bands are built, so the bands cover every defined cell.
    const int open_bands = 3;
    ok = p.level_interval > 0
             ? shader.create_isoshade(view.values, view.nx, view.ny, view.x0, view.y0, view.dx,
                                      view.dy, levels, colours.data(), static_cast<int>(count),
                                      tervik_data4::undef, open_bands)
             : shader.create_isoshade_high2low(view.values, view.nx, view.ny, view.x0, view.y0,
                                               view.dx, view.dy, levels, colours.data(),
                                               static_cast<int>(count), tervik_data4::undef,
                                               open_bands);
  } catch (const std::bad_alloc&) {
    ok = false;
  }
  if (!ok) std::fputs("Shaded isoline analysis fails.\n", stderr);
}

}  // namespace

bool do_isoline_analysis(const tervik_data4& grid, tag_isoline_layer& out,
                         const isoline_analysis_param& param) {
  isolineContourBuilder builder;
  // The builder hands its layer over rather than freeing it; release it on every way out.
  struct release_guard {
    isolineContourBuilder& b;
    ~release_guard() { b.releaseContour(); }
  } release{builder};

  // Levels, by repeated addition from the start.
  const long count = level_count(param);
  if (count <= 0 || count > 0x7fffffff) return false;
  malloc_ptr<double> levels(static_cast<double*>(std::malloc(count * sizeof(double))));
  if (!levels) return false;
  if (param.use_interval) {
    double level = param.level_start;
    for (long k = 0; k < count; ++k, level += param.level_interval) levels.get()[k] = level;
  } else {
    for (long k = 0; k < count; ++k) levels.get()[k] = param.levels[k];
  }

  try {
    // Field: the record's own values or a smoothed copy.
    double* field = grid.data();
    malloc_ptr<double> smoothed;
    double weights[32];
    const int radius = smoothing_kernel(param.smoothing, weights);
    const long points = grid.nx > 0 && grid.ny > 0 ? static_cast<long>(grid.nx) * grid.ny : 0;
    if (field && radius >= 0 && points > 0) {
      smoothed.reset(static_cast<double*>(std::malloc(points * sizeof(double))));
      if (!smoothed) {
        std::fputs("Memory allocation error, smoothing is disabled\n", stderr);
      } else {
        std::copy(field, field + points, smoothed.get());
        convolve(smoothed.get(), weights, radius, grid.ny, grid.nx, 0, grid.ny, 0, grid.nx);
        field = smoothed.get();
      }
    }

    isoline_analysis_gx tracer(&builder);
    tracer.enable_spline(param.spline);
    std::vector<double> cut;
    area_view view;
    bool contoured = field && choose_area(grid, param, field, cut, view);
    if (contoured) {
      if (view.values && view.nx > 0 && view.ny > 0) {
        const std::vector<double> used = crossing_levels(view, levels.get(), count);
        contoured = tracer.create_isoline(view.values, view.nx, view.ny, view.x0, view.y0,
                                          view.dx, view.dy, used, tervik_data4::undef);
      } else {
        contoured = false;  // an area of no rows or columns contours nothing
      }
    }
    if (!contoured) {
      std::fputs("Isoline analysis fails.\n", stderr);
      return false;
    }
    if (param.shade) shade_bands(builder, view, levels.get(), count, param);

    // Copy the layer out; the swaps leave `out` untouched should a copy run out of memory.
    const tag_isoline_layer* layer = builder.getLayer();
    std::vector<tag_isoline> lines = layer->lines;
    std::vector<tag_shaded_isoline> polygons = layer->polygons;
    out.line_count = layer->line_count;
    out.lines.swap(lines);
    out.polygon_count = layer->polygon_count;
    out.polygons.swap(polygons);
  } catch (const std::bad_alloc&) {
    std::fputs("Isoline analysis fails.\n", stderr);
    return false;
  }
  return true;
}
