#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include <tervik/objective.h>

#include "objective/driver_detail.h"
#include "support/paths.h"

namespace {

std::string slurp(const std::string& path) {
  std::ifstream in(path);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(ObjAnalysisParam, WritesEightItemsAndReadsThemBack) {
  const std::string path = tervik::test::scratch_dir() + "/obj.txt";
  const obj_analysis_param p{70.0, 140.25, 15.0, 60.0, 0.5, 2, 3, true};
  {
    std::ofstream out(path);
    out << p;
  }
  EXPECT_EQ(slurp(path), "70 140.25 15 60 0.5 2 3 1");
  obj_analysis_param q{};
  std::ifstream in(path);
  in >> q;
  ASSERT_TRUE(in);
  EXPECT_EQ(q.lon_max, 140.25);
  EXPECT_EQ(q.grid_step, 0.5);
  EXPECT_EQ(q.method, 2);
  EXPECT_EQ(q.first_guess_model, 3);
  EXPECT_TRUE(q.enhance_extrema);
}

TEST(ObjAnalysisParam, OnlyOneSetsTheEnhancementAndBadTextChangesNothing) {
  struct Case { const char* text; bool ok; bool enhance; };
  const Case cases[] = {{"1 2 3 4 0.5 1 0 1", true, true},  {"1 2 3 4 0.5 1 0 2", true, false},
                        {"1 2 3 4 0.5 1 0 0", true, false}, {"1 2 3 4 0.5 1 0 -1", true, false},
                        {"1 2 3 4 0.5 1 0", false, true},   {"1 2 x 4 0.5 1 0 0", false, true}};
  for (const Case& c : cases) {
    const std::string path = tervik::test::scratch_dir() + "/p.txt";
    std::ofstream(path) << c.text;
    obj_analysis_param q{9, 9, 9, 9, 9, 9, 9, true};
    std::ifstream in(path);
    in >> q;
    EXPECT_EQ(static_cast<bool>(in), c.ok) << c.text;
    EXPECT_EQ(q.enhance_extrema, c.enhance) << c.text;
    EXPECT_EQ(q.lon_min, c.ok ? 1.0 : 9.0) << c.text;
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
  };
  for (const Case& c : cases) {
    std::string path;
    ASSERT_TRUE(tervik::detail::model_file_name(c.station, c.model, c.kind, path)) << c.station;
    EXPECT_EQ(path, c.path);
  }
  const char* none[] = {"D:/data/obs/500/24031508.000",  // no backslash
                        "D:\\obs\\500\\24031508.000",    // no "data"
                        "D:\\data\\obs\\500\\2403150",   // name too short
                        "D:\\data\\obs\\500\\24133108.000", "D:\\data\\obs\\500\\24023008.000",
                        "D:\\data\\obs\\500\\2403x508.000", "D:\\data\\obs\\500\\24031524.000",
                        "ab\\24031508data"};             // no level directory
  for (const char* n : none) {
    std::string path;
    EXPECT_FALSE(tervik::detail::model_file_name(n, 1, 1, path)) << n;
  }
  std::string path;
  EXPECT_FALSE(tervik::detail::model_file_name("D:\\data\\obs\\500\\24031508.000", 5, 1, path));
  EXPECT_FALSE(tervik::detail::model_file_name("D:\\data\\obs\\500\\24031508.000", 1, 3, path));
}

TEST(FirstGuessFile, InterpolatesBilinearlyAndHoldsTheBorderOutside) {
  tervik_data4 m;
  m.nx = 3, m.ny = 3;
  m.first_lon = 100, m.last_lon = 110, m.lon_step = 5;
  m.first_lat = 50, m.last_lat = 40, m.lat_step = -5;  // rows north to south
  double* v = static_cast<double*>(std::malloc(9 * sizeof(double)));
  // value = 2*lon + lat: bilinear interpolation reproduces it exactly.
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i) v[j * 3 + i] = 2 * (100 + 5 * i) + (50 - 5 * j);
  m.set_gridPtr(v);
  double out[5 * 4];
  ASSERT_TRUE(tervik::detail::interpolate_model(m, 5, 4, 99.0, 38.0, 3.0, out));
  for (int j = 0; j < 4; ++j)
    for (int i = 0; i < 5; ++i) {
      const double lon = std::clamp(99.0 + 3 * i, 100.0, 110.0), lat = std::clamp(38.0 + 3 * j, 40.0, 50.0);
      EXPECT_NEAR(out[j * 5 + i], 2 * lon + lat, 1e-9) << i << "," << j;
    }
  // A missing corner drops out of the interpolation; on the missing point itself the other
  // corners of its cell, (110, 45), (105, 40) and (110, 40), are averaged.
  v[4] = tervik_data4::undef;
  ASSERT_TRUE(tervik::detail::interpolate_model(m, 2, 1, 102.0, 45.0, 3.0, out));
  EXPECT_NEAR(out[0], 245.0, 1e-9);  // between (100, 45) and the missing (105, 45): the former
  EXPECT_NEAR(out[1], (265 + 250 + 260) / 3.0, 1e-9);
  m.nx = 1;
  EXPECT_FALSE(tervik::detail::interpolate_model(m, 1, 1, 105.0, 45.0, 1.0, out));
}

}  // namespace
