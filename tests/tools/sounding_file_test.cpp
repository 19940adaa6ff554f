// The sounding file reader on hand-written listings and CSV, and on the real archive pages
// (cross-checked against the independent page reader of the sounding tests).

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "formats/sounding_file.h"
#include "sounding/wyoming_page.h"
#include "support/paths.h"

namespace {

using tervik::formats::parse_sounding;
using tervik::formats::parse_sounding_csv;
using tervik::formats::parse_sounding_listing;

constexpr double kKnot = 1852.0 / 3600.0;

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// A page as the archive serves it, shortened; the index block's number differs from the
// title's on purpose, to show which one wins.
const char kPage[] =
    "<HTML>\n<TITLE>Radiosonde Data</TITLE>\n"
    "<H2>72357 OUN Norman Observations at 00Z 04 May 1999</H2>\n"
    "<PRE>\n"
    "-----------------------------------------------------------------------------\n"
    "   PRES   HGHT   TEMP   DWPT   RELH   MIXR   DRCT   SKNT   THTA   THTE   THTV\n"
    "    hPa     m      C      C      %    g/kg    deg   knot     K      K      K \n"
    "-----------------------------------------------------------------------------\n"
    " 1000.0     -7                                                               \n"
    "  959.0    345   22.2   19.0     82  14.64    160     18  298.9  341.8  301.5\n"
    "  925.0    671   19.8                                 38  299.6         302.0\n"
    "  850.0   1397   17.0   12.5     75  10.82                303.9  336.5  305.9\n"
    "  251.0  10505  -52.5  -56.7     60   0.07    250     70  327.5  327.8  327.5\n"
    "</PRE><H3>Station information and sounding indices</H3><PRE>\n"
    "                         Station identifier: OUN\n"
    "                             Station number: 72358\n"
    "                               Lifted index: -8.04\n"
    "</PRE>\n</BODY></HTML>\n";

TEST(SoundingListing, ReadsAPageWithItsMissingValuesAndUnits) {
  tag_tervik_data5 d;
  std::string error;
  ASSERT_TRUE(parse_sounding_listing(kPage, d, error)) << error;
  ASSERT_EQ(d.sounding_count, 1);
  ASSERT_EQ(d.soundings.size(), 1u);
  const tag_tlogp_station& s = d.soundings[0];
  EXPECT_EQ(s.station, 72358);  // the index block's number wins over the title's
  // The level below ground (pressure and height only) is dropped.
  ASSERT_EQ(s.layers.size(), 4u);
  const tag_tlogp_layer& g = s.layers[0];
  EXPECT_TRUE(g.valid);
  EXPECT_EQ(g.p, 959.0);
  EXPECT_EQ(g.z, 345.0);
  EXPECT_EQ(g.t, 22.2);
  EXPECT_EQ(g.td, 19.0);
  EXPECT_EQ(g.wind_dir, 160.0);
  EXPECT_DOUBLE_EQ(g.wind_speed, 18 * kKnot);
  // No dew point: kept for its height and wind, but not valid.
  EXPECT_FALSE(s.layers[1].valid);
  EXPECT_EQ(s.layers[1].td, 9999.0);
  EXPECT_EQ(s.layers[1].wind_dir, 9999.0);
  EXPECT_DOUBLE_EQ(s.layers[1].wind_speed, 38 * kKnot);
  // No wind.
  EXPECT_TRUE(s.layers[2].valid);
  EXPECT_EQ(s.layers[2].wind_dir, 9999.0);
  EXPECT_EQ(s.layers[2].wind_speed, 9999.0);
  EXPECT_EQ(s.layers[3].p, 251.0);
  EXPECT_DOUBLE_EQ(s.layers[3].wind_speed, 70 * kKnot);
}

TEST(SoundingListing, ReadsPlainListingsOneAfterAnother) {
  // Without HTML, with CR LF line ends; the first station is named by its title only, the
  // second by its index block; a repeated pressure is accepted.
  const std::string text =
      "72476 GJT Grand Junction Observations at 00Z 17 May 1980\r\n"
      "   PRES   HGHT   TEMP   DWPT   RELH   MIXR   DRCT   SKNT   THTA   THTE   THTV\r\n"
      "-----------------------------------------------------------------------------\r\n"
      "  845.0   1475   19.4    5.4     40   6.70    140      6  307.0  327.7  308.2\r\n"
      "  845.0   1475   19.4    5.4     40   6.70    140      6  307.0  327.7  308.2\r\n"
      "  700.0   3048    5.2   -1.8\r\n"
      "\r\n"
      "SBBV Boa Vista Observations at 00Z 01 Jan 2012\r\n"
      "   PRES   HGHT   TEMP   DWPT   RELH   MIXR   DRCT   SKNT   THTA   THTE   THTV\r\n"
      "-----------------------------------------------------------------------------\r\n"
      " 1002.0          29.0   24.1     75  19.29      0      4  302.0  359.2  305.4\r\n"
      "Station information and sounding indices\r\n"
      "                             Station number: 82022\r\n";
  tag_tervik_data5 d;
  std::string error;
  ASSERT_TRUE(parse_sounding(text, d, error)) << error;
  ASSERT_EQ(d.soundings.size(), 2u);
  EXPECT_EQ(d.soundings[0].station, 72476);
  EXPECT_EQ(d.soundings[0].layers.size(), 3u);
  EXPECT_EQ(d.soundings[0].layers[2].td, -1.8);
  EXPECT_EQ(d.soundings[1].station, 82022);
  ASSERT_EQ(d.soundings[1].layers.size(), 1u);
  EXPECT_EQ(d.soundings[1].layers[0].z, 9999.0);
  EXPECT_EQ(d.soundings[1].layers[0].wind_dir, 0.0);
}

const char kCsv[] =
    "# two stations; comments and blank lines are skipped\n"
    "# station 99001, analytic convective sounding\n"
    "pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n"
    "1000.0,0,26.9,19.0,90,10.0\n"
    "\n"
    " 972.2 , 250 , 24.8 , 18.6 , , \n"
    "944.9,500,22.8,9999,270,6.7\n"
    "#station note: not a station line\n"
    "# station 12345\n"
    "850,1500,15,10,+180,2.5e1\n";

TEST(SoundingCsv, ReadsStationsWithMissingFields) {
  tag_tervik_data5 d;
  std::string error;
  ASSERT_TRUE(parse_sounding(kCsv, d, error)) << error;
  ASSERT_EQ(d.soundings.size(), 2u);
  const tag_tlogp_station& a = d.soundings[0];
  EXPECT_EQ(a.station, 99001);
  ASSERT_EQ(a.layers.size(), 3u);
  EXPECT_TRUE(a.layers[0].valid);
  EXPECT_EQ(a.layers[0].wind_speed, 10.0);  // already m/s: no conversion
  EXPECT_TRUE(a.layers[1].valid);
  EXPECT_EQ(a.layers[1].p, 972.2);
  EXPECT_EQ(a.layers[1].wind_dir, 9999.0);
  EXPECT_EQ(a.layers[1].wind_speed, 9999.0);
  EXPECT_FALSE(a.layers[2].valid);  // the marker 9999 is missing, like an empty field
  EXPECT_EQ(d.soundings[1].station, 12345);
  ASSERT_EQ(d.soundings[1].layers.size(), 1u);
  EXPECT_EQ(d.soundings[1].layers[0].wind_dir, 180.0);
  EXPECT_EQ(d.soundings[1].layers[0].wind_speed, 25.0);
}

struct BadCase {
  const char* name;
  std::string text;
  std::string error;  // the exact message
};

const std::string kHeader =
    "   PRES   HGHT   TEMP   DWPT   RELH   MIXR   DRCT   SKNT   THTA   THTE   THTV\n"
    "-----------------------------------------------------------------------------\n";
const std::string kCsvHead =
    "# station 1\npressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n";

TEST(SoundingFile, RejectsMalformedInputWithTheLineAndLeavesTheOutputAlone) {
  const BadCase cases[] = {
      {"letters in a cell", "1 X Observations at 00Z\n" + kHeader + "  850.0   1422   x2.0    5.0\n",
       "line 4: TEMP 'x2.0' is not a number"},
      {"pressure rising", "1 X Observations at 00Z\n" + kHeader + "  850.0   1422   12.0    5.0\n" +
                              "  851.0   1500   11.0    4.0\n",
       "line 5: pressure 851 hPa is higher than the 850 hPa of the level before; levels must run from "
       "the ground up"},
      {"no station number", kHeader + "  850.0   1422   12.0    5.0\n",
       "line 1: no station number for this table (no 'Station number:' line after it, no number at "
       "the start of its title line)"},
      {"only levels below ground", "1 X Observations at 00Z\n" + kHeader + " 1000.0     -7\n",
       "line 2: the table has no levels above the ground"},
      {"text past the columns", "1 X Observations at 00Z\n" + kHeader +
                                    "  850.0   1422   12.0    5.0     40   6.70    140      6  307.0  327.7  308.2  9\n",
       "line 4: text beyond the 11 columns of the table"},
      {"a header without its table", "   PRES   HGHT   TEMP   DWPT\nnot\na\ntable\n9 X Observations at 00Z\n" + kHeader +
                                            "  850.0   1422   12.0    5.0\n",
       "line 1: the table has no levels above the ground"},
      {"shifted header", "   PRES  HGHT   TEMP   DWPT\n",
       "line 1: column 'HGHT' of the header is not in a 7-character column"},
      {"pressure out of range", "1 X Observations at 00Z\n" + kHeader + " 1850.0   1422   12.0    5.0\n",
       "line 4: pressure 1850 hPa is not in 0..1100"},
      {"no table at all", "<HTML>Can't get OUN Observations</HTML>\n",
       "line 1: no sounding found: expected a listing with a 'PRES HGHT TEMP DWPT ...' column header, "
       "or the CSV header 'pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms'"},
      {"bad index number", kHeader + "  850.0   1422   12.0    5.0\n Station number: 7x\n",
       "line 4: the station number is not a whole number"},
      {"csv without header", "# station 1\n1000,0,20,10,,\n",
       "line 2: expected the header "
       "'pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms'"},
      {"csv level before station",
       "pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n1000,0,20,10,,\n",
       "line 2: a level before any '# station N' line"},
      {"csv field count", kCsvHead + "1000,0,20,10\n", "line 3: expected 6 fields, found 4"},
      {"csv bad number", kCsvHead + "1000,0,20,1O,,\n", "line 3: dew point '1O' is not a number"},
      {"csv no pressure", kCsvHead + ",0,20,10,,\n", "line 3: a level without pressure"},
      {"csv rising", kCsvHead + "900,0,20,10,,\n950,0,20,10,,\n",
       "line 4: pressure 950 hPa is higher than the 900 hPa of the level before; levels must run from "
       "the ground up"},
      {"csv wind out of range", kCsvHead + "900,0,20,10,400,5\n", "line 3: wind direction 400 is not in 0..360"},
      {"csv dew point out of range", kCsvHead + "900,0,20,-300,,\n", "line 3: dew point -300 C is not in -150..100"},
      {"csv station without levels", kCsvHead + "# station 2\n900,0,20,10,,\n",
       "line 1: station 1 has no levels"},
      {"csv bad station", "# station -4\n", "line 1: the station number is not a whole number"},
      {"csv empty", "# nothing here\n", "line 1: no '# station N' line"},
  };
  for (const BadCase& c : cases) {
    tag_tervik_data5 d;
    d.soundings.push_back({77, {tag_tlogp_layer{}}});
    d.sounding_count = 1;
    std::string error;
    EXPECT_FALSE(parse_sounding(c.text, d, error)) << c.name;
    EXPECT_EQ(error, c.error) << c.name;
    ASSERT_EQ(d.soundings.size(), 1u) << c.name;
    EXPECT_EQ(d.soundings[0].station, 77) << c.name;
    EXPECT_EQ(d.sounding_count, 1) << c.name;
  }
}

TEST(SoundingFile, ChoosesTheFormByTheText) {
  tag_tervik_data5 d;
  std::string error;
  // A listing handed to the CSV reader, and CSV to the listing reader, fail; the dispatcher
  // reads both.
  EXPECT_FALSE(parse_sounding_csv(kPage, d, error));
  EXPECT_FALSE(parse_sounding_listing(kCsv, d, error));
  EXPECT_TRUE(parse_sounding(kPage, d, error)) << error;
  EXPECT_EQ(d.soundings[0].station, 72358);
  EXPECT_TRUE(parse_sounding(kCsv, d, error)) << error;
  EXPECT_EQ(d.soundings[0].station, 99001);
  // CSV whose first line is the header (no comment before it).
  const std::string headed = "pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms\n# station 5\n900,,1,0,,\n";
  EXPECT_TRUE(parse_sounding(headed, d, error)) << error;
  EXPECT_EQ(d.soundings[0].station, 5);
}

// ---- The archive's own pages ----

std::vector<std::string> archive_pages(const std::string& root) {
  std::vector<std::string> out;
  for (const char* dir : {"metreader_1980", "siphon_extracted", "sharppy"})
    for (const auto& f : std::filesystem::directory_iterator(root + "/" + dir)) out.push_back(f.path().string());
  std::sort(out.begin(), out.end());
  return out;
}

TEST(SoundingArchive, EveryPageAgreesWithTheIndependentPageReader) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  const std::vector<std::string> pages = archive_pages(root);
  EXPECT_EQ(pages.size(), 62u);
  for (const std::string& path : pages) {
    tag_tervik_data5 d;
    std::string error;
    ASSERT_TRUE(parse_sounding(read_file(path), d, error)) << path << ": " << error;
    ASSERT_EQ(d.soundings.size(), 1u) << path;
    const tervik::test::WyomingPage page = tervik::test::read_wyoming_page(path);
    EXPECT_EQ(d.soundings[0].station, static_cast<int>(page.indices.at("Station number"))) << path;
    // The page reader keeps every row; rows with nothing but pressure and height are the
    // levels below ground that this reader leaves out.
    std::vector<tag_tlogp_layer> rows;
    for (const tag_tlogp_layer& l : page.layers)
      if (l.t != 9999.0 || l.td != 9999.0 || l.wind_dir != 9999.0) rows.push_back(l);
    const std::vector<tag_tlogp_layer>& got = d.soundings[0].layers;
    ASSERT_EQ(got.size(), rows.size()) << path;
    for (size_t k = 0; k < rows.size(); ++k) {
      EXPECT_EQ(got[k].valid, rows[k].valid) << path << " level " << k;
      EXPECT_EQ(got[k].p, rows[k].p) << path << " level " << k;
      EXPECT_EQ(got[k].z, rows[k].z) << path << " level " << k;
      EXPECT_EQ(got[k].t, rows[k].t) << path << " level " << k;
      EXPECT_EQ(got[k].td, rows[k].td) << path << " level " << k;
      if (rows[k].wind_dir != 9999.0) {
        EXPECT_EQ(got[k].wind_dir, rows[k].wind_dir) << path << " level " << k;
        EXPECT_NEAR(got[k].wind_speed, rows[k].wind_speed, 1e-3) << path << " level " << k;
      }
    }
  }
}

