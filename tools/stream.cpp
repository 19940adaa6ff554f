#include <cstdio>
#include <cstdlib>

#include <tervik/records.h>
#include <tervik/streamline.h>

#include "commands.h"
#include "geojson.h"
#include "pictures.h"

namespace tervik::cli {

namespace {
const char kStreamUsage[] =
    "usage: tervik stream U_GRID V_GRID [-o OUT.geojson] [--svg OUT.svg] [--density 1-4]\n";
}

int cmd_stream(const Args& args) {
  Args inputs;
  std::string output, picture;
  int density = 2;
  for (size_t k = 0; k < args.size(); ++k) {
    if (take_output_option(args, k, output, picture)) {
      continue;
    } else if (args[k] == "--density" && k + 1 < args.size()) {
      density = std::atoi(args[++k].c_str());
      if (density < 1 || density > 4) return fail("--density must be 1, 2, 3 or 4");
    } else if (args[k][0] != '-' && inputs.size() < 2) {
      inputs.push_back(args[k]);
    } else {
      std::fputs(kStreamUsage, stderr);
      return 2;
    }
  }
  if (inputs.size() != 2) {
    std::fputs(kStreamUsage, stderr);
    return 2;
  }
  if (output.empty()) output = inputs[0] + ".streamlines.geojson";

  tervik_data4 u, v;
  if (read_datatype4(inputs[0].c_str(), u) != 0) return fail(inputs[0] + ": not a readable grid file");
  if (read_datatype4(inputs[1].c_str(), v) != 0) return fail(inputs[1] + ": not a readable grid file");
  if (u.nx != v.nx || u.ny != v.ny)
    return fail(inputs[1] + ": grid size differs from " + inputs[0]);

  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  if (!tracer.create_streamline(u.data(), v.data(), u.nx, u.ny, u.first_lon, u.first_lat, u.lon_step,
                                u.lat_step, tervik_data4::undef, density))
    return fail("streamline tracing failed");

  GeoJson json;
  json.add_streamlines(layer);
  if (!write_output(output, json.text(), inputs)) return 1;
  if (!picture.empty()) {
    Svg svg = map_canvas(u);
    draw_streamlines(svg, layer);
    svg.frame(std::string("Streamlines: ") + u.description, 10);
    if (!write_output(picture, svg.str(), inputs)) return 1;
  }
  if (!common.quiet)
    std::printf("stream: %d streamlines, %d arrows -> %s\n", layer.line_count, layer.arrow_count,
                output.c_str());
  return 0;
}

}  // namespace tervik::cli
