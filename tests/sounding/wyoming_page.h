#ifndef TERVIK_TESTS_SOUNDING_WYOMING_PAGE_H
#define TERVIK_TESTS_SOUNDING_WYOMING_PAGE_H

// Reads a radiosonde "text list" page: the data table of its first <PRE> block (fixed
// 7-character columns PRES HGHT TEMP DWPT RELH MIXR DRCT SKNT ..., blank when missing) and
// the "key: value" lines of the index block that follows.

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
  std::string path;

  bool has(const std::string& key) const { return indices.count(key) != 0; }
};

// The number in columns [7 k, 7 k + 7) of a table row, or false when blank.
inline bool wyoming_column(const std::string& row, int k, double& value) {
  const std::string cell = row.size() > 7u * k ? row.substr(7 * k, 7) : "";
  char* end = nullptr;
  value = std::strtod(cell.c_str(), &end);
  return end != cell.c_str();
}

// Parses the page at `path`; an empty page (no layers) when it cannot be read.
inline WyomingPage read_wyoming_page(const std::string& path) {
  WyomingPage page;
  page.path = path;
  std::stringstream buffer;
  buffer << std::ifstream(path).rdbuf();
  const std::string text = buffer.str();
  const size_t table = text.find("<PRE>"), table_end = text.find("</PRE>", table);
  if (table_end == std::string::npos) return page;
  std::istringstream rows(text.substr(table + 5, table_end - table - 5));
  int dashes = 0;
  for (std::string row; std::getline(rows, row);) {
    if (row.rfind("-----", 0) == 0) {
      ++dashes;
      continue;
    }
    if (dashes < 2 || row.find_first_not_of(' ') == std::string::npos) continue;
    tag_tlogp_layer l;
    double p, z, t, td, dir, knots;
    const bool has_p = wyoming_column(row, 0, p), has_t = wyoming_column(row, 2, t);
    const bool has_td = wyoming_column(row, 3, td);
    l.valid = has_p && has_t && has_td;
    if (has_p) l.p = p;
    if (has_t) l.t = t;
    if (has_td) l.td = td;
    if (wyoming_column(row, 1, z)) l.z = z;
    if (wyoming_column(row, 6, dir) && wyoming_column(row, 7, knots)) {
      l.wind_dir = dir;
      l.wind_speed = knots * 0.514444;
    }
    page.layers.push_back(l);
  }
  const size_t info = text.find("<PRE>", table_end);
  if (info == std::string::npos) return page;
  std::istringstream lines(text.substr(info + 5, text.find("</PRE>", info) - info - 5));
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.rfind(':'), start = line.find_first_not_of(' ');
    if (colon == std::string::npos) continue;
    const std::string rest = line.substr(colon + 1);
    char* end = nullptr;
    const double value = std::strtod(rest.c_str(), &end);
    if (end != rest.c_str()) page.indices[line.substr(start, colon - start)] = value;
  }
  return page;
}

}  // namespace tervik::test

#endif
