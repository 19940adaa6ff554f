#include "formats/station_csv.h"

#include "formats/text_fields.h"

#include <charconv>
#include <cstdint>
#include <cmath>
#include <vector>

namespace tervik::formats {

namespace {

using text::fail;
using text::split_csv;
using text::trim;

// A number filling the whole field; an empty field is missing (9999).
bool number(std::string_view field, double& out) {
  if (field.empty()) {
    out = tervik_data3::undef;
    return true;
  }
  return text::parse_number(field, out);
}

}  // namespace

bool parse_station_csv(std::string_view text, tervik_data3& out, std::string& error) {
  std::vector<station_entry> stations;
  bool header_seen = false;
  int line_no = 0;
  size_t pos = 0;
  while (pos <= text.size()) {
    const size_t eol = text.find('\n', pos);
    const std::string_view line = trim(text.substr(pos, eol == std::string_view::npos ? std::string_view::npos : eol - pos));
    pos = eol == std::string_view::npos ? text.size() + 1 : eol + 1;
    ++line_no;
    if (line.empty() || line.front() == '#') continue;
    if (!header_seen) {
      if (line.substr(0, 3) != "id,") return fail(error, line_no, "expected the header 'id,lon,lat,value[,wind_dir,wind_speed]'");
      header_seen = true;
      continue;
    }
    const std::vector<std::string_view> f = split_csv(line);
    if (f.size() != 4 && f.size() != 6)
      return fail(error, line_no, "expected 4 or 6 fields, found " + std::to_string(f.size()));
    station_entry s{};
    long long id = 0;
    const auto r = std::from_chars(f[0].data(), f[0].data() + f[0].size(), id);
    if (f[0].empty() || r.ec != std::errc() || r.ptr != f[0].data() + f[0].size() || id < INT32_MIN || id > INT32_MAX)
      return fail(error, line_no, "station id '" + std::string(f[0]) + "' is not a whole number");
    s.id = static_cast<int32_t>(id);
    if (!number(f[1], s.lon) || s.lon == tervik_data3::undef || s.lon < -360 || s.lon > 360)
      return fail(error, line_no, "longitude '" + std::string(f[1]) + "' is not in -360..360");
    if (!number(f[2], s.lat) || s.lat == tervik_data3::undef || s.lat < -90 || s.lat > 90)
      return fail(error, line_no, "latitude '" + std::string(f[2]) + "' is not in -90..90");
    if (!number(f[3], s.value)) return fail(error, line_no, "value '" + std::string(f[3]) + "' is not a number");
    if (f.size() == 6) {
      double dir, speed;
      if (!number(f[4], dir) || !number(f[5], speed))
        return fail(error, line_no, "wind direction and speed must be numbers");
      const bool missing = dir == tervik_data3::undef || speed == tervik_data3::undef;
      if (!missing && (dir < 0 || dir > 360 || speed < 0 || speed > 200))
        return fail(error, line_no, "wind direction must be in 0..360 and speed in 0..200 m/s");
      s.code = missing ? 0 : std::round(speed) * 10000 + std::round(dir);
    }
    stations.push_back(s);
  }
  if (!header_seen) return fail(error, line_no, "no header line");
  out.stations.swap(stations);
  out.station_count = static_cast<int32_t>(out.stations.size());
  return true;
}

}  // namespace tervik::formats
