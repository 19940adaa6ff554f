#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <regex>
#include <string>
#include <vector>

#include <tervik/objective.h>

#include "objective/stations.h"
#include "support/paths.h"

using namespace tervik::test;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

namespace {

const obj_analysis_param kParam{100.0, 130.0, 25.0, 50.0, 1.0, 1, 0, false};

// Heights close enough to their mean that no Cressman pass rejects a station.
double gentle(double lon, double lat) { return 5600.0 + 0.7 * (lon - 115.0) + 0.7 * (lat - 37.5); }

tervik_data3 record(const Stations& s, double code = 0.0) {
  tervik_data3 r;
  for (int k = 0; k < s.count(); ++k)
    r.stations.push_back({static_cast<int32_t>(s.id[k]), {}, s.lon[k], s.lat[k], code, s.value[k]});
  r.station_count = static_cast<int32_t>(r.stations.size());
  return r;
}

struct Outcome {
  bool ok;
  std::string out, err;
  tervik_data4 grid;
  isoline_analysis_param iso;
};

Outcome analyse(const tervik_data3& r, const obj_analysis_param& p, int kind = 1,
                const char* file = "D:\\data\\obs\\500\\24031508.000") {
  Outcome o;
  o.iso.level_interval = 40;
  tag_isoline_layer layer{};
  CaptureStdout();
  CaptureStderr();
  o.ok = do_objective_analysis(file, r, 500, kind, p, o.iso, o.grid, layer);
  o.err = GetCapturedStderr();
  o.out = GetCapturedStdout();
  return o;
}

double at(const tervik_data4& g, double lon, double lat) {
  return g.data()[static_cast<size_t>(std::lround((lat - g.first_lat) / g.lat_step)) * g.nx +
                  std::lround((lon - g.first_lon) / g.lon_step)];
}

TEST(ObjectiveDriver, AnalysesTimesAndFillsTheGridAndTheIsolineArea) {
  const Domain d{31, 26, 100.0, 130.0, 25.0, 50.0};
  Stations s = random_stations(d, 300, 21, gentle);
  for (int method : {1, 2, 3, 5}) {
    obj_analysis_param p = kParam;
    p.method = method;
    const Outcome o = analyse(record(s), p);
    ASSERT_TRUE(o.ok) << method << o.err;
    EXPECT_TRUE(std::regex_match(o.out, std::regex("It takes [0-9]+ milliseconds\\.\n"))) << o.out;
    EXPECT_EQ(o.grid.nx, 31);
    EXPECT_EQ(o.grid.ny, 26);
    EXPECT_EQ(o.grid.last_lon, 130.0);
    EXPECT_EQ(o.grid.lat_step, 1.0);
    EXPECT_NEAR(at(o.grid, 115, 37), gentle(115, 37), 1.0) << method;
    EXPECT_TRUE(o.iso.area_set);
    EXPECT_EQ(o.iso.first_lon, 100.0);
    EXPECT_EQ(o.iso.last_lat, 50.0);
    EXPECT_EQ(o.iso.lon_step, 1.0);
    // The smallest value starts at 999, so heights all above it start the levels at 1000.
    const double largest = *std::max_element(s.value.begin(), s.value.end());
    EXPECT_TRUE(o.iso.use_interval);
    EXPECT_EQ(o.iso.level_start, 1000.0);
    EXPECT_EQ(o.iso.level_end, 40 * std::floor(largest / 40));
  }
}

TEST(ObjectiveDriver, DerivesLevelsFromTheStationRangeOnlyWhenTheAreaIsUnset) {
  Stations s;
  s.add(1, 110, 30, -17.5);
  s.add(2, 120, 40, 3.2);
  s.add(3, 115, 45, tervik_data3::undef);  // takes no part
  tag_isoline_layer layer{};
  tervik_data4 grid;
  isoline_analysis_param iso;
  iso.level_interval = 2.5;  // truncated to 2 for the multiples
  iso.levels = {1, 2, 3};
  iso.use_interval = false;
  CaptureStdout();
  const bool derived = do_objective_analysis("none", record(s), 850, 2, kParam, iso, grid, layer);
  // Set area: levels and area stay as the caller gave them.
  isoline_analysis_param fixed;
  fixed.area_set = true;
  fixed.first_lon = 100, fixed.last_lon = 130, fixed.first_lat = 25, fixed.last_lat = 50;
  fixed.lon_step = fixed.lat_step = 1;
  fixed.level_start = -10, fixed.level_interval = 5, fixed.level_end = 0;
  const bool kept = do_objective_analysis("none", record(s), 850, 2, kParam, fixed, grid, layer);
  GetCapturedStdout();
  ASSERT_TRUE(derived);
  EXPECT_EQ(iso.level_start, -16.0);
  EXPECT_EQ(iso.level_end, 2.0);
  EXPECT_EQ(iso.level_interval, 2.5);
  EXPECT_TRUE(iso.levels.empty());
  EXPECT_GT(layer.line_count, 0);
  ASSERT_TRUE(kept);
  EXPECT_EQ(fixed.level_start, -10.0);
  EXPECT_EQ(fixed.level_end, 0.0);
}

TEST(ObjectiveDriver, MethodChoosesTheSchemeWhoseMessageReportsNoStation) {
  struct Case { int method; const char* err; };
  const Case cases[] = {
      {1, "daCressman::assimilate: no station has valid height.\n"},
      {0, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {3, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {4, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {5, "daSurfaceFit::assimilate: no station has valid height.\n"},
      {2, "do_objective_analysis: no station has a valid value.\n"},
  };
  Stations undef;
  undef.add(1, 110, 30, tervik_data3::undef);
  undef.add(2, 111, 31, NAN);
  for (const Case& c : cases) {
    obj_analysis_param p = kParam;
    p.method = c.method;
    for (const Stations& s : {Stations{}, undef}) {
      const Outcome o = analyse(record(s), p);
      EXPECT_FALSE(o.ok);
      EXPECT_EQ(o.err, c.err) << c.method;
      EXPECT_EQ(o.out.rfind("It takes ", 0), 0u);
      EXPECT_EQ(o.grid.data(), nullptr);
    }
  }
}

TEST(ObjectiveDriver, RefusesAGridStepThatLeavesFewerThanTwoColumnsOrRows) {
  Stations s;
  s.add(1, 110, 30, 5500);
  struct Case { double lon_min, lon_max, lat_min, lat_max, step; };
  const Case cases[] = {{100, 130, 25, 50, 0.0},  {100, 130, 25, 50, -1.0}, {100, 130, 25, 50, NAN},
                        {100, 130, 25, 50, 26.0}, {130, 100, 25, 50, 1.0},  {100, 100, 25, 50, 1.0},
                        {100, 130, 50, 25, 1.0},  {100, 130, 25, 50, 1e-9}, {100, INFINITY, 25, 50, 1.0}};
  for (const Case& c : cases) {
    const obj_analysis_param p{c.lon_min, c.lon_max, c.lat_min, c.lat_max, c.step, 1, 0, false};
    const Outcome o = analyse(record(s), p);
    EXPECT_FALSE(o.ok) << c.step;
    EXPECT_EQ(o.err.rfind("do_objective_analysis: grid step ", 0), 0u) << o.err;
    EXPECT_EQ(o.grid.data(), nullptr);
  }
}

TEST(ObjectiveDriver, WindPackedInTheCodeEntersOnlyForPressureAndHeight) {
  const Domain d{31, 26, 100.0, 130.0, 25.0, 50.0};
  Stations s = random_stations(d, 40, 5, gentle);
  const obj_analysis_param p = kParam;  // daCressman, no first guess
  const Outcome calm = analyse(record(s, 0.0), p, 3);
  for (int kind : {0, 1, 2, 3}) {
    const Outcome windy = analyse(record(s, 25 * 10000.0 + 270.0), p, kind);
    ASSERT_TRUE(windy.ok);
    const bool differs = std::memcmp(windy.grid.data(), calm.grid.data(), 31 * 26 * sizeof(double)) != 0;
    EXPECT_EQ(differs, kind <= 1) << kind;
  }
}

TEST(ObjectiveDriver, ReadsTheModelFirstGuessAndRunsWithoutWhenItIsMissingOrBad) {
  const std::string dir = scratch_dir();
  const std::string station_file = dir + "/data\\obs\\500\\24031508.000";
  const std::string model_file = dir + "/data\\k402\\height\\500\\24031420.012";
  tervik_data4 model;
  model.nx = 41, model.ny = 31;
  model.first_lon = 95, model.last_lon = 135, model.lon_step = 1;
  model.first_lat = 55, model.last_lat = 25, model.lat_step = -1;
  double* v = static_cast<double*>(std::malloc(41 * 31 * sizeof(double)));
  for (int j = 0; j < 31; ++j)
    for (int i = 0; i < 41; ++i) v[j * 41 + i] = 5000.0 + (95 + i) + 2 * (55 - j);
  model.set_gridPtr(v);
  ASSERT_EQ(write_datatype4(model_file.c_str(), model), 0);

  Stations s;
  s.add(1, 101.0, 26.0, 5000.0 + 101 + 2 * 26 + 3);  // 3 m above the model there
  obj_analysis_param p = kParam;
  p.first_guess_model = 1;
  struct Case { const char* what; int kind; int model; bool guess; };
  const Case cases[] = {{"height", 1, 1, true}, {"temperature kind 3", 3, 1, false},
                        {"other model", 1, 2, false}, {"no model", 1, 0, false}};
  for (const Case& c : cases) {
    p.first_guess_model = c.model;
    const Outcome o = analyse(record(s), p, c.kind, station_file.c_str());
    // The levels derived from one station (1000 to 5120 by 40) cross neither field: the
    // contouring fails, while the grid is delivered all the same.
    EXPECT_FALSE(o.ok);
    EXPECT_EQ(o.err, "Isoline analysis fails.\n");
    ASSERT_NE(o.grid.data(), nullptr) << c.what;
    // (129, 49) is far beyond the station's reach: first guess, or the station's value.
    EXPECT_DOUBLE_EQ(at(o.grid, 129, 49), c.guess ? 5000.0 + 129 + 2 * 49 : s.value[0]) << c.what;
  }
  std::FILE* f = std::fopen(model_file.c_str(), "w");
  std::fputs("not a grid\n", f);
  std::fclose(f);
  p.first_guess_model = 1;
  const Outcome bad = analyse(record(s), p, 1, station_file.c_str());
  ASSERT_NE(bad.grid.data(), nullptr);
  EXPECT_DOUBLE_EQ(at(bad.grid, 129, 49), s.value[0]);
}

}  // namespace
