#ifndef TERVIK_PLATFORM_NUMERICS_H
#define TERVIK_PLATFORM_NUMERICS_H

// Small numerical services shared by the subsystems.

// Smooths a row-major grid of `rows` x `columns` values in place: first along each row,
// then along each column, with the symmetric kernel whose weights for the offsets
// 0, 1, ..., half_width are weights[0..half_width] (each weight off the centre is applied on
// both sides). Only rows [row_from, row_to) and columns [column_from, column_to) are
// smoothed and read; ranges are clipped to the grid.
//
// Borders: a point near the edge of the range has fewer neighbours on one side; its kernel is
// cut there and the result divided by the sum of the weights actually used, so a constant
// field stays constant up to the edge and nothing outside the range is read. Interior points
// are divided by the full kernel sum too, so a kernel that does not quite sum to one (a
// truncated Gaussian) does not bias the field. Missing-value markers are smoothed like any
// other value; callers that care fill them first.
//
// Returns 0, or 1 (grid untouched) when the arguments are unusable (null pointers, a
// negative half width, non-positive sizes, a zero weight sum) or scratch memory runs out.
int convolve(double* grid, const double* weights, int half_width, int rows, int columns,
             int row_from, int row_to, int column_from, int column_to);

// Direction, in degrees counter-clockwise from the +x axis and in [0, 360), of the vector
// from (x1, y1) to (x2, y2); 0 when the points coincide.
double vector_dir(double x1, double y1, double x2, double y2);

// Sorts values[lo..hi] (both inclusive) ascending in place; NaNs go to the end.
// Does nothing when lo >= hi or values is null.
void do_quick_sort(double* values, int lo, int hi);

#endif
