// Streamline seeding and tracing.
//
// Lines are seeded on a flag grid that is `den` times finer than the wind grid in each
// direction (one flag cell is 1/den grid lengths wide). A flag cell is marked once a line has
// passed through it; a seed is placed only where no marked cell lies within three flag cells,
// and a line stops when it steps into a marked cell. So the flag grid, not the geometry of
// the lines drawn so far, keeps lines apart: no two lines pass through one flag cell (only
// the cell where a line ends stays open to others).

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <tervik/streamline.h>

streamline_analysis_base::~streamline_analysis_base() = default;

namespace {

// The wind field and its map geometry, as one create_streamline call sees them.
struct Field {
  const double* u;
  const double* v;
  int64_t nx, ny;
  double x0, y0, dx, dy, undef;
};

// The flag grid: `cols` x `rows` cells, row-major, 1 where a line has passed.
struct Flags {
  int32_t* cell;
  int64_t cols, rows, den;
};

// A line is integrated in steps of half a flag cell, measured along the larger wind
// component.
struct Step {
  double s;     // step length in grid units
  double sign;  // +1 downstream, -1 upstream
};

// Bilinear interpolation of one component inside the cell whose lower-left corner is at
// index n: first along x on the two rows, then along y between them.
double bilinear(const double* w, int64_t n, int64_t nx, double fx, double fy) {
  const double a = w[n] + (w[n + 1] - w[n]) * fx;
  const double b = w[n + nx] + (w[n + nx + 1] - w[n + nx]) * fx;
  return a + (b - a) * fy;
}

bool missing(const double* w, int64_t n, int64_t nx, double undef) {
  return w[n] == undef || w[n + 1] == undef || w[n + nx] == undef || w[n + nx + 1] == undef;
}

// Traces one half of a streamline from grid coordinates (gx, gy) and reports it to the
// builder. `arrow_count` is where the arrow counter starts: an arrow is drawn on the step at
// which it passes 20.
void trace_half(const Field& f, Flags& flags, streamlineBuilder& out, double gx, double gy,
                Step step, int arrow_count) {
  double px = f.x0 + gx * f.dx;
  double py = f.y0 + gy * f.dy;
  out.newLine();
  out.addPoint(px, py);

  const int64_t cells = flags.cols * flags.rows;
  int64_t previous = -999;  // the flag cell of the last point, once the line has stepped
  int same_cell = 0;        // further steps within that cell

  // The loop condition keeps (gx, gy) in [0, nx-1) x [0, ny-1), so the cell (i0, j0) and its
  // right and upper neighbours are grid points: the corner reads stay inside the arrays.
  // The flag index stays inside too, because one step moves at most half a flag cell past
  // the grid; the range check is kept as a second line of defence.
  if (gx >= 0) {
    while (gx < static_cast<double>(f.nx - 1) && gy >= 0 && gy < static_cast<double>(f.ny - 1)) {
      const int64_t i0 = static_cast<int64_t>(gx);
      const int64_t j0 = static_cast<int64_t>(gy);
      const double fx = gx - static_cast<double>(i0);
      const double fy = gy - static_cast<double>(j0);
      const int64_t n = j0 * f.nx + i0;
      if (missing(f.u, n, f.nx, f.undef) || missing(f.v, n, f.nx, f.undef)) break;

      const double u = bilinear(f.u, n, f.nx, fx, fy);
      const double v = bilinear(f.v, n, f.nx, fx, fy);
      // NaN or infinite winds (or an interpolation that overflows) would give a NaN position,
      // whose conversion to a cell index is undefined: such a wind ends the line like a
      // missing one. Finite winds are unaffected.
      if (!std::isfinite(u) || !std::isfinite(v)) break;
      if (std::fabs(u) < 0.1 && std::fabs(v) < 0.1) break;  // calm

      // Normalise so that the larger component moves exactly one step.
      const double scale = std::fabs(u) <= std::fabs(v) ? std::fabs(v) : std::fabs(u);
      const double du = u * step.s / scale;
      const double dv = v * step.s / scale;
      if (step.sign > 0) {
        gx += du;
        gy += dv;
      } else {
        gx -= du;
        gy -= dv;
      }

      const int64_t k = static_cast<int64_t>(gy * static_cast<double>(flags.den)) * flags.cols +
                        static_cast<int64_t>(gx * static_cast<double>(flags.den));
      if (k < 0 || k >= cells || flags.cell[k] == 1) break;
      if (k == previous) {
        // Circling within one cell (near a stagnation point) ends the line.
        if (++same_cell > 10) break;
      } else {
        // A cell is marked when the line leaves it, so the cell where a line ends stays free
        // for a later line to pass through.
        if (previous >= 0) flags.cell[previous] = 1;
        same_cell = 0;
        previous = k;
      }

      const double x = f.x0 + gx * f.dx;
      const double y = f.y0 + gy * f.dy;
      out.addPoint(x, y);
      if (++arrow_count > 20) {
        // Both halves point their arrows downstream.
        if (step.sign > 0) {
          out.addArrow(px, py, x, y);
        } else {
          out.addArrow(x, y, px, py);
        }
        arrow_count = 0;
      }
      px = x;
      py = y;
      if (gx < 0) break;
    }
  }
  out.addLine();
}

// Whether any flag within `w` cells (a square of side 2w+1, cut at the border) is set.
bool marked_near(const Flags& flags, int64_t ci, int64_t cj, int64_t w) {
  const int64_t i_from = ci - w > 0 ? ci - w : 0;
  const int64_t i_to = ci + w + 1 < flags.cols ? ci + w + 1 : flags.cols;
  const int64_t j_from = cj - w > 0 ? cj - w : 0;
  const int64_t j_to = cj + w + 1 < flags.rows ? cj + w + 1 : flags.rows;
  for (int64_t j = j_from; j < j_to; ++j) {
    const int32_t* row = flags.cell + j * flags.cols;
    for (int64_t i = i_from; i < i_to; ++i) {
      if (row[i] != 0) return true;
    }
  }
  return false;
}

}  // namespace

