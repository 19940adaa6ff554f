// End-to-end tests of the tervik program on the sample data: every product's files parse and
// agree with the library calls the program wraps, and bad input fails cleanly.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tervik/tervik.h>

#include "contour_levels.h"
#include "formats/station_csv.h"
#include "support/paths.h"
#include "support/run_program.h"

#ifdef TERVIK_CLI_PATH

namespace {

using json = nlohmann::json;
using tervik::test::run_program;
using tervik::test::scratch_dir;
using tervik::test::source_file;

const std::string kProgram = TERVIK_CLI_PATH;

std::string data(const std::string& name) { return source_file("data/" + name); }

tervik_data4 read_grid(const std::string& path) {
  tervik_data4 g;
  EXPECT_EQ(read_datatype4(path.c_str(), g), 0) << path;
  return g;
}

json read_geojson(const std::string& path) {
  json doc = json::parse(tervik::test::read_text(path), nullptr, false);
  EXPECT_FALSE(doc.is_discarded()) << path << " is not JSON";
  EXPECT_EQ(doc.value("type", ""), "FeatureCollection") << path;
  return doc;
}

size_t count_kind(const json& doc, const std::string& kind) {
  size_t n = 0;
  for (const json& f : doc["features"]) n += f["properties"]["kind"] == kind;
  return n;
}

// The picture is well-formed XML and renders to a non-empty PNG.
void expect_picture_draws(const std::string& svg) {
  EXPECT_EQ(std::system(("xmllint --noout '" + svg + "'").c_str()), 0) << svg;
  const std::string png = svg + ".png";
  EXPECT_EQ(std::system(("rsvg-convert -o '" + png + "' '" + svg + "'").c_str()), 0) << svg;
  std::error_code ec;
  EXPECT_GT(std::filesystem::file_size(png, ec), 1000u) << png;
}

bool exists(const std::string& path) {
  std::error_code ec;
  return std::filesystem::exists(path, ec);
}

bool same_values(const tervik_data4& a, const tervik_data4& b) {
  return a.nx == b.nx && a.ny == b.ny && a.data() && b.data() &&
         std::memcmp(a.data(), b.data(), sizeof(double) * a.nx * a.ny) == 0;
}

TEST(Program, ContourWritesTheDriversLinesLabelsAndBands) {
  const std::string dir = scratch_dir();
  const auto r = run_program(kProgram, {"contour", data("z500.grid"), "--fill", "-o", dir + "/z.geojson",
                                        "--svg", dir + "/z.svg"});
  ASSERT_EQ(r.status, 0) << r.err;

  const tervik_data4 grid = read_grid(data("z500.grid"));
  isoline_analysis_param param;
  param.levels = tervik::cli::contour_levels(grid, 0);
  param.use_interval = false;
  param.level_interval = 1;
  param.first_lon = grid.first_lon, param.last_lon = grid.last_lon;
  param.first_lat = grid.first_lat, param.last_lat = grid.last_lat;
  param.lon_step = grid.lon_step, param.lat_step = grid.lat_step;
  param.spline = param.shade = param.shade_spline = true;
  tag_isoline_layer layer{};
  ASSERT_TRUE(do_isoline_analysis(grid, layer, param));

  size_t labels = 0, outer = 0;
  for (const auto& line : layer.lines) labels += line.labels.size();
  for (const auto& ring : layer.polygons) outer += ring.second == 0;
  const json doc = read_geojson(dir + "/z.geojson");
  EXPECT_EQ(count_kind(doc, "isoline"), layer.lines.size());
  EXPECT_EQ(count_kind(doc, "label"), labels);
  EXPECT_EQ(count_kind(doc, "band"), outer);
  for (const json& f : doc["features"]) {
    if (f["properties"]["kind"] != "band") continue;
    for (const json& ring : f["geometry"]["coordinates"])
      EXPECT_EQ(ring.front(), ring.back()) << "RFC 7946 rings are closed";
  }
  // The first line's coordinates are the library's, in [longitude, latitude] order.
  const json& first = doc["features"][count_kind(doc, "band")]["geometry"]["coordinates"];
  ASSERT_EQ(first.size(), layer.lines[0].points.size());
  EXPECT_EQ(first[0][0].get<double>(), layer.lines[0].points[0].x);
  EXPECT_EQ(first[0][1].get<double>(), layer.lines[0].points[0].y);
  expect_picture_draws(dir + "/z.svg");
}

TEST(Program, StreamWritesTheTracersLinesAndArrows) {
  const std::string dir = scratch_dir();
  const auto r = run_program(kProgram, {"stream", data("u850.grid"), data("v850.grid"), "--density", "1", "-o",
                                        dir + "/s.geojson", "--svg", dir + "/s.svg"});
  ASSERT_EQ(r.status, 0) << r.err;
  const tervik_data4 u = read_grid(data("u850.grid")), v = read_grid(data("v850.grid"));
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  ASSERT_TRUE(tracer.create_streamline(u.data(), v.data(), u.nx, u.ny, u.first_lon, u.first_lat, u.lon_step,
                                       u.lat_step, tervik_data4::undef, 1));
  size_t drawable = 0;
  for (const auto& line : layer.lines) drawable += line.points.size() >= 2;
  const json doc = read_geojson(dir + "/s.geojson");
  EXPECT_EQ(count_kind(doc, "streamline"), drawable);
  EXPECT_EQ(count_kind(doc, "arrow"), layer.arrows.size());
  expect_picture_draws(dir + "/s.svg");
}

TEST(Program, ObjectiveAnalysisGivesTheDriversGrid) {
  const std::string dir = scratch_dir();
  const auto r = run_program(kProgram, {"objan", data("stations.csv"), "--method", "barnes", "--box",
                                        "70,140,15,60", "--step", "1", "-o", dir + "/a.grid", "--geojson",
                                        dir + "/a.geojson", "--svg", dir + "/a.svg"});
  ASSERT_EQ(r.status, 0) << r.err;

  tervik_data3 stations;
  std::string error;
  ASSERT_TRUE(tervik::formats::parse_station_csv(tervik::test::read_text(data("stations.csv")), stations, error));
  const obj_analysis_param param{70, 140, 15, 60, 1, 2, 0, false};
  isoline_analysis_param iso;
  iso.level_interval = 2;
  iso.spline = true;
  tervik_data4 expected;
  tag_isoline_layer layer{};
  ASSERT_TRUE(do_objective_analysis(data("stations.csv").c_str(), stations, 1000, 0, param, iso, expected, layer));
  EXPECT_TRUE(same_values(read_grid(dir + "/a.grid"), expected));
  const json doc = read_geojson(dir + "/a.geojson");
  EXPECT_EQ(count_kind(doc, "station"), stations.stations.size());
  expect_picture_draws(dir + "/a.svg");
}

TEST(Program, DiagnosticOfASouthFirstGridMatchesTheNorthFirstComputation) {
  const std::string dir = scratch_dir();
  const auto r = run_program(kProgram, {"diag", "vor", data("u850.grid"), data("v850.grid"), "-o", dir + "/vor.grid"});
  ASSERT_EQ(r.status, 0) << r.err;
  // The same winds turned north row first, as the finite differences expect.
  tervik_data4 u = read_grid(data("u850.grid")), v = read_grid(data("v850.grid"));
  const int nx = u.nx, ny = u.ny;
  std::vector<double> un(u.data(), u.data() + nx * ny), vn(v.data(), v.data() + nx * ny), out(nx * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) {
      un[j * nx + i] = u.data()[(ny - 1 - j) * nx + i];
      vn[j * nx + i] = v.data()[(ny - 1 - j) * nx + i];
    }
  double lo, hi;
  ASSERT_EQ(compute_field_vor(out.data(), &lo, &hi, un.data(), vn.data(), nx, ny, u.last_lat, -u.lat_step,
                              u.first_lon, u.lon_step, 1e5), 0);
  const tervik_data4 got = read_grid(dir + "/vor.grid");
  ASSERT_EQ(got.nx, nx);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) ASSERT_EQ(got.data()[j * nx + i], out[(ny - 1 - j) * nx + i]) << i << "," << j;
  // A cyclone: the largest vorticity is positive (counter-clockwise turning).
  EXPECT_GT(hi, 5.0);
}

