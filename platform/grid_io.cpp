#include <cstdio>
#include <string>

#include <tervik/records.h>

#include "platform/file_util.h"
#include "platform/grid_text.h"

int read_datatype4(const char* path, tervik_data4& out) {
  std::string text;
  if (!tervik::detail::read_file(path, text)) return 1;
  std::string error;
  return tervik::detail::parse_grid_text(text, out, error) ? 0 : 1;
}

int write_datatype4(const char* path, const tervik_data4& in) {
  const std::string text = tervik::detail::print_grid_text(in);
  if (text.empty()) return 1;
  return tervik::detail::write_file_atomically(path, text) ? 0 : 1;
}
