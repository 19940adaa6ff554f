// The skew-T / log-p diagram: the vertical axis is -ln p, so equal pressure ratios take
// equal heights, and isotherms lean 45 degrees to the right, which separates the
// temperature and dew-point curves of a real sounding and makes the parcel's buoyancy (its
// distance to the right of the temperature curve) easy to read.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <tervik/sounding.h>

#include "pictures.h"

namespace tervik::cli {

namespace {

constexpr double kMissing = 9999.0;
constexpr double kBottom = 1050.0, kTop = 100.0;  // hPa
constexpr double kTLeft = -40.0, kTRight = 50.0;  // deg C along the bottom edge
constexpr int kWidth = 820, kHeight = 900, kMargin = 60;

// Data coordinates: x is the temperature shifted right by skew * y, y = ln(kBottom / p).
struct Axes {
  double skew;
  Point2 at(double p, double t) const {
    const double y = std::log(kBottom / p);
    return {t + skew * y, y};
  }
};

Axes make_axes() {
  // Choose the shift so that an isotherm rises one pixel for every pixel it moves right.
  const double top = std::log(kBottom / kTop);
  const double px_per_y = (kHeight - 2 * kMargin) / top, px_per_x = (kWidth - 2 * kMargin) / (kTRight - kTLeft);
  return {px_per_y / px_per_x};
}

std::string fixed(double v, int decimals) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
  return buf;
}

void draw_background(Svg& svg, const Axes& ax) {
  // Dry adiabats every 10 deg C of potential temperature.
  for (double th = -30; th <= 170; th += 10) {
    std::vector<Point2> pts;
    for (double p = kBottom; p >= kTop - 1e-9; p -= 10) pts.push_back(ax.at(p, t_dry_adiabat(p, th)));
    svg.polyline(pts, "#d9a066", 0.7);
  }
  // Pseudo-adiabats, named by the temperature where they cross 1000 hPa; above 200 hPa
  // they run along the dry adiabats and are left out.
  for (double t1000 = -20; t1000 <= 36; t1000 += 4) {
    const double th_se = theta_se_s(1000.0, t1000);
    std::vector<Point2> pts;
    for (double p = kBottom; p >= 200 - 1e-9; p -= 10) pts.push_back(ax.at(p, t_wet_adiabat(p, th_se)));
    svg.polyline(pts, "#8cc08c", 0.6, "5,3");
  }
  // Isotherms every 10 deg C.
  for (double t = -140; t <= kTRight; t += 10)
    svg.polyline({ax.at(kBottom, t), ax.at(kTop, t)}, t == 0 ? "#5b7fb5" : "#a9bdd9", t == 0 ? 1.2 : 0.7);
  // Isobars every 100 hPa.
  for (double p = 1000; p >= kTop; p -= 100) {
    const double y = std::log(kBottom / p);
    svg.polyline({{kTLeft, y}, {kTRight, y}}, "#9a9a9a", 0.8);
  }
}

void draw_axis_labels(Svg& svg, const Axes& ax) {
  for (double p = 1000; p >= kTop; p -= 100) {
    const double y = std::log(kBottom / p);
    svg.text_px(svg.px(kTLeft) - 6, svg.py(y) + 4, fixed(p, 0), 11, "#333", "end");
  }
  svg.text_px(svg.px(kTLeft) - 6, svg.py(std::log(kBottom / kTop)) - 14, "hPa", 11, "#333", "end");
  // Isotherms are labelled below the bottom edge where they start; the colder ones, which
  // enter through the left edge, above the top edge where they leave.
  const double y_top = std::log(kBottom / kTop);
  for (double t = -140; t <= kTRight; t += 10) {
    const double xb = ax.at(kBottom, t).x, xt = ax.at(kTop, t).x;
    if (xb >= kTLeft - 1e-9)
      svg.text_px(svg.px(xb), svg.py(0) + 16, fixed(t, 0), 11, "#333", "middle");
    else if (xt >= kTLeft + 3 && xt <= kTRight - 3)
      svg.text_px(svg.px(xt), svg.py(y_top) - 5, fixed(t, 0), 10, "#5b7fb5", "middle");
  }
  svg.text_px(svg.px(kTRight), svg.py(0) + 34, "temperature (°C)", 11, "#333", "end");
}

// A curve through the levels that have the value `get` picks, bottom up.
template <class Get>
std::vector<Point2> profile(const std::vector<tag_tlogp_layer>& L, const Axes& ax, Get get) {
  std::vector<Point2> pts;
  for (const tag_tlogp_layer& l : L) {
    const double v = get(l);
    if (l.p != kMissing && l.p > 0 && v != kMissing) pts.push_back(ax.at(l.p, v));
  }
  return pts;
}

struct Mark {
  const char* name;
  double p;
  const char* colour;
};

}  // namespace

