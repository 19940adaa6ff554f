// Traces streamlines through small wind grids built from the input bytes: the first bytes
// choose the grid size, density, geometry and missing-value marker, every further byte one
// wind component, drawn from a palette that includes calm, missing, NaN, infinite and huge
// values. The arrays have exactly nx * ny values, so a read outside the grid is reported by
// the address sanitizer.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <tervik/streamline.h>

namespace {

constexpr double kUndef = 9999.0;

double wind_value(uint8_t b) {
  switch (b % 16) {
    case 0: return 0.0;
    case 1: return 0.05;
    case 2: return kUndef;
    case 3: return std::numeric_limits<double>::quiet_NaN();
    case 4: return std::numeric_limits<double>::infinity();
    case 5: return -1e308;
    default: return (static_cast<int>(b) - 128) / 8.0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  const int nx = data[0] % 12 + 1;
  const int ny = data[1] % 12 + 1;
  const int density = static_cast<int8_t>(data[2]);
  const double undef = data[3] & 1 ? kUndef : std::numeric_limits<double>::quiet_NaN();
  data += 4;
  size -= 4;

  const size_t n = static_cast<size_t>(nx) * ny;
  std::vector<double> u(n), v(n);
  for (size_t k = 0; k < n; ++k) {
    u[k] = size ? wind_value(data[(2 * k) % size]) : 0.0;
    v[k] = size ? wind_value(data[(2 * k + 1) % size]) : 0.0;
  }
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  tracer.create_streamline(u.data(), v.data(), nx, ny, -3.5, 12.0, 0.75, -0.5, undef, density);
  if (layer.line_count != static_cast<int32_t>(layer.lines.size())) __builtin_trap();
  return 0;
}
