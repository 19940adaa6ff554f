#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include <tervik/isoline.h>

#include "isoline/contour_detail.h"

// Grid points, cells and sides are counted from 1 here: grid point (i, j) is column i, row j,
// with value grid[(j-1)*nx + (i-1)]. Horizontal side (i, j) joins points (i, j) and (i+1, j);
// vertical side (i, j) joins (i, j) and (i, j+1). Cell (i, j) is bounded below by horizontal
// side (i, j), above by (i, j+1), on the left by vertical side (i, j) and on the right by
// (i+1, j). The side flags have a margin of one never-marked row and column on every side,
// so walking into cell 0 or past cell nx or ny simply finds no way on.

namespace {

// Exit sides of a cell; the walk moves through the side into the neighbouring cell.
enum Side : int { kNone = 0, kBottom = 1, kRight = 2, kTop = 3, kLeft = 4 };

}  // namespace

struct isoline_analysis_gx::State {
  // The grid and level being contoured.
  const double* grid = nullptr;
  int nx = 0, ny = 0;
  double x0 = 0.0, y0 = 0.0, dx = 1.0, dy = 1.0;
  double undef = 0.0;
  double level = 0.0;

  // Classes of two grid rows against the level, for marking.
  std::vector<uint8_t> row_class;

  // Side marks: horizontal sides in the first half, vertical in the second, both indexed
  // j*(nx+2) + i.
  uint16_t* flags = nullptr;
  size_t flag_capacity = 0;
  size_t stride = 0;  // nx + 2
  size_t half = 0;    // (nx+2)*(ny+2)

  // One line is built in the coordinate buffer (x, y pairs, counted in doubles) from the
  // middle outwards: the forward walk writes towards the end, the backward walk towards the
  // start. line_start and line_end index the x of the first and the last point.
  double* xy = nullptr;
  size_t xy_capacity = 0;
  size_t middle = 0;
  size_t line_start = 0, line_end = 0;

  double* spline = nullptr;
  size_t spline_capacity = 0;
  bool spline_enabled = true;
  double spline_step = 0.25;

  ~State() { free_buffers(); }

  double p(int i, int j) const {
    return grid[static_cast<size_t>(j - 1) * static_cast<size_t>(nx) + static_cast<size_t>(i - 1)];
  }
  uint16_t& hside(int i, int j) { return flags[static_cast<size_t>(j) * stride + i]; }
  uint16_t& vside(int i, int j) { return flags[half + static_cast<size_t>(j) * stride + i]; }

  // Missing data never crosses a level. Values that are not finite count as missing too:
  // a crossing next to an infinity has no position.
  bool missing(double a) const { return a == undef || !std::isfinite(a); }

  void free_buffers();
  bool ensure_storage();
  void mark();
  void trace(contourBuilder& builder);
  void walk(int i, int j, int side, int dir);
  void write_crossing(int i, int j, int side, size_t pos);
  int choose_exit(int i, int j, int moved);
  int saddle(int i, int j, int entry) const;
  void finish(contourBuilder& builder);
  void smooth();
};

void isoline_analysis_gx::State::free_buffers() {
  std::free(flags);
  std::free(xy);
  std::free(spline);
  flags = nullptr;
  xy = nullptr;
  spline = nullptr;
  flag_capacity = xy_capacity = spline_capacity = middle = 0;
}

// Makes room for the side marks and the line of the current grid, then clears the marks.
// Buffers are kept across levels and calls and replaced only for a larger grid; the
// coordinate buffer may also have grown for a long spline. Walks are bounded by the buffer
// actually held, so a tracer that has held a larger grid cuts long lines later than a
// fresh one would.
bool isoline_analysis_gx::State::ensure_storage() {
  const size_t cells = (static_cast<size_t>(nx) + 2) * (static_cast<size_t>(ny) + 2);
  stride = static_cast<size_t>(nx) + 2;
  half = cells;
  if (flag_capacity < 2 * cells) {
    free_buffers();
    // Sizes that cannot even be expressed in bytes fail like any other allocation.
    const bool representable = cells <= std::numeric_limits<size_t>::max() / (2 * sizeof(double));
    if (representable) {
      flags = static_cast<uint16_t*>(std::malloc(2 * cells * sizeof(uint16_t)));
      xy = static_cast<double*>(std::malloc(cells * sizeof(double)));
    }
    if (!flags || !xy) {
      free_buffers();
      std::fputs("Error in GXCLEV: Unable to allocate storage \n", stdout);
      return false;
    }
    flag_capacity = 2 * cells;
    xy_capacity = cells;
    middle = cells / 2;
    // The spline buffer is only a first guess: the spline allocates it when it is missing.
    spline = static_cast<double*>(std::malloc(cells * sizeof(double)));
    spline_capacity = spline ? cells : 0;
  }
  std::memset(flags, 0, 2 * cells * sizeof(uint16_t));
  try {
    row_class.resize(2 * static_cast<size_t>(nx));
  } catch (const std::bad_alloc&) {
    std::fputs("Error in GXCLEV: Unable to allocate storage \n", stdout);
    return false;
  }
  return true;
}

