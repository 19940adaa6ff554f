#ifndef TERVIK_PLATFORM_GRID_TEXT_H
#define TERVIK_PLATFORM_GRID_TEXT_H

// The text grid format, parsed from and printed to memory. File access lives in grid_io.cpp;
// keeping the parser on plain text lets it be fuzzed directly.

#include <string>
#include <string_view>

#include <tervik/records.h>

namespace tervik::detail {

// Largest grid the reader accepts, in values.
constexpr long long kMaxGridValues = 100000000;

// Parses a whole grid file. On success fills `out` (header and a new value array) and
// returns true; on failure returns false, leaves `out` untouched and puts a one-line reason
// ("line 7: ...") in `error`.
bool parse_grid_text(std::string_view text, tervik_data4& out, std::string& error);

// The text form of `in`; empty when `in` has no values or its size is unusable.
std::string print_grid_text(const tervik_data4& in);

}  // namespace tervik::detail

#endif