streamline_analysis_gx::streamline_analysis_gx(streamlineBuilder* builder) : builder_(builder) {}

streamline_analysis_gx::~streamline_analysis_gx() = default;

bool streamline_analysis_gx::create_streamline(double* u, double* v, int nx, int ny, double x0,
                                               double y0, double dx, double dy, double undef,
                                               int density) {
  u_ = u;
  v_ = v;
  nx_ = nx;
  ny_ = ny;
  x0_ = x0;
  y0_ = y0;
  dx_ = dx;
  dy_ = dy;
  undef_ = undef;

  if (builder_ == nullptr) {
    std::fprintf(stderr, "No builder for streamline function\n");
    return false;
  }
  if (u == nullptr || v == nullptr || nx < 1 || ny < 1) {
    std::fprintf(stderr, "Invalid wind grid for streamline function\n");
    return false;
  }

  // Densities outside 1..4 mean the default, 4.
  const int64_t den = (density >= 1 && density <= 4) ? density : 4;
  // Three flag cells of clearance around a seed. Wider flag grids would call for a narrower
  // neighbourhood, but the density never exceeds 4.
  const int64_t w = 3;

  Flags flags{nullptr, den * nx, den * ny, den};
  // The flag grid of a sensible wind grid is far below this; a product past it could not be
  // allocated anyway and is reported like a failed allocation.
  const int64_t max_cells = std::numeric_limits<int64_t>::max() / 8;
  if (flags.cols <= max_cells / flags.rows) {
    flags.cell = static_cast<int32_t*>(
        std::calloc(static_cast<size_t>(flags.cols * flags.rows), sizeof(int32_t)));
  }
  if (flags.cell == nullptr) {
    std::fprintf(stderr, "Cannot allocate memory for streamline function\n");
    return false;
  }

  const Field field{u, v, nx, ny, x0, y0, dx, dy, undef};
  const double s = 0.5 / static_cast<double>(den);
  for (int64_t cj = 0; cj < flags.rows; ++cj) {
    for (int64_t ci = 0; ci < flags.cols; ++ci) {
      if (marked_near(flags, ci, cj, w)) continue;
      // The seed sits at the lower-left corner of its flag cell, in grid coordinates.
      const double gx = static_cast<double>(ci) / static_cast<double>(den);
      const double gy = static_cast<double>(cj) / static_cast<double>(den);
      trace_half(field, flags, *builder_, gx, gy, Step{s, +1.0}, 0);
      // The upstream half starts its arrow counter at 19 so that its first arrow comes
      // after two steps, near the seed.
      trace_half(field, flags, *builder_, gx, gy, Step{s, -1.0}, 19);
    }
  }
  std::free(flags.cell);
  return builder_->getLayer() != nullptr;
}
