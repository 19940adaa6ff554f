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
  // One record per table row; rows lacking p, t or td (below ground) are invalid.
  std::vector<tag_tlogp_layer> layers;
  std::map<std::string, double> indices;  // e.g. "Level of Free Convection"
  std::string path;

  bool has(const std::string& key) const { return indices.count(key) != 0; }
};

// Parses the number at the start of `text` into `value`, or returns false.
inline bool parse_number(const std::string& text, double& value) {
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end != text.c_str();
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
    dashes += row.rfind("-----", 0) == 0;
    if (dashes < 2 || row.rfind("-----", 0) == 0 || row.find_first_not_of(' ') == row.npos)
      continue;
    double x[8] = {};  // the first eight columns; speeds go from knots to m/s
    bool has[8];
    for (int k = 0; k < 8; ++k)
      has[k] = parse_number(row.size() > 7u * k ? row.substr(7 * k, 7) : "", x[k]);
    page.layers.push_back({has[0] && has[2] && has[3], has[0] ? x[0] : 9999.0,
                           has[1] ? x[1] : 9999.0, has[2] ? x[2] : 9999.0, has[3] ? x[3] : 9999.0,
                           has[6] && has[7] ? x[6] : 9999.0,
                           has[6] && has[7] ? x[7] * 0.514444 : 9999.0});
  }
  const size_t info = text.find("<PRE>", table_end);
  if (info == std::string::npos) return page;
  std::istringstream lines(text.substr(info + 5, text.find("</PRE>", info) - info - 5));
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.rfind(':'), start = line.find_first_not_of(' ');
    double value;
    if (colon != line.npos && parse_number(line.substr(colon + 1), value))
      page.indices[line.substr(start, colon - start)] = value;
  }
  return page;
}

}  // namespace tervik::test

#endif
