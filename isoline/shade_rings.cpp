// Ring walking for filled contours.
//
// Cells are numbered (ci, cj) by their lower-left grid point; the sides of a cell are taken
// counter-clockwise: 0 bottom (corner 0 -> 1), 1 right (1 -> 2), 2 top (2 -> 3), 3 left
// (3 -> 0), with corners 0 (ci, cj), 1 (ci+1, cj), 2 (ci+1, cj+1), 3 (ci, cj+1). A ring of a
// band keeps the band on its left. It is made of chords, straight pieces of the band's
// lower or upper level joining two crossings on the sides of one cell, and of border pieces
// along sides that have a defined cell on one side only (the grid border, missing data).
// Every crossing of the two levels on a side next to a defined cell lies on exactly one ring
// of the band, so the walks start from crossings; rings without any crossing run wholly
// along the border and start from a border side lying in the band.
//
// A side is crossed by level k when its ends lie on different sides of it, which is decided
// on band numbers alone (band <= k below, band > k above), so the chords of every level
// and the corners of every band agree with one another without comparing doubles twice.

#include "isoline/shade_rings.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace tervik::detail {

namespace {

// Side ids are int32 and there are about two per grid point.
constexpr long kMaxPoints = 1L << 29;
// Each side crossing costs four bytes of index; beyond this the bands are not worth drawing.
constexpr long kMaxCrossings = 1L << 26;

bool missing(double v, double undef) { return v == undef || !std::isfinite(v); }

}  // namespace

