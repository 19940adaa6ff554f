// Feeds arbitrary bytes to the station CSV reader: whatever it accepts has consistent counts
// and in-range positions; whatever it refuses leaves the record as it was.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <tervik/records.h>

#include "formats/station_csv.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tervik_data3 stations;
  stations.stations.push_back(station_entry{7, {}, 1, 2, 0, 3});
  stations.station_count = 1;
  std::string error;
  if (!tervik::formats::parse_station_csv(text, stations, error)) {
    if (stations.station_count != 1 || stations.stations.size() != 1 || error.empty()) std::abort();
    return 0;
  }
  if (stations.station_count != static_cast<int32_t>(stations.stations.size())) std::abort();
  for (const station_entry& s : stations.stations)
    if (!(s.lat >= -90 && s.lat <= 90 && s.lon >= -360 && s.lon <= 360)) std::abort();
  return 0;
}
