#ifndef TERVIK_TOOLS_FORMATS_STATION_CSV_H
#define TERVIK_TOOLS_FORMATS_STATION_CSV_H

// Station observations as CSV: a header line naming the columns, then one station a line:
//   id,lon,lat,value[,wind_dir,wind_speed]
// id is the station number, lon/lat in degrees, value in the observed quantity's unit
// (empty or 9999 when missing), wind direction in degrees (from) and speed in m/s. Blank
// lines and lines starting with '#' are skipped.

#include <string>
#include <string_view>

#include <tervik/records.h>

namespace tervik::formats {

// Parses station CSV text into `out` (its header untouched, stations replaced). Wind, when
// given, is packed into each station's code as speed*10000 + direction with the speed
// rounded to whole m/s; without wind the code is 0. Returns false with "line N: reason" in
// `error` on the first malformed line, leaving `out` as it was.
bool parse_station_csv(std::string_view text, tervik_data3& out, std::string& error);

}  // namespace tervik::formats

#endif
