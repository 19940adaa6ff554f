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

int cmd_contour(const Args& args) {
  std::string input, output, picture;
  double interval = 0;
  for (size_t k = 0; k < args.size(); ++k) {
    if ((args[k] == "-o" || args[k] == "--output") && k + 1 < args.size()) {
      output = args[++k];
    } else if (args[k] == "--svg" && k + 1 < args.size()) {
      picture = args[++k];
    } else if (args[k] == "--interval" && k + 1 < args.size()) {
      interval = std::atof(args[++k].c_str());
      if (!(interval > 0)) return fail("--interval needs a positive number");
    } else if (input.empty() && args[k][0] != '-') {
      input = args[k];
    } else {
      std::fprintf(stderr, "usage: tervik contour GRID [-o OUT.geojson] [--svg OUT.svg] [--interval X]\n");
      return 2;
    }
  }
  if (input.empty()) {
    std::fprintf(stderr, "usage: tervik contour GRID [-o OUT.geojson] [--svg OUT.svg] [--interval X]\n");
    return 2;
  }
  if (output.empty()) output = input + ".geojson";

  tervik_data4 grid;
  if (read_datatype4(input.c_str(), grid) != 0) return fail(input + ": not a readable grid file");
  const std::vector<double> levels = contour_levels(grid, interval);
  if (levels.empty()) return fail(input + ": the grid has no values to contour");

  isolineContourBuilder builder;
  isoline_analysis_gx tracer(&builder);
  tracer.create_isoline(grid.data(), grid.nx, grid.ny, grid.first_lon, grid.first_lat,
                        grid.lon_step, grid.lat_step, levels, tervik_data4::undef);
  GeoJson json;
  Svg svg = map_canvas(grid);
  if (tag_isoline_layer* layer = builder.getLayer()) {
    json.add_isolines(*layer);
    draw_isolines(svg, *layer);
    builder.releaseContour();
  }
  svg.frame(grid.description, 10);
  if (!write_output(output, json.text(), {input})) return 1;
  if (!picture.empty() && !write_output(picture, svg.str(), {input})) return 1;
  if (!common.quiet)
    std::printf("contour: %zu features at %zu levels -> %s\n", json.feature_count(), levels.size(),
                output.c_str());
  return 0;
}

}  // namespace tervik::cli
