#ifndef TERVIK_TESTS_SOUNDING_WYOMING_PAGE_H
#define TERVIK_TESTS_SOUNDING_WYOMING_PAGE_H

// Reads a radiosonde "text list" page: the data table of its first <PRE> block (fixed
// 7-character columns PRES HGHT TEMP DWPT RELH MIXR DRCT SKNT THTA THTE THTV, blank when
// missing) and the "key: value" lines of the index block that follows.

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <tervik/sounding.h>

namespace tervik::test {

struct WyomingPage {
  // One record per table row, in page order. A row without pressure, temperature or dew
  // point (levels below ground carry a height only) is an invalid record; a missing
  // height or wind is 9999.0. Speeds are converted from knots to m/s.
  std::vector<tag_tlogp_layer> layers;
  std::map<std::string, double> indices;  // e.g. "Level of Free Convection"

  bool has(const std::string& key) const { return indices.count(key) != 0; }
};

namespace wyoming_detail {

// The number in columns [7 k, 7 k + 7) of a table row, or false when blank.
inline bool column(const std::string& row, int k, double& value) {
  if (row.size() <= static_cast<size_t>(7 * k)) return false;
  const std::string cell = row.substr(7 * k, 7);
  if (cell.find_first_not_of(' ') == std::string::npos) return false;
  char* end = nullptr;
  value = std::strtod(cell.c_str(), &end);
  return end != cell.c_str();
}

}  // namespace wyoming_detail

// Parses the page at `path`; an empty page (no layers) when it cannot be read.
inline WyomingPage read_wyoming_page(const std::string& path) {
  WyomingPage page;
  std::ifstream in(path);
  if (!in) return page;
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::string text = buffer.str();

  const size_t table = text.find("<PRE>");
  if (table == std::string::npos) return page;
  const size_t table_end = text.find("</PRE>", table);
  std::istringstream rows(text.substr(table + 5, table_end - table - 5));
  std::string row;
  int dashes = 0;
  while (std::getline(rows, row)) {
    if (row.rfind("-----", 0) == 0) {
      ++dashes;
      continue;
    }
    if (dashes < 2 || row.find_first_not_of(' ') == std::string::npos) continue;
    using wyoming_detail::column;
    tag_tlogp_layer l;
    double p, z, t, td, dir, knots;
    const bool has_p = column(row, 0, p), has_t = column(row, 2, t), has_td = column(row, 3, td);
    l.valid = has_p && has_t && has_td;
    if (has_p) l.p = p;
    if (column(row, 1, z)) l.z = z;
    if (has_t) l.t = t;
    if (has_td) l.td = td;
    if (column(row, 6, dir) && column(row, 7, knots)) {
      l.wind_dir = dir;
      l.wind_speed = knots * 0.514444;
    }
    page.layers.push_back(l);
  }

  const size_t info = text.find("<PRE>", table_end);
  if (info == std::string::npos) return page;
  std::istringstream lines(text.substr(info + 5, text.find("</PRE>", info) - info - 5));
  std::string line;
  while (std::getline(lines, line)) {
    const size_t colon = line.rfind(':');
    if (colon == std::string::npos) continue;
    const std::string key = line.substr(line.find_first_not_of(' '),
                                        colon - line.find_first_not_of(' '));
    char* end = nullptr;
    const std::string rest = line.substr(colon + 1);
    const double value = std::strtod(rest.c_str(), &end);
    if (end != rest.c_str()) page.indices[key] = value;
  }
  return page;
}

}  // namespace tervik::test

#endif
