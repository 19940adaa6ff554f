// Shades small grids built from the input bytes: values drawn from a few steps so that
// levels often equal grid values, with missing, NaN and infinite values mixed in, levels in
// any order and repeated. Every ring must be closed, finite and flagged by its orientation,
// and the signed areas of all rings must add up to the cells with four defined corners.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include <tervik/isoline.h>

namespace {

const double kUndef = 9999.0;

double value_of(uint8_t b) {
  switch (b) {
    case 255: return kUndef;
    case 254: return std::numeric_limits<double>::quiet_NaN();
    case 253: return std::numeric_limits<double>::infinity();
    default: return (b % 16) * 0.5;
  }
}

bool defined(double v) { return v != kUndef && std::isfinite(v); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 5) return 0;
  const int nx = data[0] % 20;
  const int ny = data[1] % 20;
  const double steps[] = {1.0, 0.25, -0.5, 3.0};
  const double dx = steps[data[2] % 4], dy = steps[(data[2] / 4) % 4];
  const bool spline = data[2] & 16;
  const bool high2low = data[2] & 32;
  const int level_count = data[3] % 6;
  size_t at = 4;

  std::vector<double> levels;
  std::vector<int> colours;
  for (int k = 0; k < level_count && at < size; ++k, ++at) {
    const double level = (data[at] % 16) * 0.5 + ((data[at] & 16) ? 0.25 : 0.0);
    levels.push_back(data[at] == 254 ? std::numeric_limits<double>::quiet_NaN() : level);
    colours.push_back(k);
  }
  std::vector<double> grid(static_cast<size_t>(nx) * ny);
  for (double& v : grid) v = at < size ? value_of(data[at++]) : 0.0;

  long cells = 0;
  for (int j = 0; j + 1 < ny; ++j)
    for (int i = 0; i + 1 < nx; ++i)
      cells += defined(grid[j * nx + i]) && defined(grid[j * nx + i + 1]) &&
               defined(grid[(j + 1) * nx + i]) && defined(grid[(j + 1) * nx + i + 1]);

  isolineContourBuilder builder;
  isoline_shade shader(&builder);
  shader.enable_spline(spline);
  const bool ok =
      high2low
          ? shader.create_isoshade_high2low(grid.data(), nx, ny, 2.0, -1.0, dx, dy,
                                            levels.data(), colours.data(),
                                            static_cast<int>(levels.size()), kUndef, 3)
          : shader.create_isoshade(grid.data(), nx, ny, 2.0, -1.0, dx, dy, levels.data(),
                                   colours.data(), static_cast<int>(levels.size()), kUndef, 3);
  bool has_level = false;
  for (double l : levels) has_level |= !std::isnan(l);
  if (ok != (cells > 0 && has_level)) std::abort();

  double total = 0;
  if (tag_isoline_layer* layer = builder.getLayer()) {
    if (layer->polygon_count != static_cast<int32_t>(layer->polygons.size())) std::abort();
    for (const tag_shaded_isoline& r : layer->polygons) {
      const auto& p = r.points;
      if (p.size() < 4 || r.point_count != static_cast<int32_t>(p.size())) std::abort();
      if (p.front().x != p.back().x || p.front().y != p.back().y) std::abort();
      if (!p.front().edge || !p.back().edge) std::abort();
      if (r.first < -1 || r.first >= level_count || (r.second != 0 && r.second != 1)) std::abort();
      double twice = 0;
      for (size_t k = 0; k + 1 < p.size(); ++k) {
        if (!std::isfinite(p[k].x) || !std::isfinite(p[k].y)) std::abort();
        twice += (p[k].x - p[0].x) * (p[k + 1].y - p[0].y) - (p[k + 1].x - p[0].x) * (p[k].y - p[0].y);
      }
      if ((twice < 0) != (r.second == 1)) std::abort();
      total += twice / 2;
    }
    builder.releaseContour();
  }
  const double want = cells * std::fabs(dx * dy);
  if (ok && std::fabs(total - want) > 1e-9 * (want + 1)) std::abort();
  return 0;
}
