// 'tervik sounding' run as a program: its report against the library's own report of the
// same soundings, its picture through an XML checker and a renderer, and its failures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <tervik/sounding.h>

#include "formats/sounding_file.h"
#include "support/paths.h"
#include "support/run_program.h"

namespace {

namespace fs = std::filesystem;
using tervik::test::read_text;
using tervik::test::ProgramResult;

void write_file(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

#ifdef TERVIK_CLI_PATH
ProgramResult tervik(const std::vector<std::string>& args) {
  return tervik::test::run_program(TERVIK_CLI_PATH, args);
}
#define REQUIRE_CLI()
#else
ProgramResult tervik(const std::vector<std::string>&) { return {}; }
#define REQUIRE_CLI() GTEST_SKIP() << "the program is not built"
#endif

// The library's own report of every sounding in `path`, each after its "station" line.
std::string library_report(const std::string& path) {
  tag_tervik_data5 d;
  std::string error;
  EXPECT_TRUE(tervik::formats::parse_sounding(read_text(path), d, error)) << error;
  std::string text;
  for (const tag_tlogp_station& s : d.soundings) {
    tag_physics_station record;
    compute_tlogp_physics(s, record);
    char head[32];
    std::snprintf(head, sizeof head, "station %05d\n", s.station);
    testing::internal::CaptureStdout();
    write_physics_station(nullptr, record);
    text += head + testing::internal::GetCapturedStdout();
  }
  return text;
}

TEST(CliSounding, ReportMatchesTheLibraryForEveryStation) {
  REQUIRE_CLI();
  const std::string dir = tervik::test::scratch_dir();
  const std::string sample = tervik::test::source_file("data/sounding.csv");
  // Two stations: the sample, and the sample again with its lowest levels cut off.
  std::string second = read_text(sample);
  const size_t cut = second.find("\n900.0,") + 1;
  ASSERT_NE(cut, std::string::npos);
  second = "# station 1234\npressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n" +
           second.substr(cut);
  const std::string two = dir + "/two.csv";
  write_file(two, read_text(sample) + second);

  const std::string expected = library_report(two);
  ASSERT_EQ(std::count(expected.begin(), expected.end(), '\n'), 2 * (1 + 68));
  EXPECT_EQ(expected.find("station 99001\n"), 0u);
  EXPECT_NE(expected.find("station 01234\n"), std::string::npos);

  const ProgramResult to_stdout = tervik({"sounding", two});
  EXPECT_EQ(to_stdout.status, 0) << to_stdout.err;
  EXPECT_EQ(to_stdout.out, expected);

  const std::string report = dir + "/report.txt";
  const ProgramResult to_file = tervik({"sounding", two, "-o", report});
  EXPECT_EQ(to_file.status, 0) << to_file.err;
  EXPECT_EQ(read_text(report), expected);
  EXPECT_EQ(to_file.out, "sounding: 2 stations -> " + report + "\n");
  const ProgramResult quiet = tervik({"--quiet", "sounding", two, "-o", report});
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.out, "");
}

TEST(CliSounding, DiagramIsWellFormedAndRenders) {
  REQUIRE_CLI();
  const std::string dir = tervik::test::scratch_dir();
  const std::string sample = tervik::test::source_file("data/sounding.csv");
  const std::string svg = dir + "/skewt.svg", png = dir + "/skewt.png";
  const ProgramResult r = tervik({"sounding", sample, "-o", dir + "/r.txt", "--svg", svg});
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string text = read_text(svg);
  // The analytic sounding is unstable: its parcel has all three levels.
  for (const char* label : {"station 99001", "LCL ", "LFC ", "EL ", "CAPE", "CIN", "dew point"})
    EXPECT_NE(text.find(label), std::string::npos) << label;
  EXPECT_EQ(std::system(("xmllint --noout '" + svg + "'").c_str()), 0);
  EXPECT_EQ(std::system(("rsvg-convert -o '" + png + "' '" + svg + "'").c_str()), 0);
  std::error_code ec;
  EXPECT_GT(fs::file_size(png, ec), 1000u) << ec.message();

  // --station picks the sounding drawn; an unknown one is an error that writes nothing.
  const std::string other = dir + "/other.svg";
  const ProgramResult missing = tervik({"sounding", sample, "--station", "5", "--svg", other});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "tervik: " + sample + ": no station 5\n");
  EXPECT_FALSE(fs::exists(other));
}

TEST(CliSounding, FailuresNameTheFileAndLineAndWriteNothing) {
  REQUIRE_CLI();
  const std::string dir = tervik::test::scratch_dir();
  const std::string bad = dir + "/bad.csv", report = dir + "/report.txt", svg = dir + "/bad.svg";
  write_file(bad,
             "# station 7\npressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n"
             "1000,0,20,10,,\n900,900,abc,5,,\n");
  struct Case {
    const char* name;
    std::string input, message;
  };
  const Case cases[] = {
      {"missing file", dir + "/absent.csv", "tervik: " + dir + "/absent.csv: cannot read\n"},
      {"malformed file", bad, "tervik: " + bad + ": line 4: temperature 'abc' is not a number\n"},
  };
  for (const Case& c : cases) {
    const ProgramResult r = tervik({"sounding", c.input, "-o", report, "--svg", svg});
    EXPECT_EQ(r.status, 1) << c.name;
    EXPECT_EQ(r.err, c.message) << c.name;
    EXPECT_EQ(r.out, "") << c.name;
    EXPECT_FALSE(fs::exists(report)) << c.name;
    EXPECT_FALSE(fs::exists(svg)) << c.name;
  }

  // The report never replaces its input.
  const std::string sample = dir + "/sample.csv";
  write_file(sample, read_text(tervik::test::source_file("data/sounding.csv")));
  const ProgramResult self = tervik({"sounding", sample, "-o", sample});
  EXPECT_EQ(self.status, 1);
  EXPECT_EQ(read_text(sample), read_text(tervik::test::source_file("data/sounding.csv")));

  EXPECT_EQ(tervik({"sounding"}).status, 2);
  EXPECT_EQ(tervik({"sounding", sample, "--bogus"}).status, 2);
}

}  // namespace