// Marks every side the level crosses. A side is crossed when both ends are present and the
// level lies in the half-open range between them: the lower end may equal the level, the
// upper end may not, so a level through a grid point is crossed exactly once there.
//
// Each value is classed once per level (0 above the level, 1 at or below it, 2 missing), a
// row at a time; a side is then crossed exactly when its two classes are 0 and 1, that is
// when they differ by an exclusive or of 1.
void isoline_analysis_gx::State::mark() {
  uint8_t* below = row_class.data();
  uint8_t* above = below + nx;
  auto classify = [&](int j, uint8_t* out) {
    const double* row = grid + static_cast<size_t>(j - 1) * static_cast<size_t>(nx);
    for (int i = 0; i < nx; ++i) {
      const double x = row[i];
      out[i] = missing(x) ? 2 : static_cast<uint8_t>(x <= level);
    }
  };
  classify(1, below);
  for (int j = 1; j < ny; ++j) {
    classify(j + 1, above);
    uint16_t* h = &hside(0, j);
    uint16_t* u = &vside(0, j);
    for (int i = 1; i < nx; ++i) {
      const uint8_t a = below[i - 1];
      h[i] = (a ^ below[i]) == 1;
      u[i] = (a ^ above[i - 1]) == 1;
    }
    // The last column has vertical sides only.
    u[nx] = (below[nx - 1] ^ above[nx - 1]) == 1;
    std::swap(below, above);
  }
  // The top row has horizontal sides only.
  uint16_t* h = &hside(0, ny);
  for (int i = 1; i < nx; ++i) h[i] = (below[i - 1] ^ below[i]) == 1;
}

// Writes where the level crosses `side` of cell (i, j), in grid units, at `pos`, and clears
// the side's mark.
void isoline_analysis_gx::State::write_crossing(int i, int j, int side, size_t pos) {
  const double v = level;
  double x = 0.0, y = 0.0;
  switch (side) {
    case kBottom:
      x = i + (v - p(i, j)) / (p(i + 1, j) - p(i, j));
      y = j;
      hside(i, j) = 0;
      break;
    case kTop:
      x = i + (v - p(i, j + 1)) / (p(i + 1, j + 1) - p(i, j + 1));
      y = j + 1;
      hside(i, j + 1) = 0;
      break;
    case kLeft:
      x = i;
      y = j + (v - p(i, j)) / (p(i, j + 1) - p(i, j));
      vside(i, j) = 0;
      break;
    default:  // kRight
      x = i + 1;
      y = j + (v - p(i + 1, j)) / (p(i + 1, j + 1) - p(i + 1, j));
      vside(i + 1, j) = 0;
      break;
  }
  xy[pos] = x;
  xy[pos + 1] = y;
}

// A saddle cell is crossed four times by the level. Pair the crossings so that the two
// pieces of line inside the cell are as short as possible: bottom with left and right with
// top, or bottom with right and left with top; a tie takes the second pairing so that the
// same grid always gives the same picture. Returns the side paired with `entry`.
int isoline_analysis_gx::State::saddle(int i, int j, int entry) const {
  const double v = level;
  const double p1 = p(i, j), p2 = p(i + 1, j), p3 = p(i + 1, j + 1), p4 = p(i, j + 1);
  const double fb = (v - p1) / (p2 - p1);
  const double fr = (v - p2) / (p3 - p2);
  const double ft = (v - p4) / (p3 - p4);
  const double fl = (v - p1) / (p4 - p1);
  const double s1 = std::hypot(fb, fl) + std::hypot(1.0 - fr, 1.0 - ft);
  const double s2 = std::hypot(1.0 - fb, fr) + std::hypot(1.0 - fl, ft);
  if (s1 < s2) {
    switch (entry) {
      case kBottom: return kLeft;
      case kLeft: return kBottom;
      case kRight: return kTop;
      default: return kRight;
    }
  }
  switch (entry) {
    case kBottom: return kRight;
    case kRight: return kBottom;
    case kLeft: return kTop;
    default: return kLeft;
  }
}

