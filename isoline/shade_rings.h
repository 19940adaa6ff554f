#ifndef TERVIK_ISOLINE_SHADE_RINGS_H
#define TERVIK_ISOLINE_SHADE_RINGS_H

// The ring walker behind the filled-contour tracer: finds, band by band, the closed rings
// that bound the part of a grid lying in a band. Coordinates are the contour tracer's grid
// units: the point of column i and row j, counted from 0, lies at (i + 1, j + 1).

#include <cstdint>
#include <functional>
#include <vector>

namespace tervik::detail {

// How a ring point was reached from the point before it: along the grid border or the edge
// of missing data, or along the band's lower or upper level.
enum ring_edge : uint8_t { edge_border = 0, edge_lower = 1, edge_upper = 2 };

// One closed ring: the last point repeats the first. The band lies on the left, so outer
// boundaries run counter-clockwise and holes clockwise (x to the right, y up).
struct shade_ring {
  std::vector<double> xy;      // x0, y0, x1, y1, ...
  std::vector<uint8_t> edge;   // edge[k]: how point k was reached; edge[0] is unused
};

class band_rings {
 public:
  // Classifies the grid against `count` levels sorted ascending (equal levels allowed, no
  // NaN). Band b holds the values v with levels[b-1] < v <= levels[b] (band 0 everything up
  // to levels[0], band count everything above levels[count-1]). Values equal to `undef`,
  // NaN or infinite are missing. The grid and levels are borrowed until the last trace.
  // Returns false when the grid is too large, the bands would need too many side crossings
  // or memory runs out (std::bad_alloc is caught here).
  bool prepare(const double* grid, int nx, int ny, double undef, const double* levels,
               int count);

  // True when some cell has four defined corners.
  bool any_defined_cell() const { return defined_cells_ > 0; }

  // Walks every ring of band `band` (0..count) and hands each to `sink`. Returns false only
  // if a walk fails to close (inconsistent input); the rings delivered before stay delivered.
  bool trace(int band, const std::function<void(const shade_ring&)>& sink);

 private:
  enum class step { chord, border_from_crossing, border_from_corner };

  int side_id(int ci, int cj, int s) const;
  int corner(int ci, int cj, int q) const;
  bool defined_neighbour(int& ci, int& cj, int s) const;
  bool crosses(int b1, int b2, int level) const;
  int pair_side(int ci, int cj, int level, int s_in) const;
  void push_crossing(int ci, int cj, int s, int level, uint8_t how);
  void push_corner(int ci, int cj, int q);
  bool rotate(int& ci, int& cj, int& s) const;
  bool walk(int band, int start_sid, int start_kind, int ci, int cj, int s, step mode,
            long& budget);
  void start_at_crossing(int sid, int kind, int& ci, int& cj, int& s, step& mode) const;

  const double* grid_ = nullptr;
  const double* levels_ = nullptr;
  int count_ = 0;
  int nx_ = 0, ny_ = 0;
  int ncx_ = 0, ncy_ = 0;     // cells per row and per column
  int hsides_ = 0;            // horizontal sides come first, then vertical ones
  int nsides_ = 0;
  long defined_cells_ = 0;
  std::vector<int32_t> band_;       // band of each grid point, -1 when missing
  std::vector<uint8_t> defined_;    // per cell: all four corners defined
  std::vector<int32_t> cross_at_;   // per level, offsets into cross_
  std::vector<int32_t> cross_;      // sides crossed by each level, in side order
  std::vector<int32_t> border_at_;  // per band, offsets into border_
  std::vector<int32_t> border_;     // border sides lying wholly in each band
  std::vector<uint8_t> marks_;      // per side: 1 lower crossing, 2 upper crossing, 4 border
  shade_ring ring_;
};

}  // namespace tervik::detail

#endif
