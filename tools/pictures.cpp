#include "pictures.h"

#include "contour_levels.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <cstdio>

namespace tervik::cli {

Svg map_canvas(const tervik_data4& grid) {
  const double x0 = std::min(grid.first_lon, grid.last_lon), x1 = std::max(grid.first_lon, grid.last_lon);
  const double y0 = std::min(grid.first_lat, grid.last_lat), y1 = std::max(grid.first_lat, grid.last_lat);
  // Keep degrees square at the box's middle latitude so shapes look right.
  const double aspect = (y1 - y0) / std::max((x1 - x0) * std::cos((y0 + y1) / 2 * M_PI / 180), 1e-9);
  const int width = 900, margin = 50;
  const int height = static_cast<int>(std::clamp((width - 2 * margin) * aspect, 200.0, 1400.0)) + 2 * margin;
  return Svg(width, height, margin, x0, x1, y0, y1);
}

std::string isoline_picture(const tervik_data4& grid, double interval) {
  Svg svg = map_canvas(grid);
  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.create_isoline(grid.data(), grid.nx, grid.ny, grid.first_lon, grid.first_lat, grid.lon_step,
                        grid.lat_step, contour_levels(grid, interval), tervik_data4::undef);
  if (tag_isoline_layer* layer = builder.getLayer()) {
    draw_isolines(svg, *layer);
    builder.releaseContour();
  }
  svg.frame(grid.description, 10);
  return svg.str();
}

void draw_isolines(Svg& svg, const tag_isoline_layer& layer) {
  for (const tag_isoline& line : layer.lines) {
    std::vector<Point2> pts;
    pts.reserve(line.points.size());
    for (const auto& p : line.points) pts.push_back({p.x, p.y});
    svg.polyline(pts, "#333", 1.0);
  }
  for (const tag_isoline& line : layer.lines) {
    for (const auto& label : line.labels) {
      // Keep text upright: a label is read the same turned by half a circle.
      double angle = label.angle;
      if (angle > 90 && angle < 270) angle -= 180;
      svg.text(label.x, label.y, label.text, 10, "#000", angle);
    }
  }
}

void draw_bands(Svg& svg, const tag_isoline_layer& layer, int colours) {
  std::map<int, std::vector<std::vector<Point2>>> bands;
  for (const tag_shaded_isoline& ring : layer.polygons) {
    std::vector<Point2> pts;
    pts.reserve(ring.points.size());
    for (const auto& p : ring.points) pts.push_back({p.x, p.y});
    bands[ring.first].push_back(std::move(pts));
  }
  for (const auto& [colour, rings] : bands)
    svg.rings(rings, ramp_colour((colour + 1.0) / std::max(colours, 1)), 0.85);
}

void draw_stations(Svg& svg, const tervik_data3& stations) {
  char text[32];
  for (const station_entry& s : stations.stations) {
    if (s.value == tervik_data3::undef) continue;
    svg.circle(s.lon, s.lat, 1.8, "#b03a2e");
    std::snprintf(text, sizeof text, "%.0f", s.value);
    svg.text(s.lon, s.lat, text, 6.5, "#b03a2e", 0, "start");
  }
}

void draw_streamlines(Svg& svg, const tagSTREAMLINE_LAYER& layer) {
  for (const tagSTREAMLINE& line : layer.lines) {
    std::vector<Point2> pts;
    pts.reserve(line.points.size());
    for (const auto& p : line.points) pts.push_back({p.x, p.y});
    svg.polyline(pts, "#1f5fa8", 0.8);
  }
  for (const tagSTREAMLINE_ARROW& a : layer.arrows) svg.arrowhead(a.x1, a.y1, a.x2, a.y2, 7, "#1f5fa8");
}

}  // namespace tervik::cli