TEST(Program, LevelStackDiagnosticTakesItsLevelsFromTheGridFiles) {
  // CAPE of three columns on 1000, 850 and 500 hPa: a warm moist, a cool and a dry column.
  const std::string dir = scratch_dir();
  const double t[3][3] = {{30, 15, 24}, {20, 8, 16}, {-5, -20, -12}};
  const double td[3][3] = {{24, 5, 0}, {16, 0, -10}, {-15, -40, -30}};
  const int levels[3] = {1000, 850, 500};
  std::vector<std::string> args = {"diag", "cape", "-o", dir + "/cape.grid"};
  std::vector<std::string> td_paths;
  for (int z = 0; z < 3; ++z) {
    for (int which = 0; which < 2; ++which) {
      tervik_data4 g;
      g.nx = 3, g.ny = 1, g.level = levels[z], g.lon_step = 1, g.lat_step = -1;
      double* v = static_cast<double*>(std::malloc(3 * sizeof(double)));
      for (int i = 0; i < 3; ++i) v[i] = which ? td[z][i] : t[z][i];
      g.set_gridPtr(v);
      const std::string path = dir + (which ? "/td" : "/t") + std::to_string(levels[z]) + ".grid";
      ASSERT_EQ(write_datatype4(path.c_str(), g), 0);
      (which ? td_paths : args).push_back(path);
    }
  }
  args.insert(args.end(), td_paths.begin(), td_paths.end());
  const auto r = run_program(kProgram, args);
  ASSERT_EQ(r.status, 0) << r.err;
  const double* t_levels[3] = {t[0], t[1], t[2]};
  const double* td_levels[3] = {td[0], td[1], td[2]};
  const double p[3] = {1000, 850, 500};
  double expected[3], lo, hi;
  ASSERT_EQ(compute_field_cape(expected, &lo, &hi, t_levels, td_levels, p, 3, 3, 1, 1.0), 0);
  const tervik_data4 got = read_grid(dir + "/cape.grid");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(got.data()[i], expected[i]) << i;
  EXPECT_GT(expected[0], 100.0);  // the warm moist column is unstable
}

