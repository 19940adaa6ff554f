#ifndef TERVIK_ISOLINE_SHADE_SPLINE_H
#define TERVIK_ISOLINE_SHADE_SPLINE_H

// Cubic Hermite smoothing of a polyline in grid units, the curve the contour tracer draws
// its smoothed lines with.

#include <vector>

namespace tervik::detail {

// Smooths the n points xy[0..2n) into `out` (x, y pairs; cleared first). A closed line has
// its first point repeated at the end. Points closer than `step` to the last kept point are
// passed over; each remaining segment is sampled every `step` along the Hermite curve whose
// tangents are the mean directions of the neighbouring segments, scaled by the segment length
// (at most 0.7). Guard points continue a closed line round its start and mirror an open
// line's ends. The first and the last point are kept exactly. Lines too short to hold a
// point `step` away from either end are copied unchanged.
void hermite_smooth(const double* xy, int n, bool closed, double step, std::vector<double>& out);

}  // namespace tervik::detail

#endif
