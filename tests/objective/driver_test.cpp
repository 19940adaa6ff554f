// The one-call analysis: parameters as text, the model first-guess file, levels and area for
// contouring, and the failures of the driver itself.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <regex>
#include <string>

#include <tervik/objective.h>

#include "objective/driver_detail.h"
#include "objective/stations.h"
#include "support/paths.h"

using namespace tervik::test;

namespace {

TEST(ObjAnalysisParam, ReadsEightItemsOnlyOneSetsTheEnhancementAndBadTextChangesNothing) {
  const std::string path = scratch_dir() + "/obj.txt";
  {
    std::ofstream out(path);
    out << obj_analysis_param{70.0, 140.25, 15.0, 60.0, 0.5, 2, 3, true};
  }
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(path).rdbuf()), {}), "70 140.25 15 60 0.5 2 3 1");
  struct Case { const char* text; bool ok, enhance; };
  const Case cases[] = {{"70 140.25 15 60 0.5 2 3 1", true, true}, {"1 2 3 4 0.5 1 0 2", true, false},
                        {"1 2 3 4 0.5 1 0 0", true, false},        {"1 2 3 4 0.5 1 0", false, true},
                        {"1 2 x 4 0.5 1 0 0", false, true}};
  for (const Case& c : cases) {
    std::ofstream(path) << c.text;
    obj_analysis_param q{9, 9, 9, 9, 9, 9, 9, true};
    std::ifstream in(path);
    in >> q;
    EXPECT_EQ(static_cast<bool>(in), c.ok) << c.text;
    EXPECT_EQ(q.enhance_extrema, c.enhance) << c.text;
    EXPECT_EQ(q.grid_step, c.ok ? 0.5 : 9.0) << c.text;
  }
}

TEST(FirstGuessFile, NameFollowsTheObservationTimeModelAndElement) {
  struct Case { const char* station; int model, kind; const char* path; };
  const Case cases[] = {
      {"D:\\data\\obs\\500\\24031508.000", 1, 1, "D:\\data\\k402\\height\\500\\24031420.012"},
      {"D:\\data\\obs\\500\\24031508.000", 2, 1, "D:\\data\\polarnav\\height\\500\\24031408.024"},
      {"D:\\data\\obs\\sfc\\24030102.000", 3, 0, "D:\\data\\kiwan\\pressure\\24022908.018"},
      {"D:\\data\\obs\\850\\23030102.000", 4, 2, "D:\\data\\ORCA_QRT\\temper\\850\\23022808.018"},
      {"/srv/data/x\\25010105.000", 1, 2, "/srv/data\\k402\\temper\\a/x\\24123120.009"},
      {"/srv/data/x\\25010111.000", 1, 0, "/srv/data\\k402\\pressure\\24123120.015"},
      {"/srv/data/x\\25010123.000", 1, 0, "/srv/data\\k402\\pressure\\25010111.012"},
      {"D:/data/obs/500/24031508.000", 1, 1, nullptr},  // no backslash
      {"D:\\obs\\500\\24031508.000", 1, 1, nullptr},    // no "data"
      {"D:\\data\\obs\\500\\2403150", 1, 1, nullptr},   // name too short
      {"D:\\data\\obs\\500\\24133108.000", 1, 1, nullptr},
      {"D:\\data\\obs\\500\\24023008.000", 1, 1, nullptr},
      {"D:\\data\\obs\\500\\2403x508.000", 1, 1, nullptr},
      {"D:\\data\\obs\\500\\24031524.000", 1, 1, nullptr},
      {"ab\\24031508data", 1, 1, nullptr},  // no level directory
      {"D:\\data\\obs\\500\\24031508.000", 5, 1, nullptr},
      {"D:\\data\\obs\\500\\24031508.000", 1, 3, nullptr},
  };
  for (const Case& c : cases) {
    std::string path;
    EXPECT_EQ(tervik::detail::model_file_name(c.station, c.model, c.kind, path), c.path != nullptr) << c.station;
    EXPECT_EQ(path, c.path ? c.path : "");
  }
}

const obj_analysis_param kParam{100.0, 130.0, 25.0, 50.0, 1.0, 1, 0, false};

struct Outcome {
  bool ok;
  std::string out, err;
  tervik_data4 grid;
  isoline_analysis_param iso;
  // The analysis at a whole-degree point of the grid of kParam.
  double at(int lon, int lat) const { return grid.data()[(lat - 25) * 31 + lon - 100]; }
};

Outcome analyse(const Stations& s, const obj_analysis_param& p, int kind = 1, const std::string& file = "none",
                double interval = 40.0) {
  tervik_data3 r;
  for (int k = 0; k < s.count(); ++k)
    r.stations.push_back({static_cast<int32_t>(s.id[k]), {}, s.lon[k], s.lat[k], 0.0, s.value[k]});
  r.station_count = static_cast<int32_t>(r.stations.size());
  Outcome o;
  o.iso.level_interval = interval;
  tag_isoline_layer layer{};
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  o.ok = do_objective_analysis(file.c_str(), r, 500, kind, p, o.iso, o.grid, layer);
  o.err = testing::internal::GetCapturedStderr();
  o.out = testing::internal::GetCapturedStdout();
  return o;
}

