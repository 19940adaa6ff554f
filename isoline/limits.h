#ifndef TERVIK_ISOLINE_LIMITS_H
#define TERVIK_ISOLINE_LIMITS_H

namespace tervik::detail {

// The most levels an analysis takes, from a parameter file or from start, interval and end.
// Ten million levels are far beyond any useful contour map, and well within memory.
constexpr int kMaxLevels = 10000000;

}  // namespace tervik::detail

#endif