// The way out of cell (i, j), entered by moving in direction `moved` (the side the line
// left the previous cell by), or kNone when no other side of the cell is marked. Each entry
// has its own order of preference among the three other sides; four marked sides make a
// saddle.
int isoline_analysis_gx::State::choose_exit(int i, int j, int moved) {
  const bool b = hside(i, j) != 0;
  const bool t = hside(i, j + 1) != 0;
  const bool l = vside(i, j) != 0;
  const bool r = vside(i + 1, j) != 0;
  switch (moved) {
    case kBottom:  // entered through the top
      if (l && !(b && r)) return kLeft;
      if (l) return saddle(i, j, kTop);
      return b ? kBottom : r ? kRight : kNone;
    case kTop:  // entered through the bottom
      if (!r) return t ? kTop : l ? kLeft : kNone;
      return (t && l) ? saddle(i, j, kBottom) : kRight;
    case kLeft:  // entered through the right
      if (!t) return l ? kLeft : b ? kBottom : kNone;
      return (l && b) ? saddle(i, j, kRight) : kTop;
    default:  // kRight: entered through the left
      if (!b) return r ? kRight : t ? kTop : kNone;
      return (r && t) ? saddle(i, j, kLeft) : kBottom;
  }
}

// Follows the line from cell (i, j) out through `side`, writing one point per crossed side
// from the middle of the coordinate buffer in direction `dir` (+1 or -1 point). The walk
// stops when the next point would come closer than two points to either end of the buffer
// (room kept for the spline's guard points; a line longer than the buffer is cut open
// there) or when the cell it enters has no marked side left. Stopping for want of a way on
// in the cell it began in means the line has come round: the first point is repeated to
// close the ring. A walk cut by the buffer is never closed (the closing point would have
// no room).
void isoline_analysis_gx::State::walk(int i, int j, int side, int dir) {
  const int start_i = i, start_j = j;
  const ptrdiff_t low = 4;
  const ptrdiff_t high = static_cast<ptrdiff_t>(xy_capacity) - 4;
  ptrdiff_t pos = static_cast<ptrdiff_t>(middle);
  ptrdiff_t last = pos;
  for (;;) {
    write_crossing(i, j, side, static_cast<size_t>(pos));
    last = pos;
    pos += 2 * dir;
    if (pos < low || pos > high) break;
    switch (side) {
      case kBottom: --j; break;
      case kRight: ++i; break;
      case kTop: ++j; break;
      default: --i; break;
    }
    side = choose_exit(i, j, side);
    if (side == kNone) {
      if (i == start_i && j == start_j) {
        xy[pos] = xy[middle];
        xy[pos + 1] = xy[middle + 1];
        last = pos;
      }
      break;
    }
  }
  if (dir > 0)
    line_end = static_cast<size_t>(last);
  else
    line_start = static_cast<size_t>(last);
}

// Starts a line at every side still marked, scanning rows from the bottom. Sides of the top
// row and the last column are only reached by walks. Each line is walked both ways from
// its starting side and handed to the builder at once.
void isoline_analysis_gx::State::trace(contourBuilder& builder) {
  for (int j = 1; j < ny; ++j) {
    for (int i = 1; i < nx; ++i) {
      // Most sides are not crossed: pass over four unmarked pairs at once.
      if (i + 4 <= nx) {
        uint64_t h4, v4;
        std::memcpy(&h4, &hside(i, j), sizeof h4);
        std::memcpy(&v4, &vside(i, j), sizeof v4);
        if ((h4 | v4) == 0) {
          i += 3;
          continue;
        }
      }
      if (hside(i, j)) {
        walk(i, j, kBottom, +1);
        walk(i, j - 1, kTop, -1);
        finish(builder);
      }
      if (vside(i, j)) {
        walk(i, j, kLeft, +1);
        walk(i - 1, j, kRight, -1);
        finish(builder);
      }
    }
  }
}

