// Feeds arbitrary text to the sounding file reader. Besides the sanitizers' findings it
// checks the reader's promises: on failure the output is untouched and the error names a
// line; on success every station has levels, pressures never rise, and a level is valid
// exactly when it has pressure, temperature and dew point.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/sounding_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tag_tervik_data5 out;
  out.soundings.push_back({-5, {}});
  out.sounding_count = 1;
  std::string error;
  if (!tervik::formats::parse_sounding(text, out, error)) {
    if (error.compare(0, 5, "line ") != 0 || out.soundings.size() != 1 || out.soundings[0].station != -5)
      __builtin_trap();
    return 0;
  }
  if (out.soundings.empty() || out.sounding_count != static_cast<int32_t>(out.soundings.size()))
    __builtin_trap();
  for (const tag_tlogp_station& s : out.soundings) {
    if (s.layers.empty() || s.station < 0) __builtin_trap();
    for (size_t k = 0; k < s.layers.size(); ++k) {
      const tag_tlogp_layer& l = s.layers[k];
      if (!(l.p > 0 && l.p <= 1100) || (k > 0 && l.p > s.layers[k - 1].p)) __builtin_trap();
      if (l.valid != (l.t != 9999.0 && l.td != 9999.0)) __builtin_trap();
    }
  }
  return 0;
}
