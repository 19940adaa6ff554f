// tervik objan: objective analysis of station observations onto a grid, then isolines.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <tervik/isoline.h>
#include <tervik/objective.h>
#include <tervik/records.h>

#include "commands.h"
#include "formats/station_csv.h"
#include "geojson.h"
#include "pictures.h"
#include "platform/file_util.h"

namespace tervik::cli {

namespace {

const char kObjanUsage[] =
    "usage: tervik objan STATIONS.csv [--method cressman|cressman-hq|barnes|surface-fit]\n"
    "                    [--box LON0,LON1,LAT0,LAT1] [--step DEG] [--first-guess GRID]\n"
    "                    [--interval X] [-o OUT.grid] [--geojson OUT.geojson] [--svg OUT.svg]\n";

struct Method {
  const char* name;
  int code;  // the analysis parameters' method number
};
const Method kMethods[] = {{"cressman", 1}, {"barnes", 2}, {"surface-fit", 5}, {"cressman-hq", 3}};

bool parse_box(const std::string& s, obj_analysis_param& p) {
  double v[4];
  const char* c = s.c_str();
  for (int k = 0; k < 4; ++k) {
    char* end = nullptr;
    v[k] = std::strtod(c, &end);
    if (end == c || !std::isfinite(v[k]) || (k < 3 && *end != ',') || (k == 3 && *end)) return false;
    c = end + 1;
  }
  p.lon_min = v[0];
  p.lon_max = v[1];
  p.lat_min = v[2];
  p.lat_max = v[3];
  return p.lon_min < p.lon_max && p.lat_min < p.lat_max;
}

// The model grid's value at (lon, lat) by bilinear interpolation, clamped to its border;
// undef where a corner is missing.
double sample(const tervik_data4& g, double lon, double lat) {
  const double fx = std::fmin(std::fmax((lon - g.first_lon) / g.lon_step, 0.0), g.nx - 1.0);
  const double fy = std::fmin(std::fmax((lat - g.first_lat) / g.lat_step, 0.0), g.ny - 1.0);
  const int i = std::min(static_cast<int>(fx), g.nx - 2 < 0 ? 0 : g.nx - 2);
  const int j = std::min(static_cast<int>(fy), g.ny - 2 < 0 ? 0 : g.ny - 2);
  const int i1 = std::min(i + 1, g.nx - 1), j1 = std::min(j + 1, g.ny - 1);
  const double* m = g.data();
  const double c[4] = {m[j * g.nx + i], m[j * g.nx + i1], m[j1 * g.nx + i], m[j1 * g.nx + i1]};
  for (double v : c)
    if (v == tervik_data4::undef) return tervik_data4::undef;
  const double a = c[0] + (c[1] - c[0]) * (fx - i);
  const double b = c[2] + (c[3] - c[2]) * (fx - i);
  return a + (b - a) * (fy - j);
}

std::unique_ptr<daBase> make_scheme(int method) {
  switch (method) {
    case 1: return std::make_unique<daCressman>(5);
    case 2: return std::make_unique<daBarnes>();
    case 5: return std::make_unique<daSurfaceFit>();
    default: return std::make_unique<daCressmanHQ>(5);
  }
}

// Analysis with a first-guess grid read by the caller (the library's driver finds first
// guesses by its own file-naming rules): the same columns as the driver, grid code 11.
bool analyse_with_first_guess(const tervik_data3& stations, const tervik_data4& model,
                              const obj_analysis_param& p, tervik_data4& out) {
  const int nx = static_cast<int>((p.lon_max - p.lon_min) / p.grid_step) + 1;
  const int ny = static_cast<int>((p.lat_max - p.lat_min) / p.grid_step) + 1;
  std::vector<double> guess(static_cast<size_t>(nx) * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i)
      guess[j * nx + i] = sample(model, p.lon_min + i * p.grid_step, p.lat_min + j * p.grid_step);
  std::vector<const station_entry*> valid;
  for (const station_entry& s : stations.stations)
    if (s.value != tervik_data3::undef) valid.push_back(&s);
  const size_t n = valid.size();
  std::vector<double> columns(6 * n);
  for (size_t k = 0; k < n; ++k) {
    const double speed = std::trunc(valid[k]->code / 10000);
    columns[k] = valid[k]->id;
    columns[n + k] = valid[k]->lon;
    columns[2 * n + k] = valid[k]->lat;
    columns[3 * n + k] = valid[k]->value;
    columns[4 * n + k] = valid[k]->code - 10000 * speed;
    columns[5 * n + k] = speed;
  }
  const int column_codes[6] = {1, 2, 3, 4, 5, 6};
  const int grid_codes[2] = {11, 0};
  const int options[3] = {1, 1000, p.enhance_extrema ? 1 : 0};
  std::unique_ptr<daBase> scheme = make_scheme(p.method);
  double* grid = scheme->assimilate(nx, ny, p.lon_min, p.lon_min + (nx - 1) * p.grid_step, p.lat_min,
                                    p.lat_min + (ny - 1) * p.grid_step, static_cast<int>(n),
                                    tervik_data3::undef, column_codes, columns.data(), grid_codes,
                                    guess.data(), options);
  if (!grid) return false;
  out.nx = nx;
  out.ny = ny;
  out.first_lon = p.lon_min;
  out.first_lat = p.lat_min;
  out.lon_step = out.lat_step = p.grid_step;
  out.last_lon = p.lon_min + (nx - 1) * p.grid_step;
  out.last_lat = p.lat_min + (ny - 1) * p.grid_step;
  out.set_gridPtr(grid);
  return true;
}

}  // namespace

int cmd_objan(const Args& args) {
  std::string input, guess_path, grid_path, json_path, picture;
  obj_analysis_param param{70, 140, 15, 60, 0.5, 1, 0, false};
  double interval = 0;
  for (size_t k = 0; k < args.size(); ++k) {
    const std::string& a = args[k];
    const bool has_value = k + 1 < args.size();
    if (a == "--method" && has_value) {
      const std::string m = args[++k];
      int code = -1;
      for (const Method& candidate : kMethods)
        if (m == candidate.name) code = candidate.code;
      if (code < 0) return fail("unknown method '" + m + "' (cressman, cressman-hq, barnes, surface-fit)");
      param.method = code;
    } else if (a == "--box" && has_value) {
      if (!parse_box(args[++k], param)) return fail("--box needs LON0,LON1,LAT0,LAT1 with LON0 < LON1, LAT0 < LAT1");
    } else if (a == "--step" && has_value) {
      param.grid_step = std::atof(args[++k].c_str());
    } else if (a == "--first-guess" && has_value) {
      guess_path = args[++k];
    } else if (a == "--interval" && has_value) {
      interval = std::atof(args[++k].c_str());
      if (!(interval > 0)) return fail("--interval needs a positive number");
    } else if (take_output_option(args, k, grid_path, picture)) {
      continue;
    } else if (a == "--geojson" && has_value) {
      json_path = args[++k];
    } else if (a[0] != '-' && input.empty()) {
      input = a;
    } else {
      std::fputs(kObjanUsage, stderr);
      return 2;
    }
  }
  if (input.empty()) {
    std::fputs(kObjanUsage, stderr);
    return 2;
  }
  if (!(param.grid_step > 0) || (param.lon_max - param.lon_min) / param.grid_step < 1 ||
      (param.lat_max - param.lat_min) / param.grid_step < 1)
    return fail("--step must be positive and smaller than the box");
  if (grid_path.empty()) grid_path = input + ".grid";

  std::string text, error;
  if (!tervik::detail::read_file(input.c_str(), text)) return fail(input + ": cannot read");
  tervik_data3 stations;
  if (!formats::parse_station_csv(text, stations, error)) return fail(input + ": " + error);

  tervik_data4 grid;
  tag_isoline_layer layer{};
  isoline_analysis_param iso;
  iso.level_interval = interval > 0 ? interval : 2;
  iso.spline = true;
  Args inputs = {input};
  if (guess_path.empty()) {
    // Kind 0 is a pressure-like element that carries wind: the geostrophic correction
    // applies. The driver prints its timing on standard output.
    if (!do_objective_analysis(input.c_str(), stations, 1000, 0, param, iso, grid, layer))
      return fail(input + ": objective analysis failed");
  } else {
    inputs.push_back(guess_path);
    tervik_data4 model;
    if (read_datatype4(guess_path.c_str(), model) != 0 || model.nx < 2 || model.ny < 2)
      return fail(guess_path + ": not a readable grid file");
    if (!analyse_with_first_guess(stations, model, param, grid)) return fail(input + ": objective analysis failed");
    double lo = INFINITY, hi = -INFINITY;
    for (const station_entry& s : stations.stations)
      if (s.value != tervik_data3::undef) lo = std::fmin(lo, s.value), hi = std::fmax(hi, s.value);
    iso.level_start = std::ceil(lo / iso.level_interval) * iso.level_interval;
    iso.level_end = std::floor(hi / iso.level_interval) * iso.level_interval;
    iso.first_lon = grid.first_lon, iso.last_lon = grid.last_lon;
    iso.first_lat = grid.first_lat, iso.last_lat = grid.last_lat;
    iso.lon_step = grid.lon_step, iso.lat_step = grid.lat_step;
    if (!do_isoline_analysis(grid, layer, iso)) return fail("contouring the analysis failed");
  }
  std::snprintf(grid.description, sizeof grid.description, "Analysis of %s", input.c_str());
  if (!output_allowed(grid_path, inputs)) return 1;
  if (write_datatype4(grid_path.c_str(), grid) != 0) return fail(grid_path + ": cannot write");
  if (!json_path.empty()) {
    GeoJson json;
    json.add_isolines(layer);
    json.add_stations(stations);
    if (!write_output(json_path, json.text(), inputs)) return 1;
  }
  if (!picture.empty()) {
    Svg svg = map_canvas(grid);
    draw_stations(svg, stations);
    draw_isolines(svg, layer);
    const char* method_name = "cressman-hq";
    for (const Method& m : kMethods)
      if (m.code == param.method) method_name = m.name;
    svg.frame(std::string("Objective analysis (") + method_name + ") of " + input, 10);
    if (!write_output(picture, svg.str(), inputs)) return 1;
  }
  if (!common.quiet)
    std::printf("objan: %d stations -> %dx%d grid, %d isolines -> %s\n", stations.station_count, grid.nx,
                grid.ny, layer.line_count, grid_path.c_str());
  return 0;
}

}  // namespace tervik::cli
