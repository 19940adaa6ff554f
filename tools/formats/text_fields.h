#ifndef TERVIK_TOOLS_FORMATS_TEXT_FIELDS_H
#define TERVIK_TOOLS_FORMATS_TEXT_FIELDS_H

// Small pieces the text readers share: trimming, comma splitting, numbers that must fill
// their field, and the "line N: reason" error form.

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

namespace tervik::formats::text {

// `s` without leading and trailing blanks, tabs and carriage returns.
inline std::string_view trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

// The comma-separated fields of a line, each trimmed.
inline std::vector<std::string_view> split_csv(std::string_view line) {
  std::vector<std::string_view> fields;
  size_t start = 0;
  while (true) {
    const size_t comma = line.find(',', start);
    const size_t length = comma == std::string_view::npos ? std::string_view::npos : comma - start;
    fields.push_back(trim(line.substr(start, length)));
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return fields;
}

// A finite decimal number that fills the whole field (a leading '+' allowed); false for an
// empty field.
inline bool parse_number(std::string_view field, double& out) {
  if (!field.empty() && field.front() == '+') field.remove_prefix(1);
  if (field.empty()) return false;
  const auto r = std::from_chars(field.data(), field.data() + field.size(), out);
  return r.ec == std::errc() && r.ptr == field.data() + field.size() && std::isfinite(out);
}

// Sets `error` to "line N: what" and returns false.
inline bool fail(std::string& error, int line, const std::string& what) {
  error = "line " + std::to_string(line) + ": " + what;
  return false;
}

}  // namespace tervik::formats::text

#endif