TEST(SoundingArchive, KnownPagesFirstAndLastLevels) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  struct Known {
    const char* file;
    int station;
    size_t levels;
    double first_p, first_t, first_td, last_p, last_t;
    bool last_valid;
  };
  // Read off the pages by eye: the first row above ground and the top row.
  const Known known[] = {
      {"siphon_extracted/wyoming_sounding.html", 72357, 31, 959.0, 22.2, 19.0, 251.0, -52.5, true},
      {"metreader_1980/GJT_1980051700_raw.dat", 72476, 50, 845.0, 19.4, 5.4, 9.4, -33.5, false},
      {"siphon_extracted/wyoming_missing_station_info.html", 82244, 69, 1002.0, 29.0, 24.1, 50.0, -62.1, true},
      {"siphon_extracted/wyoming_high_alt_sounding.html", 72681, 132, 919.0, -0.1, -0.2, 7.5, -56.9, false},
  };
  for (const Known& k : known) {
    tag_tervik_data5 d;
    std::string error;
    ASSERT_TRUE(parse_sounding(read_file(root + "/" + k.file), d, error)) << k.file << ": " << error;
    ASSERT_EQ(d.soundings.size(), 1u);
    const auto& L = d.soundings[0].layers;
    EXPECT_EQ(d.soundings[0].station, k.station) << k.file;
    ASSERT_EQ(L.size(), k.levels) << k.file;
    EXPECT_EQ(L.front().p, k.first_p) << k.file;
    EXPECT_EQ(L.front().t, k.first_t) << k.file;
    EXPECT_EQ(L.front().td, k.first_td) << k.file;
    EXPECT_EQ(L.back().p, k.last_p) << k.file;
    EXPECT_EQ(L.back().t, k.last_t) << k.file;
    EXPECT_EQ(L.back().valid, k.last_valid) << k.file;
  }
}

TEST(SoundingArchive, PagesOneAfterAnotherAreSeveralStations) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  const std::string text = read_file(root + "/siphon_extracted/wyoming_sounding.html") +
                           read_file(root + "/metreader_1980/GJT_1980051700_raw.dat") +
                           read_file(root + "/siphon_extracted/wyoming_sounding_no_station.html");
  tag_tervik_data5 d;
  std::string error;
  ASSERT_TRUE(parse_sounding(text, d, error)) << error;
  ASSERT_EQ(d.soundings.size(), 3u);
  EXPECT_EQ(d.soundings[0].station, 72357);
  EXPECT_EQ(d.soundings[1].station, 72476);
  EXPECT_EQ(d.soundings[2].station, 72349);
  EXPECT_EQ(d.soundings[0].layers.size(), 31u);
  EXPECT_EQ(d.soundings[1].layers.size(), 50u);
}

}  // namespace
