#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <tervik/isoline.h>
#include <tervik/records.h>

#include "commands.h"
#include "contour_levels.h"
#include "geojson.h"
#include "pictures.h"

namespace tervik::cli {

namespace {
const char kContourUsage[] =
    "usage: tervik contour GRID [-o OUT.geojson] [--svg OUT.svg] [--interval X] [--fill]\n"
    "                      [--smooth 0-3]\n";
}

int cmd_contour(const Args& args) {
  std::string input, output, picture;
  double interval = 0;
  bool fill = false;
  int smoothing = 0;
  for (size_t k = 0; k < args.size(); ++k) {
    if (take_output_option(args, k, output, picture)) {
      continue;
    } else if (args[k] == "--interval" && k + 1 < args.size()) {
      interval = std::atof(args[++k].c_str());
      if (!(interval > 0)) return fail("--interval needs a positive number");
    } else if (args[k] == "--smooth" && k + 1 < args.size()) {
      smoothing = std::atoi(args[++k].c_str());
      if (smoothing < 0 || smoothing > 3) return fail("--smooth needs 0, 1, 2 or 3");
    } else if (args[k] == "--fill") {
      fill = true;
    } else if (input.empty() && args[k][0] != '-') {
      input = args[k];
    } else {
      std::fputs(kContourUsage, stderr);
      return 2;
    }
  }
  if (input.empty()) {
    std::fputs(kContourUsage, stderr);
    return 2;
  }
  if (output.empty()) output = input + ".geojson";

  tervik_data4 grid;
  if (read_datatype4(input.c_str(), grid) != 0) return fail(input + ": not a readable grid file");
  isoline_analysis_param param;
  param.levels = contour_levels(grid, interval);
  if (param.levels.empty()) return fail(input + ": the grid has no values to contour");
  param.use_interval = false;
  param.level_interval = 1;  // positive: bands are numbered upwards
  param.first_lon = grid.first_lon, param.last_lon = grid.last_lon;
  param.first_lat = grid.first_lat, param.last_lat = grid.last_lat;
  param.lon_step = grid.lon_step, param.lat_step = grid.lat_step;
  param.spline = true;
  param.shade = fill;
  param.shade_spline = fill;
  param.smoothing = smoothing;

  tag_isoline_layer layer{};
  if (!do_isoline_analysis(grid, layer, param)) return fail(input + ": no isoline crosses the grid");
  GeoJson json;
  json.add_bands(layer);
  json.add_isolines(layer);
  if (!write_output(output, json.text(), {input})) return 1;
  if (!picture.empty()) {
    Svg svg = map_canvas(grid);
    draw_bands(svg, layer, static_cast<int>(param.levels.size()));
    draw_isolines(svg, layer);
    svg.frame(grid.description, 10);
    if (!write_output(picture, svg.str(), {input})) return 1;
  }
  if (!common.quiet)
    std::printf("contour: %d isolines, %d filled rings at %zu levels -> %s\n", layer.line_count,
                layer.polygon_count, param.levels.size(), output.c_str());
  return 0;
}

}  // namespace tervik::cli
