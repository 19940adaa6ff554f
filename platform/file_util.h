#ifndef TERVIK_PLATFORM_FILE_UTIL_H
#define TERVIK_PLATFORM_FILE_UTIL_H

#include <string>
#include <string_view>

namespace tervik::detail {

// Reads a whole regular file; false when it cannot be opened or read.
bool read_file(const char* path, std::string& out);

// Writes `text` to a temporary file beside `path` and renames it over `path`, so a reader
// never sees a partial file; on failure nothing is left behind and false is returned.
bool write_file_atomically(const char* path, std::string_view text);

}  // namespace tervik::detail

#endif
