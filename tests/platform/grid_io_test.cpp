#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <tervik/records.h>

#include "platform/grid_text.h"
#include "support/paths.h"

namespace {

std::string write_text(const std::string& text) {
  const std::string path = tervik::test::scratch_dir() + "/grid.txt";
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

tervik_data4 sentinel() {
  tervik_data4 g;
  std::strcpy(g.description, "keep me");
  g.nx = 1;
  g.ny = 1;
  double* v = static_cast<double*>(std::malloc(sizeof(double)));
  *v = 42.0;
  g.set_gridPtr(v);
  return g;
}

const char* kSmall =
    "tervik-grid 1\n"
    "# a hand-written grid\n"
    "description 500hPa Height (gpm)\n"
    "valid_time 2024 1 15 12 0\n"
    "level 500\n"
    "nx 3\n"
    "ny 2\n"
    "first_lon 100\n"
    "first_lat 40\n"
    "lon_step 2.5\n"
    "lat_step -2.5\n"
    "values\n"
    "5500 5520 5540\n"
    "5480 9999 +5.5e3\n";

}  // namespace

TEST(GridFile, ReadsAHandWrittenGrid) {
  tervik_data4 g;
  ASSERT_EQ(read_datatype4(write_text(kSmall).c_str(), g), 0);
  EXPECT_STREQ(g.description, "500hPa Height (gpm)");
  EXPECT_EQ(g.valid_time[0], 2024);
  EXPECT_EQ(g.valid_time[3], 12);
  EXPECT_EQ(g.level, 500);
  EXPECT_EQ(g.nx, 3);
  EXPECT_EQ(g.ny, 2);
  EXPECT_EQ(g.last_lon, 105.0);  // derived when absent
  EXPECT_EQ(g.last_lat, 37.5);
  EXPECT_EQ(g.geometry_override, 0);
  ASSERT_NE(g.data(), nullptr);
  EXPECT_EQ(g.data()[2], 5540.0);
  EXPECT_EQ(g.data()[4], tervik_data4::undef);
  EXPECT_EQ(g.data()[5], 5500.0);
}

TEST(GridFile, WriteThenReadGivesTheSameBits) {
  std::mt19937_64 gen(7);
  std::uniform_real_distribution<double> u(-1e6, 1e6);
  tervik_data4 g;
  std::strcpy(g.description, "random field");
  g.nx = 17;
  g.ny = 9;
  g.first_lon = 0.1;
  g.lon_step = 1.0 / 3.0;
  g.first_lat = -89.9;
  g.lat_step = 0.7;
  g.last_lon = 1e-300;
  g.last_lat = -0.0;
  g.contour_interval = 0.1;
  g.contour_start = -4.9e-324;
  g.contour_end = 1.7976931348623157e308;
  g.geometry_override = -3;
  double* v = static_cast<double*>(std::malloc(sizeof(double) * 153));
  for (int k = 0; k < 153; ++k) v[k] = u(gen) / std::pow(10.0, k % 20);
  v[5] = std::numeric_limits<double>::denorm_min();
  v[6] = tervik_data4::undef;
  g.set_gridPtr(v);

  const std::string path = tervik::test::scratch_dir() + "/round.grid";
  ASSERT_EQ(write_datatype4(path.c_str(), g), 0);
  tervik_data4 back;
  ASSERT_EQ(read_datatype4(path.c_str(), back), 0);
  EXPECT_STREQ(back.description, g.description);
  for (auto [a, b] : {std::pair{back.first_lon, g.first_lon}, {back.lon_step, g.lon_step},
                      {back.first_lat, g.first_lat}, {back.lat_step, g.lat_step},
                      {back.last_lon, g.last_lon}, {back.last_lat, g.last_lat},
                      {back.contour_interval, g.contour_interval},
                      {back.contour_start, g.contour_start}, {back.contour_end, g.contour_end}})
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << a << " vs " << b;
  EXPECT_EQ(back.geometry_override, -3);
  EXPECT_EQ(std::memcmp(back.data(), g.data(), sizeof(double) * 153), 0);
}

TEST(GridFile, BadFilesFailAndLeaveTheRecordAlone) {
  struct Case {
    const char* what;
    std::string text;
  } cases[] = {
      {"empty", ""},
      {"no magic", "nx 1\nny 1\n"},
      {"truncated values", std::string(kSmall).substr(0, std::strlen(kSmall) - 8)},
      {"extra value", std::string(kSmall) + "1\n"},
      {"non-numeric value", "tervik-grid 1\nnx 1\nny 1\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\nvalues\nabc\n"},
      {"number glued to text", "tervik-grid 1\nnx 1\nny 1\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\nvalues\n1.5x\n"},
      {"negative size", "tervik-grid 1\nnx -3\nny 1\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\nvalues\n"},
      {"absurd size", "tervik-grid 1\nnx 2000000000\nny 2000000000\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\nvalues\n1\n"},
      {"missing key", "tervik-grid 1\nnx 1\nny 1\nfirst_lon 0\nlon_step 1\nlat_step 1\nvalues\n1\n"},
      {"unknown key", "tervik-grid 1\ncolour red\nvalues\n"},
      {"no values line", "tervik-grid 1\nnx 1\nny 1\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\n"},
      {"bad integer", "tervik-grid 1\nnx 1.5\n"},
      {"long description", "tervik-grid 1\ndescription " + std::string(200, 'x') + "\n"},
  };
  for (const auto& c : cases) {
    tervik_data4 g = sentinel();
    grid_holder* before = g.values;
    EXPECT_NE(read_datatype4(write_text(c.text).c_str(), g), 0) << c.what;
    EXPECT_EQ(g.values, before) << c.what;
    EXPECT_STREQ(g.description, "keep me") << c.what;
    EXPECT_EQ(g.nx, 1) << c.what;
    EXPECT_EQ(g.data()[0], 42.0) << c.what;
  }
}

TEST(GridFile, ParserNamesTheLineOfTheProblem) {
  tervik_data4 g;
  std::string error;
  EXPECT_FALSE(tervik::detail::parse_grid_text("tervik-grid 1\nnx 2\nny x\n", g, error));
  EXPECT_EQ(error, "line 3: bad integer for ny");
  EXPECT_FALSE(tervik::detail::parse_grid_text(
      "tervik-grid 1\nnx 2\nny 1\nfirst_lon 0\nfirst_lat 0\nlon_step 1\nlat_step 1\nvalues\n1\n\nzz\n",
      g, error));
  EXPECT_EQ(error, "line 11: bad value number 2");
}

TEST(GridFile, MissingPathsAndDirectoriesFail) {
  tervik_data4 g = sentinel();
  EXPECT_NE(read_datatype4("/nonexistent/grid.txt", g), 0);
  EXPECT_NE(read_datatype4(tervik::test::scratch_dir().c_str(), g), 0);
  EXPECT_NE(read_datatype4(nullptr, g), 0);
  EXPECT_EQ(g.data()[0], 42.0);
}

TEST(GridFile, WritingFailsCleanly) {
  tervik_data4 empty;
  const std::string dir = tervik::test::scratch_dir();
  EXPECT_NE(write_datatype4((dir + "/a.grid").c_str(), empty), 0);  // no values
  tervik_data4 g = sentinel();
  EXPECT_NE(write_datatype4((dir + "/no/such/dir/a.grid").c_str(), g), 0);
  EXPECT_NE(write_datatype4(nullptr, g), 0);
  std::ifstream leftover(dir + "/a.grid");
  EXPECT_FALSE(leftover.good());
}
