// Contours small grids built from the input bytes: sizes, map steps, the spline switch,
// levels and values drawn from a few steps so that levels often equal grid values, with
// missing, NaN and infinite values mixed in. Checks that every line is well formed.

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
    case 252: return -std::numeric_limits<double>::infinity();
    default: return (b % 16) * 0.5;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 6) return 0;
  const int nx = data[0] % 24;
  const int ny = data[1] % 24;
  const double steps[] = {1.0, 0.25, 0.05, -0.5, 0.0, 3.0, 1e-3, 40.0};
  const double dx = steps[data[2] % 8], dy = steps[(data[2] / 8) % 8];
  const bool spline = data[3] & 1;
  const int level_count = data[4] % 5;
  size_t at = 5;

  std::vector<double> levels;
  for (int k = 0; k < level_count && at < size; ++k, ++at)
    levels.push_back(value_of(data[at]) + ((data[at] & 16) ? 0.25 : 0.0));
  std::vector<double> grid(static_cast<size_t>(nx) * ny);
  for (double& v : grid) v = at < size ? value_of(data[at++]) : 0.0;

  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.enable_spline(spline);
  tracer.create_isoline(grid.data(), nx, ny, 2.0, -1.0, dx, dy, levels, kUndef);
  if (tag_isoline_layer* layer = builder.getLayer()) {
    if (layer->line_count != static_cast<int32_t>(layer->lines.size())) std::abort();
    for (const tag_isoline& line : layer->lines) {
      if (line.points.empty() || line.point_count != static_cast<int32_t>(line.points.size()))
        std::abort();
      if (!line.points.front().edge || !line.points.back().edge) std::abort();
      for (const tag_isoline_point& p : line.points)
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) std::abort();
    }
    builder.releaseContour();
  }
  return 0;
}
