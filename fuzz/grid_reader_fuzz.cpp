// Feeds arbitrary bytes to the grid-file parser. Whatever parses must print and parse back to
// the same doubles; whatever fails must leave the record untouched.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <tervik/records.h>

#include "platform/grid_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tervik_data4 grid;
  std::string error;
  if (!tervik::detail::parse_grid_text(text, grid, error)) {
    if (grid.values != nullptr || error.empty()) std::abort();
    return 0;
  }
  const size_t count = static_cast<size_t>(grid.nx) * static_cast<size_t>(grid.ny);
  tervik_data4 again;
  if (!tervik::detail::parse_grid_text(tervik::detail::print_grid_text(grid), again, error))
    std::abort();
  if (again.nx != grid.nx || again.ny != grid.ny ||
      std::memcmp(again.data(), grid.data(), count * sizeof(double)) != 0)
    std::abort();
  return 0;
}