TEST(ObjectiveDriver, AnalysesTimesAndSetsTheIsolineAreaAndLevels) {
  // Heights close enough to their mean that no Cressman pass rejects a station.
  auto gentle = [](double lon, double lat) { return 5600.0 + 0.7 * (lon - 115.0) + 0.7 * (lat - 37.5); };
  Stations s = random_stations(Domain{31, 26, 100.0, 130.0, 25.0, 50.0}, 300, 21, gentle);
  for (int method : {1, 2, 3, 5}) {
    obj_analysis_param p = kParam;
    p.method = method;
    const Outcome o = analyse(s, p);
    ASSERT_TRUE(o.ok) << method << o.err;
    EXPECT_TRUE(std::regex_match(o.out, std::regex("It takes [0-9]+ milliseconds\\.\n"))) << o.out;
    EXPECT_EQ(o.grid.nx * 100 + o.grid.ny, 3126);
    EXPECT_NEAR(o.at(115, 37), gentle(115, 37), 1.0) << method;
    EXPECT_TRUE(o.iso.area_set && o.iso.use_interval);
    EXPECT_EQ(o.iso.last_lat, 50.0);
    // The smallest value starts at 999, so heights all above it start the levels at 1000.
    EXPECT_EQ(o.iso.level_start, 1000.0);
    EXPECT_EQ(o.iso.level_end, 40 * std::floor(*std::max_element(s.value.begin(), s.value.end()) / 40));
  }
  // From -17.5 up to 3.2, on multiples of the interval 2.5 truncated to 2.
  Stations two;
  two.add(1, 110, 30, -17.5);
  two.add(2, 120, 40, 3.2);
  const Outcome o = analyse(two, kParam, 2, "none", 2.5);
  ASSERT_TRUE(o.ok);
  EXPECT_EQ(o.iso.level_start, -16.0);
  EXPECT_EQ(o.iso.level_end, 2.0);
  EXPECT_EQ(o.iso.level_interval, 2.5);
}

TEST(ObjectiveDriver, FailsWithTheMessageOfTheSchemeOrOfTheDriver) {
  Stations one, undef;
  one.add(1, 110, 30, 5500);
  undef.add(1, 110, 30, tervik_data3::undef);
  undef.add(2, 111, 31, NAN);
  struct Case { obj_analysis_param p; const Stations* s; const char* err; };
  const Case cases[] = {
      {{100, 130, 25, 50, 1.0, 1, 0, false}, &undef, "daCressman::assimilate: no station has valid height.\n"},
      {{100, 130, 25, 50, 1.0, 0, 0, false}, &undef, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {{100, 130, 25, 50, 1.0, 4, 0, false}, &undef, "daCressmanHQ::assimilate: no station has valid height.\n"},
      {{100, 130, 25, 50, 1.0, 5, 0, false}, &undef, "daSurfaceFit::assimilate: no station has valid height.\n"},
      // Barnes gives zeros without stations; the driver refuses them.
      {{100, 130, 25, 50, 1.0, 2, 0, false}, &undef, "do_objective_analysis: no station has a valid value.\n"},
      {{100, 130, 25, 50, 26.0, 1, 0, false}, &one,
       "do_objective_analysis: grid step 26 gives fewer than 2 columns or rows over 100..130 E, 25..50 N.\n"},
      {{100, 130, 25, 50, 1e-9, 1, 0, false}, &one, "do_objective_analysis: grid step 1e-09 gives too many grid points.\n"},
  };
  for (const Case& c : cases) {
    const Outcome o = analyse(*c.s, c.p);
    EXPECT_FALSE(o.ok);
    EXPECT_EQ(o.err, c.err) << c.p.method;
    EXPECT_EQ(o.grid.data(), nullptr);
  }
}

TEST(ObjectiveDriver, TakesTheModelFirstGuessForItsModelAndKindsOnly) {
  const std::string dir = scratch_dir();
  tervik_data4 model;
  model.nx = 41;
  model.ny = 31;
  model.first_lon = 95;
  model.last_lon = 135;
  model.lon_step = 1;
  model.first_lat = 55;  // rows north to south
  model.last_lat = 25;
  model.lat_step = -1;
  double* v = static_cast<double*>(std::malloc(41 * 31 * sizeof(double)));
  for (int p = 0; p < 41 * 31; ++p) v[p] = 5000.0 + (95 + p % 41) + 2 * (55 - p / 41);
  model.set_gridPtr(v);
  ASSERT_EQ(write_datatype4((dir + "/data\\k402\\height\\500\\24031420.012").c_str(), model), 0);
  Stations s;
  s.add(1, 101.0, 26.0, 5000.0 + 101 + 2 * 26 + 3);  // 3 m above the model there
  struct Case { int kind, model; bool guess; };
  for (const Case& c : {Case{1, 1, true}, Case{3, 1, false}, Case{1, 2, false}, Case{1, 0, false}}) {
    obj_analysis_param p = kParam;
    p.first_guess_model = c.model;
    const Outcome o = analyse(s, p, c.kind, dir + "/data\\obs\\500\\24031508.000");
    // The levels derived from one station (1000 to 5120 by 40) cross neither field: the
    // contouring fails, while the grid is delivered all the same.
    EXPECT_EQ(o.err, "Isoline analysis fails.\n");
    ASSERT_NE(o.grid.data(), nullptr);
    // (129, 49) is far beyond the station's reach: first guess, or the station's value.
    EXPECT_DOUBLE_EQ(o.at(129, 49), c.guess ? 5000.0 + 129 + 2 * 49 : s.value[0]) << c.kind << c.model;
  }
}

}  // namespace