// Replaces the line in the coordinate buffer by its spline. A spline with more points than
// the buffer holds gets a buffer of twice the size, as often as needed; should that
// allocation fail the line is kept unsmoothed.
void isoline_analysis_gx::State::smooth() {
  const size_t count = (line_end - line_start) / 2 + 1;
  const size_t values =
      tervik::detail::spline_line(xy + line_start, count, spline_step, nx, ny, spline, spline_capacity);
  if (values == 0) return;
  if (values > xy_capacity) {
    std::fputs("spline fit yields too many points.\n", stderr);
    size_t capacity = xy_capacity;
    while (capacity < values) capacity *= 2;
    double* larger = static_cast<double*>(std::malloc(capacity * sizeof(double)));
    if (!larger) return;
    std::free(xy);
    xy = larger;
    xy_capacity = capacity;
    middle = capacity / 2;
  }
  std::memcpy(xy, spline, values * sizeof(double));
  line_start = 0;
  line_end = values - 2;
}

// Smooths the line, converts it to map coordinates and hands it to the builder: the line,
// its points (the two ends flagged as edges), its labels, then the end of the line. A line
// whose first and last points are equal is a closed ring.
void isoline_analysis_gx::State::finish(contourBuilder& builder) {
  if (spline_enabled) smooth();
  double* pts = xy + line_start;
  const size_t count = (line_end - line_start) / 2 + 1;
  for (size_t k = 0; k < count; ++k) {
    pts[2 * k] = (pts[2 * k] - 1.0) * dx + x0;
    pts[2 * k + 1] = (pts[2 * k + 1] - 1.0) * dy + y0;
  }
  const size_t last = 2 * (count - 1);
  const bool closed = pts[0] == pts[last] && pts[1] == pts[last + 1];
  builder.newLine(level, closed);
  for (size_t k = 0; k < count; ++k)
    builder.addPoint(pts[2 * k], pts[2 * k + 1], k == 0 || k == count - 1);
  tervik::detail::place_labels(builder, level, pts, count);
  builder.addLine();
}

// ---- isoline_analysis_base / isoline_analysis_gx ----

isoline_analysis_base::~isoline_analysis_base() = default;

isoline_analysis_gx::isoline_analysis_gx(contourBuilder* builder)
    : isoline_analysis_base(builder), state_(new State()) {}

isoline_analysis_gx::~isoline_analysis_gx() { delete state_; }

void isoline_analysis_gx::enable_spline(bool on) { state_->spline_enabled = on; }

// A negative count or a null level array is an empty level list.
bool isoline_analysis_gx::create_isoline(double* grid, int nx, int ny, double x0, double y0,
                                         double dx, double dy, const double* levels, int count,
                                         double undef) {
  std::vector<double> list;
  if (levels && count > 0) list.assign(levels, levels + count);
  return create_isoline(grid, nx, ny, x0, y0, dx, dy, list, undef);
}

// Without a builder or a grid there is nothing to contour and the call fails. A grid with
// fewer than two rows or columns has no cells and so no lines; the result then only tells
// whether the builder already holds a layer.
bool isoline_analysis_gx::create_isoline(double* grid, int nx, int ny, double x0, double y0,
                                         double dx, double dy, const std::vector<double>& levels,
                                         double undef) {
  State& s = *state_;
  s.grid = grid;
  s.nx = nx;
  s.ny = ny;
  s.x0 = x0;
  s.y0 = y0;
  s.dx = dx;
  s.dy = dy;
  s.undef = undef;
  if (&levels != &levels_) levels_ = levels;
  // The spline step is in grid units although it is chosen from the map steps.
  s.spline_step = std::fmin(std::fabs(dx), std::fabs(dy)) > 0.1 ? 0.25 : 0.1;
  if (!builder_ || !grid) return false;

  if (nx >= 2 && ny >= 2) {
    for (const double level : levels_) {
      s.level = level;
      if (!s.ensure_storage()) continue;
      s.mark();
      s.trace(*builder_);
    }
  }
  return builder_->getLayer() != nullptr;
}
