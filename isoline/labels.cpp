#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdio>

#include <tervik/isoline.h>

#include "isoline/contour_detail.h"

namespace {

// Library-wide label settings. Labels repeat along a line while the repeat setting is above
// one; repeated labels are spaced by more than `kLabelSpacing` map units of line.
const int kLabelRepeat = 6;
const double kLabelSpacing = 40.0;
// Lines shorter than this (map units) are too small to carry a label.
const double kShortestLabelled = 0.1;
// Squared segment lengths at or below this count as vanishing.
const double kVanishing = 2.220446049250313e-16;
const double kDegreesPerRadian = 180.0 / 3.14159265358979323846;

double segment_length(const double* xy, size_t k) {
  const double dx = xy[2 * k] - xy[2 * k - 2], dy = xy[2 * k + 1] - xy[2 * k - 1];
  return std::sqrt(dx * dx + dy * dy);
}

// Length of the line from point `from` to point `to` (map units).
double path_length(const double* xy, size_t from, size_t to) {
  double length = 0.0;
  for (size_t k = from + 1; k <= to; ++k) length += segment_length(xy, k);
  return length;
}

}  // namespace

namespace tervik::detail {

// Whole levels that do not fit an int are printed without decimals too.
void label_text(double level, char (&text)[16]) {
  if (level == std::trunc(level) && level >= INT_MIN && level <= INT_MAX)
    std::snprintf(text, sizeof text, "%d", static_cast<int>(level));
  else if (level == std::trunc(level))
    std::snprintf(text, sizeof text, "%.0f", level);
  else
    std::snprintf(text, sizeof text, "%.1f", level);
}

// A label follows the line where it runs fairly straight (the bend at Q is wider than 120
// degrees); at sharp bends, vertical steps and vanishing segments it stays horizontal.
double label_angle(double px, double py, double qx, double qy, double rx, double ry) {
  const double qpx = px - qx, qpy = py - qy, qrx = rx - qx, qry = ry - qy;
  const double qp2 = qpx * qpx + qpy * qpy, qr2 = qrx * qrx + qry * qry;
  if (qr2 <= kVanishing || qp2 <= kVanishing) return 0.0;
  const double cosine = (qpx * qrx + qpy * qry) / (std::sqrt(qp2) * std::sqrt(qr2));
  if (cosine > -0.5) return 0.0;
  if (qx == px || qx == rx) return 0.0;
  double angle = std::atan2(ry - qy, rx - qx) * kDegreesPerRadian;
  if (angle < 0.0) angle += 360.0;
  return angle;
}

// The first label sits at the first point, level. Further labels go, walking the inner
// points, to the first point whose distance along the line from the last label exceeds the
// spacing. On a closed ring a label is not placed when the rest of the ring is within the
// spacing, which would put it next to the first one again.
void place_labels(contourBuilder& builder, double level, const double* xy, size_t count) {
  if (!xy || count < 2) return;
  const double length = path_length(xy, 0, count - 1);
  if (!(length >= kShortestLabelled)) return;
  char text[16];
  label_text(level, text);
  builder.addLabel(text, xy[0], xy[1], 0.0);
  if (kLabelRepeat <= 1) return;

  const size_t last = count - 1;
  const bool closed = xy[0] == xy[2 * last] && xy[1] == xy[2 * last + 1];
  double since_label = 0.0;
  for (size_t k = 1; k + 1 < count; ++k) {
    since_label += segment_length(xy, k);
    if (!(since_label > kLabelSpacing)) continue;
    if (closed && !(path_length(xy, k, last) > kLabelSpacing)) break;
    const double angle = label_angle(xy[2 * k - 2], xy[2 * k - 1], xy[2 * k], xy[2 * k + 1],
                                     xy[2 * k + 2], xy[2 * k + 3]);
    builder.addLabel(text, xy[2 * k], xy[2 * k + 1], angle);
    since_label = 0.0;
  }
}

}  // namespace tervik::detail