TEST(Program, EnsembleMeanIsTheLibrarysMean) {
  const std::string dir = scratch_dir();
  std::vector<std::string> args = {"ensemble", "mean", "-o", dir + "/mean.grid"};
  std::vector<tervik_data4> members;
  for (int m = 0; m < 12; ++m) {
    char name[32];
    std::snprintf(name, sizeof name, "ensemble/t850_m%02d.grid", m);
    args.push_back(data(name));
    members.push_back(read_grid(data(name)));
  }
  const auto r = run_program(kProgram, args);
  ASSERT_EQ(r.status, 0) << r.err;
  tervik_data4 expected;
  ASSERT_EQ(compute_griddata_mean(members, std::vector<int>(12, 2), 2, 850, 0, expected), 0);
  const tervik_data4 got = read_grid(dir + "/mean.grid");
  EXPECT_TRUE(same_values(got, expected));
  EXPECT_STREQ(got.description, expected.description);
}

TEST(Program, DemoWritesEveryProductAndEveryPictureDraws) {
  const std::string dir = scratch_dir() + "/demo";
  const auto r = run_program(kProgram, {"--quiet", "demo", dir});
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* f : {"z500-contours.geojson", "wind850-streamlines.geojson", "slp-cressman.grid",
                        "slp-cressman-hq.grid", "slp-barnes.geojson", "slp-surface-fit.grid", "vorticity850.grid",
                        "sounding-report.txt", "ensemble-t850-p90.grid", "ensemble-wind850-mean.grid",
                        "ensemble-rh850-mean.grid"})
    EXPECT_TRUE(exists(dir + "/" + f)) << f;
  size_t pictures = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() != ".svg") continue;
    expect_picture_draws(entry.path().string());
    ++pictures;
  }
  EXPECT_EQ(pictures, 10u);  // contours, streamlines, four analyses, vorticity, skew-T, two ensemble
}

TEST(Program, BadInputFailsWithOneLineNamingTheFileAndWritesNothing) {
  const std::string dir = scratch_dir();
  const std::string bad_csv = dir + "/bad.csv";
  std::ofstream(bad_csv) << "id,lon,lat,value\n1,100,40,1012\n2,100,abc,1013\n";
  const std::string out = dir + "/out.grid";
  struct Case {
    std::vector<std::string> args;
    int status;
    std::string message;
  } cases[] = {
      {{"contour", dir + "/missing.grid", "-o", out}, 1, "tervik: " + dir + "/missing.grid: not a readable grid file\n"},
      {{"objan", bad_csv, "-o", out}, 1, "tervik: " + bad_csv + ": line 3: latitude 'abc' is not in -90..90\n"},
      {{"contour", data("z500.grid"), "-o", data("z500.grid")}, 1,
       "tervik: " + data("z500.grid") + ": refusing to overwrite an input file\n"},
      {{"diag", "nosuch", "a", "b"}, 2, "tervik: unknown diagnostic 'nosuch'\n"},
      {{"frobnicate"}, 2, "tervik: unknown command 'frobnicate' (see tervik --help)\n"},
  };
  for (const Case& c : cases) {
    const auto r = run_program(kProgram, c.args);
    EXPECT_EQ(r.status, c.status) << c.args[0];
    EXPECT_EQ(r.err.substr(0, r.err.find('\n') + 1), c.message);
    EXPECT_FALSE(exists(out)) << c.args[0];
  }
  const tervik_data4 untouched = read_grid(data("z500.grid"));
  EXPECT_EQ(untouched.nx, 141);
}

TEST(Program, HelpAndVersion) {
  const auto help = run_program(kProgram, {"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* command : {"contour", "stream", "objan", "sounding", "diag", "ensemble", "demo"})
    EXPECT_NE(help.out.find(std::string("  ") + command + " "), std::string::npos) << command;
  const auto version = run_program(kProgram, {"--version"});
  EXPECT_EQ(version.out, std::string("tervik ") + TERVIK_VERSION_STRING + "\n");
}

}  // namespace

#endif