bool band_rings::prepare(const double* grid, int nx, int ny, double undef,
                         const double* levels, int count) {
  if (!grid || !levels || count < 1 || nx < 2 || ny < 2) return false;
  const long points = static_cast<long>(nx) * ny;
  if (points > kMaxPoints) return false;
  grid_ = grid;
  levels_ = levels;
  count_ = count;
  nx_ = nx;
  ny_ = ny;
  ncx_ = nx - 1;
  ncy_ = ny - 1;
  hsides_ = ncx_ * ny;
  nsides_ = hsides_ + nx * ncy_;
  try {
    band_.resize(static_cast<size_t>(points));
    for (long p = 0; p < points; ++p) {
      const double v = grid[p];
      band_[p] = missing(v, undef)
                     ? -1
                     : static_cast<int32_t>(std::lower_bound(levels, levels + count, v) - levels);
    }
    defined_.assign(static_cast<size_t>(ncx_) * ncy_, 0);
    defined_cells_ = 0;
    for (int cj = 0; cj < ncy_; ++cj) {
      for (int ci = 0; ci < ncx_; ++ci) {
        const long p = static_cast<long>(cj) * nx + ci;
        const bool ok = band_[p] >= 0 && band_[p + 1] >= 0 && band_[p + nx] >= 0 &&
                        band_[p + nx + 1] >= 0;
        defined_[static_cast<size_t>(cj) * ncx_ + ci] = ok;
        defined_cells_ += ok;
      }
    }

    // Visits every side next to a defined cell, in side order, with its id, its two end
    // points and whether it is a border side (a defined cell on one side only).
    auto for_each_side = [&](auto&& visit) {
      for (int j = 0; j < ny; ++j) {
        for (int i = 0; i < ncx_; ++i) {
          const bool a = j > 0 && defined_[static_cast<size_t>(j - 1) * ncx_ + i];
          const bool b = j < ncy_ && defined_[static_cast<size_t>(j) * ncx_ + i];
          if (!a && !b) continue;
          const long p = static_cast<long>(j) * nx + i;
          visit(j * ncx_ + i, p, p + 1, a != b);
        }
      }
      for (int j = 0; j < ncy_; ++j) {
        for (int i = 0; i < nx; ++i) {
          const bool a = i > 0 && defined_[static_cast<size_t>(j) * ncx_ + i - 1];
          const bool b = i < ncx_ && defined_[static_cast<size_t>(j) * ncx_ + i];
          if (!a && !b) continue;
          const long p = static_cast<long>(j) * nx + i;
          visit(hsides_ + j * nx + i, p, p + nx, a != b);
        }
      }
    };

    // Count the crossings of each level and the border sides of each band, then fill both
    // lists in side order (a counting sort).
    std::vector<int32_t> diff(static_cast<size_t>(count) + 1, 0);
    border_at_.assign(static_cast<size_t>(count) + 2, 0);
    long total = 0;
    for_each_side([&](int, long p, long q, bool border) {
      const int lo = std::min(band_[p], band_[q]), hi = std::max(band_[p], band_[q]);
      if (lo < hi) {
        ++diff[lo];
        --diff[hi];
        total += hi - lo;
      } else if (border) {
        ++border_at_[lo + 1];
      }
    });
    if (total > kMaxCrossings) return false;
    cross_at_.assign(static_cast<size_t>(count) + 1, 0);
    int32_t running = 0;
    for (int k = 0; k < count; ++k) {
      running += diff[k];
      cross_at_[k + 1] = cross_at_[k] + running;
    }
    for (int b = 0; b <= count; ++b) border_at_[b + 1] += border_at_[b];
    cross_.resize(static_cast<size_t>(total));
    border_.resize(static_cast<size_t>(border_at_[count + 1]));
    std::vector<int32_t> cross_fill(cross_at_.begin(), cross_at_.end() - 1);
    std::vector<int32_t> border_fill(border_at_.begin(), border_at_.end() - 1);
    for_each_side([&](int sid, long p, long q, bool border) {
      const int lo = std::min(band_[p], band_[q]), hi = std::max(band_[p], band_[q]);
      for (int k = lo; k < hi; ++k) cross_[cross_fill[k]++] = sid;
      if (lo == hi && border) border_[border_fill[lo]++] = sid;
    });
    marks_.assign(static_cast<size_t>(nsides_), 0);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

int band_rings::side_id(int ci, int cj, int s) const {
  switch (s) {
    case 0: return cj * ncx_ + ci;
    case 1: return hsides_ + cj * nx_ + ci + 1;
    case 2: return (cj + 1) * ncx_ + ci;
    default: return hsides_ + cj * nx_ + ci;
  }
}

int band_rings::corner(int ci, int cj, int q) const {
  switch (q & 3) {
    case 0: return cj * nx_ + ci;
    case 1: return cj * nx_ + ci + 1;
    case 2: return (cj + 1) * nx_ + ci + 1;
    default: return (cj + 1) * nx_ + ci;
  }
}

// Moves (ci, cj) across side s when the cell there exists and is defined.
bool band_rings::defined_neighbour(int& ci, int& cj, int s) const {
  int i = ci, j = cj;
  switch (s) {
    case 0: --j; break;
    case 1: ++i; break;
    case 2: ++j; break;
    default: --i; break;
  }
  if (i < 0 || j < 0 || i >= ncx_ || j >= ncy_) return false;
  if (!defined_[static_cast<size_t>(j) * ncx_ + i]) return false;
  ci = i;
  cj = j;
  return true;
}

bool band_rings::crosses(int b1, int b2, int level) const {
  if (level < 0 || level >= count_) return false;
  return std::min(b1, b2) <= level && level < std::max(b1, b2);
}

// The side of cell (ci, cj) that the chord of `level` entering through side s_in leaves by.
// A saddle cell (corners alternately above and below the level) is crossed twice; the
// bilinear surface joins the two corners on the side of the level that its saddle value
// lies on, so the chords cut off the two other corners. Deciding by one value per cell
// keeps the chords of all levels in the cell from crossing one another.
int band_rings::pair_side(int ci, int cj, int level, int s_in) const {
  const int c[4] = {corner(ci, cj, 0), corner(ci, cj, 1), corner(ci, cj, 2), corner(ci, cj, 3)};
  bool high[4];
  for (int q = 0; q < 4; ++q) high[q] = band_[c[q]] > level;
  const bool saddle = high[0] == high[2] && high[1] == high[3] && high[0] != high[1];
  if (!saddle) {
    for (int d = 1; d < 4; ++d) {
      const int o = (s_in + d) & 3;
      if (high[o] != high[(o + 1) & 3]) return o;
    }
    return (s_in + 2) & 3;  // not reached: a crossed cell has two crossed sides
  }
  const double v0 = grid_[c[0]], v1 = grid_[c[1]], v2 = grid_[c[2]], v3 = grid_[c[3]];
  const double centre = (v0 * v2 - v1 * v3) / ((v0 + v2) - (v1 + v3));
  const bool join_high = centre > levels_[level];
  // The corner at the start of s_in is cut off when it is of the kind that is not joined.
  return high[s_in] != join_high ? (s_in + 3) & 3 : (s_in + 1) & 3;
}

// The crossing of `level` on side s of the cell, placed by linear interpolation from the
// left (horizontal sides) or bottom (vertical sides) end in the contour tracer's grid units
// (grid point (1, 1) first), exactly as the tracer places it: both cells of a side compute
// the same point, and band boundaries pass through the very points of the lines.
void band_rings::push_crossing(int ci, int cj, int s, int level, uint8_t how) {
  const double lv = levels_[level];
  double x, y;
  if (s == 0 || s == 2) {
    const int p = s == 0 ? corner(ci, cj, 0) : corner(ci, cj, 3);
    x = (ci + 1) + (lv - grid_[p]) / (grid_[p + 1] - grid_[p]);
    y = s == 0 ? cj + 1 : cj + 2;
  } else {
    const int p = s == 1 ? corner(ci, cj, 1) : corner(ci, cj, 0);
    x = s == 1 ? ci + 2 : ci + 1;
    y = (cj + 1) + (lv - grid_[p]) / (grid_[p + nx_] - grid_[p]);
  }
  ring_.xy.push_back(x);
  ring_.xy.push_back(y);
  ring_.edge.push_back(how);
}

void band_rings::push_corner(int ci, int cj, int q) {
  static const int dx[4] = {0, 1, 1, 0}, dy[4] = {0, 0, 1, 1};
  ring_.xy.push_back(ci + 1 + dx[q & 3]);
  ring_.xy.push_back(cj + 1 + dy[q & 3]);
  ring_.edge.push_back(edge_border);
}

// Having walked border side s of a cell to its end corner V, finds the next border side
// leaving V: the next side of the same cell when no defined cell lies across it, otherwise
// turn clockwise around V through the defined cells. Where two defined cells touch only at
// V this keeps the turn inside the cell, so rings touch there without crossing.
bool band_rings::rotate(int& ci, int& cj, int& s) const {
  int cand = (s + 1) & 3;
  for (int turn = 0; turn < 4; ++turn) {
    int i = ci, j = cj;
    if (!defined_neighbour(i, j, cand)) {
      s = cand;
      return true;
    }
    ci = i;
    cj = j;
    cand = (cand + 3) & 3;
  }
  return false;  // all four cells around V defined: V is not on a border
}

// The first step of the ring through crossing `kind` (0 lower, 1 upper level) of side sid:
// the chord of the cell in which the band's part of the side comes before the crossing
// (counter-clockwise), or, when that cell is missing, the border walk along the side in the
// other cell.
void band_rings::start_at_crossing(int sid, int kind, int& ci, int& cj, int& s,
                                   step& mode) const {
  const bool horizontal = sid < hsides_;
  int i, j, p, q;
  if (horizontal) {
    j = sid / ncx_;
    i = sid % ncx_;
    p = j * nx_ + i;
    q = p + 1;
  } else {
    const int r = sid - hsides_;
    j = r / nx_;
    i = r % nx_;
    p = j * nx_ + i;
    q = p + nx_;
  }
  // The band lies above the lower level and below the upper one.
  const bool band_at_q = kind == 0 ? band_[q] > band_[p] : band_[q] < band_[p];
  int di, dj, ds, oi, oj, os;
  if (horizontal) {
    if (band_at_q) {
      di = i, dj = j - 1, ds = 2, oi = i, oj = j, os = 0;
    } else {
      di = i, dj = j, ds = 0, oi = i, oj = j - 1, os = 2;
    }
  } else {
    if (band_at_q) {
      di = i, dj = j, ds = 3, oi = i - 1, oj = j, os = 1;
    } else {
      di = i - 1, dj = j, ds = 1, oi = i, oj = j, os = 3;
    }
  }
  const bool d_defined = di >= 0 && dj >= 0 && di < ncx_ && dj < ncy_ &&
                         defined_[static_cast<size_t>(dj) * ncx_ + di];
  if (d_defined) {
    ci = di, cj = dj, s = ds, mode = step::chord;
  } else {
    ci = oi, cj = oj, s = os, mode = step::border_from_crossing;
  }
}

// Walks one ring from its first point (already pushed) until it closes.
bool band_rings::walk(int band, int start_sid, int start_kind, int ci, int cj, int s,
                      step mode, long& budget) {
  const int start_ci = ci, start_cj = cj, start_s = s;
  const int level_of[2] = {band - 1, band};
  int kind = start_kind;
  for (;;) {
    if (--budget < 0) return false;
    if (mode == step::chord) {
      const int out = pair_side(ci, cj, level_of[kind], s);
      const int sid = side_id(ci, cj, out);
      push_crossing(ci, cj, out, level_of[kind], kind == 0 ? edge_lower : edge_upper);
      if (sid == start_sid && kind == start_kind) return true;
      marks_[sid] &= static_cast<uint8_t>(~(1u << kind));
      if (defined_neighbour(ci, cj, out)) {
        s = (out + 2) & 3;
      } else {
        s = out;
        mode = step::border_from_crossing;
      }
      continue;
    }
    // Along border side s, counter-clockwise, from a crossing or from its start corner, which
    // then lies in the band.
    const int b_end = band_[corner(ci, cj, s + 1)];
    int next = -1;
    if (mode == step::border_from_crossing) {
      const int other = 1 - kind;
      if (crosses(band_[corner(ci, cj, s)], b_end, level_of[other])) next = other;
    } else if (b_end > band) {
      next = 1;
    } else if (b_end < band) {
      next = 0;
    }
    const int sid = side_id(ci, cj, s);
    if (next >= 0) {
      push_crossing(ci, cj, s, level_of[next], edge_border);
      if (sid == start_sid && next == start_kind) return true;
      marks_[sid] &= static_cast<uint8_t>(~(1u << next));
      kind = next;
      mode = step::chord;
      continue;
    }
    marks_[sid] &= static_cast<uint8_t>(~4u);
    push_corner(ci, cj, s + 1);
    if (!rotate(ci, cj, s)) return false;
    if (start_sid < 0 && ci == start_ci && cj == start_cj && s == start_s) return true;
    mode = step::border_from_corner;
  }
}

bool band_rings::trace(int band, const std::function<void(const shade_ring&)>& sink) {
  if (band < 0 || band > count_) return false;
  const int lower = band - 1, upper = band;
  const int32_t* lower_begin = lower >= 0 ? cross_.data() + cross_at_[lower] : nullptr;
  const int32_t* lower_end = lower >= 0 ? cross_.data() + cross_at_[lower + 1] : nullptr;
  const int32_t* upper_begin = upper < count_ ? cross_.data() + cross_at_[upper] : nullptr;
  const int32_t* upper_end = upper < count_ ? cross_.data() + cross_at_[upper + 1] : nullptr;
  const int32_t* border_begin = border_.data() + border_at_[band];
  const int32_t* border_end = border_.data() + border_at_[band + 1];

  // Every marked item is visited once; a ring adds at most one corner per border side and
  // its closing point, so this budget is only exhausted by a walk that cannot close.
  long budget = 8;
  for (const int32_t* it = lower_begin; it != lower_end; ++it, budget += 3) marks_[*it] |= 1;
  for (const int32_t* it = upper_begin; it != upper_end; ++it, budget += 3) marks_[*it] |= 2;
  for (const int32_t* it = border_begin; it != border_end; ++it, budget += 3) marks_[*it] |= 4;

  bool ok = true;
  auto run = [&](int sid, int kind) {
    ring_.xy.clear();
    ring_.edge.clear();
    int ci, cj, s;
    step mode;
    if (kind >= 0) {
      marks_[sid] &= static_cast<uint8_t>(~(1u << kind));
      start_at_crossing(sid, kind, ci, cj, s, mode);
      push_crossing(ci, cj, s, kind == 0 ? lower : upper, edge_border);
    } else {
      marks_[sid] &= static_cast<uint8_t>(~4u);
      // The one defined cell of a border side, and the side's place in it.
      if (sid < hsides_) {
        const int j = sid / ncx_, i = sid % ncx_;
        const bool above = j < ncy_ && defined_[static_cast<size_t>(j) * ncx_ + i];
        ci = i, cj = above ? j : j - 1, s = above ? 0 : 2;
      } else {
        const int r = sid - hsides_, j = r / nx_, i = r % nx_;
        const bool right = i < ncx_ && defined_[static_cast<size_t>(j) * ncx_ + i];
        ci = right ? i : i - 1, cj = j, s = right ? 3 : 1;
      }
      mode = step::border_from_corner;
      push_corner(ci, cj, s);
    }
    if (!walk(band, kind >= 0 ? sid : -1, kind >= 0 ? kind : 0, ci, cj, s, mode, budget)) {
      ok = false;
      return;
    }
    sink(ring_);
  };
  for (const int32_t* it = lower_begin; ok && it != lower_end; ++it)
    if (marks_[*it] & 1) run(*it, 0);
  for (const int32_t* it = upper_begin; ok && it != upper_end; ++it)
    if (marks_[*it] & 2) run(*it, 1);
  for (const int32_t* it = border_begin; ok && it != border_end; ++it)
    if (marks_[*it] & 4) run(*it, -1);

  // Leave the marks clean for the next band, even after a failed walk.
  for (const int32_t* it = lower_begin; it != lower_end; ++it) marks_[*it] = 0;
  for (const int32_t* it = upper_begin; it != upper_end; ++it) marks_[*it] = 0;
  for (const int32_t* it = border_begin; it != border_end; ++it) marks_[*it] = 0;
  return ok;
}

}  // namespace tervik::detail