Svg skewt_diagram(const tag_tlogp_station& sounding) {
  const Axes ax = make_axes();
  Svg svg(kWidth, kHeight, kMargin, kTLeft, kTRight, 0.0, std::log(kBottom / kTop));
  // The library's profile functions take a writable array; they do not change it.
  std::vector<tag_tlogp_layer> L = sounding.layers;
  const int n = static_cast<int>(L.size());
  tag_tlogp_layer* layers = L.data();

  svg.begin_clip();
  draw_background(svg, ax);
  svg.polyline(profile(L, ax, [](const tag_tlogp_layer& l) { return l.t; }), "#d62728", 2.2);
  svg.polyline(profile(L, ax, [](const tag_tlogp_layer& l) { return l.td; }), "#2ca02c", 2.2);

  // The surface parcel: the first valid level lifted dry to its condensation level, then
  // along the pseudo-adiabat.
  const auto ground = std::find_if(L.begin(), L.end(), [](const tag_tlogp_layer& l) { return l.valid; });
  std::vector<Mark> marks;
  if (ground != L.end()) {
    const double p0 = ground->p, t0 = ground->t, td0 = ground->td;
    std::vector<Point2> path;
    // From the parcel's own level, then on every multiple of 5 hPa above it.
    for (double p = p0; p >= kTop - 1e-9; p = (std::ceil(p / 5) - 1) * 5) {
      // The pseudo-adiabat is searched within -100..100 deg C; a parcel colder than that
      // (only near 100 hPa) would follow the bracket's end, so the path stops there.
      const double t = t_lift2p(p0, t0, td0, p);
      if (t == kMissing || !std::isfinite(t) || t < -99.9) break;
      path.push_back(ax.at(p, t));
    }
    svg.polyline(path, "#111", 1.6, "7,4");

    double p = kMissing, t = kMissing, td = kMissing;
    if (LCL(layers, n, &p, &t)) marks.push_back({"LCL", p, "#1f77b4"});
    p = kMissing;
    if (LFC(layers, n, &p, &t, &td)) marks.push_back({"LFC", p, "#ff7f0e"});
    p = kMissing;  // EL may succeed without writing
    if (EL(layers, n, &p, &t, &td) && p != kMissing) marks.push_back({"EL", p, "#9467bd"});
    // Labels to the right of their marks, from the top down, pushed apart where the levels
    // are close.
    std::sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) { return a.p < b.p; });
    double last_label_y = -1e9;
    for (const Mark& m : marks) {
      if (!(m.p > kTop && m.p <= kBottom)) continue;
      const Point2 at = ax.at(m.p, t_lift2p(p0, t0, td0, m.p));
      const double x = svg.px(at.x), y = svg.py(at.y);
      const double label_y = std::max(y + 4, last_label_y + 14);
      last_label_y = label_y;
      svg.line_px(x - 10, y, x + 22, y, m.colour, 1.6);
      svg.circle(at.x, at.y, 4, m.colour);
      svg.text_px(x + 26, label_y, std::string(m.name) + " " + fixed(m.p, 0) + " hPa", 12, m.colour, "start");
    }
  }
  svg.end_clip();

  draw_axis_labels(svg, ax);
  char title[64];
  std::snprintf(title, sizeof title, "Skew-T log-p: station %05d", static_cast<int>(sounding.station));
  svg.frame("", 0);
  svg.text_px(kWidth / 2.0, 24, title, 15, "#111", "middle");

  // Legend in the top left corner, where the cold upper air leaves the diagram empty.
  const double lx = kMargin + 10, ly = kMargin + 12;
  svg.rect_px(lx, ly, 190, 168, "white", "#666", 0.9);
  struct Index {
    const char* name;
    double value;
    const char* unit;
    int decimals;
  };
  const Index indices[] = {{"CAPE", CAPE(layers, n), " J/kg", 0},
                           {"CIN", CIN(layers, n), " J/kg", 0},
                           {"LI", LI(layers, n), " °C", 1},
                           {"K", K(layers, n), " °C", 1}};
  char station[32];
  std::snprintf(station, sizeof station, "station %05d", static_cast<int>(sounding.station));
  svg.text_px(lx + 10, ly + 20, station, 13, "#111", "start");
  double y = ly + 40;
  for (const Index& i : indices) {
    const std::string value = i.value == kMissing ? "n/a" : fixed(i.value, i.decimals) + i.unit;
    svg.text_px(lx + 10, y, i.name, 12, "#111", "start");
    svg.text_px(lx + 180, y, value, 12, "#111", "end");
    y += 17;
  }
  const struct {
    const char* name;
    const char* colour;
    double width;
    const char* dash;
  } keys[] = {{"temperature", "#d62728", 2.2, ""}, {"dew point", "#2ca02c", 2.2, ""}, {"surface parcel", "#111", 1.6, "7,4"}};
  for (const auto& k : keys) {
    svg.line_px(lx + 10, y - 4, lx + 40, y - 4, k.colour, k.width, k.dash);
    svg.text_px(lx + 48, y, k.name, 12, "#111", "start");
    y += 17;
  }
  return svg;
}

}  // namespace tervik::cli
