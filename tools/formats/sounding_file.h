#ifndef TERVIK_TOOLS_FORMATS_SOUNDING_FILE_H
#define TERVIK_TOOLS_FORMATS_SOUNDING_FILE_H

// Soundings from text files, in two forms (both described in docs/formats.md):
//
// - the radiosonde "text list" of the university upper-air archive, plain or inside an HTML
//   page: a column header "PRES HGHT TEMP DWPT RELH MIXR DRCT SKNT THTA THTE THTV" in fixed
//   7-character columns, a units line, a dashed line, then one level a row with blank
//   columns where a value is missing. The station number comes from the "Station number:"
//   line of the index block after the table, or else from the title line
//   ("72357 OUN Norman Observations at ..."). Several listings may follow one another.
// - CSV: a comment "# station N" starts each station, the header line
//   "pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms", then one
//   level a line with empty fields (or 9999) where a value is missing.
//
// Levels come from the ground up. Units: pressure hPa, height m, temperature and dew point
// deg C, wind direction degrees (from), wind speed m/s (the listing's knots are converted).
// A level is valid when it has pressure, temperature and dew point; any missing value is
// 9999.0.

#include <string>
#include <string_view>

#include <tervik/records.h>

namespace tervik::formats {

// Parses a sounding file in either form: CSV when its first non-blank line starts with '#'
// or a line starts with the CSV header, the listing otherwise. On success `out` gets one
// sounding per station in file order (its header untouched) and the function returns true.
// On the first malformed line, a pressure that rises going up, a station without a number
// or a station without levels, it returns false with "line N: reason" in `error` and
// leaves `out` as it was.
bool parse_sounding(std::string_view text, tag_tervik_data5& out, std::string& error);

// The two forms on their own, with the same contract.
bool parse_sounding_listing(std::string_view text, tag_tervik_data5& out, std::string& error);
bool parse_sounding_csv(std::string_view text, tag_tervik_data5& out, std::string& error);

}  // namespace tervik::formats

#endif
