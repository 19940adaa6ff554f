#ifndef TERVIK_ISOLINE_CONTOUR_DETAIL_H
#define TERVIK_ISOLINE_CONTOUR_DETAIL_H

// Pieces of the contour tracer that live in their own files: the Hermite smoothing of a
// traced line and the placement of its labels.

#include <cstddef>

class contourBuilder;

namespace tervik::detail {

// Smooths a traced line of `count` points (x, y pairs in grid units, grid point (1,1) at
// (1,1)) with cubic Hermite segments sampled about `step` apart, and writes the result as
// x, y pairs to `out`, a malloc()ed buffer of `capacity` doubles that is doubled with
// realloc() whenever fewer than four doubles of room are left (a null `out` is allocated).
// `nx` and `ny` are the grid size: segments lying along the grid border stay straight.
// Returns the number of doubles written, or 0 when the line is to be kept as it is (no
// point lies a step away from either end) or memory ran out; `out` stays valid either way.
size_t spline_line(const double* xy, size_t count, double step, int nx, int ny, double*& out,
                   size_t& capacity);

// The label text of a level: "%d" when the level is a whole number, else "%.1f".
void label_text(double level, char (&text)[16]);

// Label angle in degrees [0, 360) at Q between its neighbours P and R: the direction of QR,
// or 0 where the line bends sharply, runs vertically or has a vanishing segment.
double label_angle(double px, double py, double qx, double qy, double rx, double ry);

// Places the labels of a line of `count` points (x, y pairs in map coordinates) at `level`
// through `builder.addLabel`: one at the first point, then one every 40 map units.
void place_labels(contourBuilder& builder, double level, const double* xy, size_t count);

}  // namespace tervik::detail

#endif
