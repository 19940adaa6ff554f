#ifndef TERVIK_RECORDS_HOLDER_H
#define TERVIK_RECORDS_HOLDER_H

#include <cstring>

#include <tervik/records.h>

// Reference counting of the shared value arrays of grid records.
namespace tervik::detail {

// A new holder owning `malloced` with one owner; nullptr when `malloced` is null.
grid_holder* holder_adopt(double* malloced);

// One more owner of `h` (null is fine); returns `h`.
grid_holder* holder_share(grid_holder* h);

// One owner less; the last owner frees the array and deletes the holder.
void holder_release(grid_holder* h);

// Copies the header fields that grid and wind records share (title, time, level, geometry).
template <class Record>
void copy_grid_header(Record& to, const Record& from) {
  std::memcpy(to.description, from.description, sizeof to.description);
  std::memcpy(to.valid_time, from.valid_time, sizeof to.valid_time);
  to.level = from.level;
  to.lon_step = from.lon_step;
  to.lat_step = from.lat_step;
  to.first_lon = from.first_lon;
  to.last_lon = from.last_lon;
  to.first_lat = from.first_lat;
  to.last_lat = from.last_lat;
  to.nx = from.nx;
  to.ny = from.ny;
}

}  // namespace tervik::detail

#endif
