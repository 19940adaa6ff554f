// The one-call analysis: the name of the model first-guess file, the choice of scheme, levels
// and area for contouring.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <string>

#include <tervik/objective.h>

#include "objective/driver_detail.h"
#include "objective/stations.h"

using namespace tervik::test;

namespace {

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
  double at(int lon, int lat) const { return grid.data()[(lat - 25) * 31 + lon - 100]; }
};

Outcome analyse(const Stations& s, const obj_analysis_param& p, double interval = 40.0) {
  tervik_data3 r;
  for (int k = 0; k < s.count(); ++k)
    r.stations.push_back({static_cast<int32_t>(s.id[k]), {}, s.lon[k], s.lat[k], 0.0, s.value[k]});
  r.station_count = static_cast<int32_t>(r.stations.size());
  Outcome o;
  o.iso.level_interval = interval;
  tag_isoline_layer layer{};
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  o.ok = do_objective_analysis("none", r, 500, 1, p, o.iso, o.grid, layer);
  o.err = testing::internal::GetCapturedStderr();
  o.out = testing::internal::GetCapturedStdout();
  return o;
}

TEST(ObjectiveDriver, EachMethodAnalysesTimesAndSetsTheIsolineAreaAndLevels) {
  // Heights close enough to their mean that no Cressman pass rejects a station.
  auto gentle = [](double lon, double lat) { return 5600.0 + 0.7 * (lon - 115.0) + 0.7 * (lat - 37.5); };
  Stations s = random_stations(Domain{31, 26, 100.0, 130.0, 25.0, 50.0}, 300, 21, gentle), undef;
  undef.add(1, 110, 30, tervik_data3::undef);
  undef.add(2, 111, 31, NAN);
  // Without a valid station each method fails with its scheme's message; Barnes would give
  // zeros, which the driver refuses.
  struct Case { int method; const char* none; };
  for (const Case& c : {Case{1, "daCressman::assimilate: no station has valid height.\n"},
                        Case{2, "do_objective_analysis: no station has a valid value.\n"},
                        Case{4, "daCressmanHQ::assimilate: no station has valid height.\n"},
                        Case{5, "daSurfaceFit::assimilate: no station has valid height.\n"}}) {
    obj_analysis_param p = kParam;
    p.method = c.method;
    EXPECT_EQ(analyse(undef, p).err, c.none);
    const Outcome o = analyse(s, p);
    ASSERT_TRUE(o.ok) << c.method << o.err;
    EXPECT_TRUE(std::regex_match(o.out, std::regex("It takes [0-9]+ milliseconds\\.\n"))) << o.out;
    EXPECT_NEAR(o.at(115, 37), gentle(115, 37), 1.0) << c.method;
    EXPECT_TRUE(o.iso.area_set && o.iso.use_interval && o.iso.last_lat == 50.0);
    // The smallest value starts at 999, so heights all above it start the levels at 1000.
    EXPECT_EQ(o.iso.level_start, 1000.0);
    EXPECT_EQ(o.iso.level_end, 40 * std::floor(*std::max_element(s.value.begin(), s.value.end()) / 40));
  }
  // From -17.5 up to 3.2, on multiples of the interval 2.5 truncated to 2.
  Stations two;
  two.add(1, 110, 30, -17.5);
  two.add(2, 120, 40, 3.2);
  const Outcome o = analyse(two, kParam, 2.5);
  EXPECT_EQ(o.iso.level_start, -16.0);
  EXPECT_EQ(o.iso.level_end, 2.0);
  EXPECT_EQ(o.iso.level_interval, 2.5);
  const obj_analysis_param coarse{100.0, 130.0, 25.0, 50.0, 26.0, 1, 0, false};
  EXPECT_EQ(analyse(two, coarse).err,
            "do_objective_analysis: grid step 26 gives fewer than 2 columns or rows over 100..130 E, 25..50 N.\n");
}

}  // namespace
