#include "formats/sounding_file.h"

#include "formats/text_fields.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace tervik::formats {

namespace {

using text::fail;
using text::parse_number;
using text::split_csv;
using text::trim;

constexpr double kMissing = 9999.0;
// One knot is one nautical mile (1852 m) an hour.
constexpr double kMetresPerSecondPerKnot = 1852.0 / 3600.0;
const char kCsvHeader[] = "pressure_hpa,height_m,temperature_c,dewpoint_c,wind_dir_deg,wind_speed_ms";

// Walks the text line by line, counting from 1, without the line feed and a trailing CR.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : text_(text) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") text_.remove_prefix(3);  // a byte-order mark
  }
  bool next(std::string_view& line) {
    if (pos_ > text_.size()) return false;
    const size_t eol = text_.find('\n', pos_);
    line = text_.substr(pos_, eol == std::string_view::npos ? std::string_view::npos : eol - pos_);
    pos_ = eol == std::string_view::npos ? text_.size() + 1 : eol + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++number_;
    return true;
  }
  int number() const { return number_; }

 private:
  std::string_view text_;
  size_t pos_ = 0;
  int number_ = 0;
};

bool starts_with(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

// A station number: a whole number in 0..2^31-1 filling the field.
bool parse_station(std::string_view field, int32_t& out) {
  long long v = 0;
  const auto r = std::from_chars(field.data(), field.data() + field.size(), v);
  if (field.empty() || r.ec != std::errc() || r.ptr != field.data() + field.size() || v < 0 || v > INT32_MAX)
    return false;
  out = static_cast<int32_t>(v);
  return true;
}

std::string show(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", v);
  return buf;
}

// The checks both forms share: plausible ranges, so that a shifted column or a wrong unit
// is reported rather than analysed. The pressure range is the one the indices accept.
bool check_level(const tag_tlogp_layer& l, int line, std::string& error) {
  if (!(l.p > 0 && l.p <= 1100)) return fail(error, line, "pressure " + show(l.p) + " hPa is not in 0..1100");
  if (l.z != kMissing && (l.z < -1000 || l.z > 100000))
    return fail(error, line, "height " + show(l.z) + " m is not in -1000..100000");
  if (l.t != kMissing && (l.t < -150 || l.t > 100))
    return fail(error, line, "temperature " + show(l.t) + " C is not in -150..100");
  if (l.td != kMissing && (l.td < -150 || l.td > 100))
    return fail(error, line, "dew point " + show(l.td) + " C is not in -150..100");
  if (l.wind_dir != kMissing && (l.wind_dir < 0 || l.wind_dir > 360))
    return fail(error, line, "wind direction " + show(l.wind_dir) + " is not in 0..360");
  if (l.wind_speed != kMissing && (l.wind_speed < 0 || l.wind_speed > 200))
    return fail(error, line, "wind speed " + show(l.wind_speed) + " m/s is not in 0..200");
  return true;
}

// Appends a checked level to a station. Levels run from the ground up, so the pressure may
// not rise; an equal pressure is accepted because the archive repeats a level now and then
// (a significant level that is also a mandatory one).
bool add_level(tag_tlogp_station& station, tag_tlogp_layer level, int line, std::string& error) {
  if (!check_level(level, line, error)) return false;
  if (!station.layers.empty() && level.p > station.layers.back().p)
    return fail(error, line,
                "pressure " + show(level.p) + " hPa is higher than the " + show(station.layers.back().p) +
                    " hPa of the level before; levels must run from the ground up");
  level.valid = level.t != kMissing && level.td != kMissing;
  station.layers.push_back(level);
  return true;
}

void install(std::vector<tag_tlogp_station>& stations, tag_tervik_data5& out) {
  out.soundings.swap(stations);
  out.sounding_count = static_cast<int32_t>(out.soundings.size());
}

// ---- The text listing ----

// The listing's text with HTML tags removed, for recognising titles and index lines.
std::string strip_tags(std::string_view line) {
  std::string out;
  bool in_tag = false;
  for (char c : line) {
    if (c == '<') in_tag = true;
    else if (c == '>') in_tag = false;
    else if (!in_tag) out += c;
  }
  return out;
}

std::vector<std::string_view> words(std::string_view s) {
  std::vector<std::string_view> out;
  size_t k = 0;
  while (k < s.size()) {
    while (k < s.size() && (s[k] == ' ' || s[k] == '\t')) ++k;
    const size_t start = k;
    while (k < s.size() && s[k] != ' ' && s[k] != '\t') ++k;
    if (k > start) out.push_back(s.substr(start, k - start));
  }
  return out;
}

bool is_dashes(std::string_view s) {
  s = trim(s);
  return s.size() >= 5 && s.find_first_not_of('-') == std::string_view::npos;
}

// A table row starts, after blanks, with a digit, a sign or a decimal point.
bool is_row(std::string_view line) {
  const std::string_view s = trim(line);
  if (s.empty() || is_dashes(s)) return false;
  const char c = s.front();
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

constexpr int kWidth = 7;  // every column of the listing is 7 characters wide

// One table of the listing and what is known of its station.
struct Table {
  int first_line = 0;
  std::vector<std::string> columns;  // names, column k spanning [7 k, 7 k + 7)
  int pres = -1, hght = -1, temp = -1, dwpt = -1, drct = -1, sknt = -1;
  int32_t index_number = -1;  // from "Station number:" after the table
  int32_t title_number = -1;  // from the title line before it
  tag_tlogp_station station{0, {}};
};

// Reads the column header "   PRES   HGHT   TEMP ..." whose names end at 7, 14, 21, ...
bool read_columns(std::string_view line, int line_no, Table& table, std::string& error) {
  size_t k = 0;
  while (k < line.size()) {
    while (k < line.size() && line[k] == ' ') ++k;
    const size_t start = k;
    while (k < line.size() && line[k] != ' ') ++k;
    if (k == start) break;
    const int index = static_cast<int>(table.columns.size());
    if (k != static_cast<size_t>(kWidth * (index + 1)) || start < static_cast<size_t>(kWidth * index))
      return fail(error, line_no, "column '" + std::string(line.substr(start, k - start)) +
                                      "' of the header is not in a 7-character column");
    const std::string name(line.substr(start, k - start));
    table.columns.push_back(name);
    if (name == "PRES") table.pres = index;
    if (name == "HGHT") table.hght = index;
    if (name == "TEMP") table.temp = index;
    if (name == "DWPT") table.dwpt = index;
    if (name == "DRCT") table.drct = index;
    if (name == "SKNT") table.sknt = index;
  }
  if (table.pres < 0 || table.temp < 0 || table.dwpt < 0)
    return fail(error, line_no, "the column header lacks PRES, TEMP or DWPT");
  return true;
}

bool read_row(std::string_view line, int line_no, Table& table, std::string& error) {
  const size_t width = table.columns.size() * kWidth;
  if (line.size() > width && !trim(line.substr(width)).empty())
    return fail(error, line_no, "text beyond the " + std::to_string(table.columns.size()) + " columns of the table");
  std::vector<double> cell(table.columns.size(), kMissing);
  for (size_t k = 0; k < cell.size() && k * kWidth < line.size(); ++k) {
    const std::string_view s = trim(line.substr(k * kWidth, kWidth));
    if (s.empty()) continue;
    if (!parse_number(s, cell[k]))
      return fail(error, line_no, table.columns[k] + " '" + std::string(s) + "' is not a number");
  }
  const auto at = [&](int k) { return k < 0 ? kMissing : cell[k]; };
  tag_tlogp_layer l;
  l.p = at(table.pres);
  l.z = at(table.hght);
  l.t = at(table.temp);
  l.td = at(table.dwpt);
  l.wind_dir = at(table.drct);
  if (at(table.sknt) != kMissing) l.wind_speed = at(table.sknt) * kMetresPerSecondPerKnot;
  if (l.p == kMissing) return fail(error, line_no, "a level without pressure");
  // Mandatory levels below the ground are listed with their extrapolated height only.
  // They carry nothing to analyse and are skipped.
  if (l.t == kMissing && l.td == kMissing && l.wind_dir == kMissing && l.wind_speed == kMissing) return true;
  return add_level(table.station, l, line_no, error);
}

}  // namespace

bool parse_sounding_listing(std::string_view text, tag_tervik_data5& out, std::string& error) {
  enum class State { Outside, Header, Rows } state = State::Outside;
  std::vector<Table> tables;
  int32_t pending_title = -1;      // number of the last title line not yet given to a table
  bool title_after_table = false;  // a title came after the last table: a new page began
  int header_lines = 0;            // lines seen between a column header and its rows
  LineReader lines(text);
  std::string_view line;
  while (lines.next(line)) {
    const int n = lines.number();
    if (state == State::Header) {
      // Between the column header and the rows: the units line and a dashed line. Anything
      // longer is not a table after all, and the lines are looked at afresh.
      if (is_dashes(line)) {
        state = State::Rows;
        continue;
      }
      if (is_row(line)) {
        state = State::Rows;
      } else if (++header_lines <= 2) {
        continue;
      } else {
        state = State::Outside;
      }
    }
    if (state == State::Rows) {
      if (is_row(line)) {
        if (!read_row(line, n, tables.back(), error)) return false;
        continue;
      }
      state = State::Outside;
    }
    const std::string plain = strip_tags(line);
    const std::vector<std::string_view> w = words(plain);
    if (w.empty()) continue;
    if (w[0] == "PRES") {
      Table t;
      t.first_line = n;
      t.title_number = pending_title;
      if (!read_columns(line, n, t, error)) return false;
      tables.push_back(std::move(t));
      pending_title = -1;
      title_after_table = false;
      state = State::Header;
      header_lines = 0;
    } else if (w.size() >= 2 && w[0] == "Station" && w[1] == "number:") {
      int32_t number = 0;
      if (w.size() != 3 || !parse_station(w[2], number))
        return fail(error, n, "the station number is not a whole number");
      if (!tables.empty() && !title_after_table && tables.back().index_number < 0)
        tables.back().index_number = number;
    } else if (plain.find(" Observations at ") != std::string::npos) {
      // The title line: "72357 OUN Norman Observations at 00Z 04 May 1999". Stations
      // without a WMO number are titled by their identifier and get no number here.
      int32_t number = -1;
      if (!parse_station(w[0], number)) number = -1;
      pending_title = number;
      title_after_table = true;
    }
  }

  if (tables.empty())
    return fail(error, 1, "no sounding found: expected a listing with a 'PRES HGHT TEMP DWPT ...' "
                          "column header, or the CSV header '" + std::string(kCsvHeader) + "'");
  std::vector<tag_tlogp_station> stations;
  for (Table& t : tables) {
    if (t.station.layers.empty()) return fail(error, t.first_line, "the table has no levels above the ground");
    const int32_t number = t.index_number >= 0 ? t.index_number : t.title_number;
    if (number < 0)
      return fail(error, t.first_line, "no station number for this table (no 'Station number:' line "
                                       "after it, no number at the start of its title line)");
    t.station.station = number;
    stations.push_back(std::move(t.station));
  }
  install(stations, out);
  return true;
}

// ---- CSV ----

namespace {

// "# station N[, description]": returns 1 with the number, 0 for any other comment, -1 for
// a "# station" followed by something that starts like a number but is not a station number.
int station_comment(std::string_view line, int32_t& number) {
  std::string_view s = trim(line.substr(1));
  if (!starts_with(s, "station") || s.size() < 8 || (s[7] != ' ' && s[7] != '\t')) return 0;
  s = trim(s.substr(7));
  size_t end = 0;
  while (end < s.size() && s[end] != ',' && s[end] != ' ' && s[end] != '\t') ++end;
  const std::string_view token = s.substr(0, end);
  if (token.empty() || !((token[0] >= '0' && token[0] <= '9') || token[0] == '-' || token[0] == '+')) return 0;
  return parse_station(token, number) ? 1 : -1;
}

}  // namespace

bool parse_sounding_csv(std::string_view text, tag_tervik_data5& out, std::string& error) {
  std::vector<tag_tlogp_station> stations;
  int station_line = 0;  // where the current station began
  bool header_seen = false;
  LineReader lines(text);
  std::string_view raw;
  // A station ends at the next "# station" line or at the end of the text.
  const auto close_station = [&]() {
    return stations.empty() || !stations.back().layers.empty() ||
           fail(error, station_line, "station " + std::to_string(stations.back().station) + " has no levels");
  };
  while (lines.next(raw)) {
    const int n = lines.number();
    const std::string_view line = trim(raw);
    if (line.empty()) continue;
    if (line.front() == '#') {
      int32_t number = 0;
      const int kind = station_comment(line, number);
      if (kind < 0) return fail(error, n, "the station number is not a whole number");
      if (kind == 0) continue;
      if (!close_station()) return false;
      stations.push_back({number, {}});
      station_line = n;
      continue;
    }
    if (line == kCsvHeader) {
      header_seen = true;
      continue;
    }
    if (!header_seen) return fail(error, n, "expected the header '" + std::string(kCsvHeader) + "'");
    if (stations.empty()) return fail(error, n, "a level before any '# station N' line");
    const std::vector<std::string_view> f = split_csv(line);
    if (f.size() != 6) return fail(error, n, "expected 6 fields, found " + std::to_string(f.size()));
    static const char* const kNames[6] = {"pressure", "height", "temperature", "dew point",
                                          "wind direction", "wind speed"};
    double v[6];
    for (int k = 0; k < 6; ++k) {
      v[k] = kMissing;  // an empty field, or the marker itself, is missing
      if (!f[k].empty() && !parse_number(f[k], v[k]))
        return fail(error, n, std::string(kNames[k]) + " '" + std::string(f[k]) + "' is not a number");
    }
    if (v[0] == kMissing) return fail(error, n, "a level without pressure");
    tag_tlogp_layer l;
    l.p = v[0];
    l.z = v[1];
    l.t = v[2];
    l.td = v[3];
    l.wind_dir = v[4];
    l.wind_speed = v[5];
    if (!add_level(stations.back(), l, n, error)) return false;
  }
  if (stations.empty()) return fail(error, 1, "no '# station N' line");
  if (!close_station()) return false;
  install(stations, out);
  return true;
}

bool parse_sounding(std::string_view text, tag_tervik_data5& out, std::string& error) {
  bool csv = false, first = true;
  LineReader lines(text);
  std::string_view raw;
  while (lines.next(raw)) {
    const std::string_view line = trim(raw);
    if (line.empty()) continue;
    if ((first && line.front() == '#') || starts_with(line, "pressure_hpa,")) {
      csv = true;
      break;
    }
    first = false;
  }
  return csv ? parse_sounding_csv(text, out, error) : parse_sounding_listing(text, out, error);
}

}  // namespace tervik::formats
