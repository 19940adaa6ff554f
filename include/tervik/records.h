#ifndef TERVIK_RECORDS_H
#define TERVIK_RECORDS_H

// The records that cross the library's boundary: grids, wind grids, station observations and
// soundings. Grids are row-major: the value of column i (0..nx-1) and row j (0..ny-1) is
// values[j*nx + i]; column i lies at first_lon + i*lon_step, row j at first_lat + j*lat_step
// (rows run north to south when lat_step is negative). Missing values equal `undef` exactly.

#include <cstdint>
#include <vector>

#include <tervik/export.h>
#include <tervik/sounding.h>

// Shared ownership cell of a value array. Copies of a record share one holder and count
// owners; the last owner releases the array with free() and deletes the holder, so every
// array handed to a record must come from malloc().
struct grid_holder {
  double* data;
  int32_t owners;
};

// Regular latitude-longitude grid of doubles.
class TERVIK_API tervik_data4 {
 public:
  char description[128];    // title, NUL-terminated
  int32_t valid_time[5];    // date-time words, copied as a block with `level`
  int32_t level;            // vertical level (for example hPa); key of a member in a sequence
  double lon_step;          // degrees between columns
  double lat_step;          // degrees between rows; negative when rows run north to south
  double first_lon;         // longitude of column 0
  double last_lon;          // longitude of column nx-1
  double first_lat;         // latitude of row 0
  double last_lat;          // latitude of row ny-1
  int32_t nx;               // columns
  int32_t ny;               // rows
  double contour_interval;  // suggested isoline interval
  double contour_start;     // suggested first isoline value
  double contour_end;       // suggested last isoline value
  int32_t geometry_override;  // nonzero: take the geometry from the isoline parameters
  grid_holder* values;      // shared value array; nullptr until set_gridPtr

  static double undef;  // missing-value marker, 9999.0

  tervik_data4();
  tervik_data4(const tervik_data4& other);
  tervik_data4& operator=(const tervik_data4& other);
  ~tervik_data4();

  // Installs a malloc()ed array of nx*ny values; the record owns it from now on and drops
  // its share of the previous array. A null pointer just drops the previous array.
  void set_gridPtr(double* malloced);

  // The value array, or nullptr when the record has none.
  double* data() const { return values ? values->data : nullptr; }
};

// Wind grid: the grid header of tervik_data4, then the u and v component arrays (m/s).
class TERVIK_API tervik_data11 {
 public:
  char description[128];
  int32_t valid_time[5];
  int32_t level;
  double lon_step;
  double lat_step;
  double first_lon;
  double last_lon;
  double first_lat;
  double last_lat;
  int32_t nx;
  int32_t ny;
  grid_holder* u_values;  // eastward component
  grid_holder* v_values;  // northward component

  tervik_data11();
  tervik_data11(const tervik_data11& other);
  tervik_data11& operator=(const tervik_data11& other);
  ~tervik_data11();

  // As tervik_data4::set_gridPtr, for the u and the v array.
  void set_gridPtrU(double* malloced);
  void set_gridPtrV(double* malloced);

  double* u() const { return u_values ? u_values->data : nullptr; }
  double* v() const { return v_values ? v_values->data : nullptr; }
};

// One observing station. `id` is the station number; the four bytes after it complete the
// identifier. `code` packs further observed quantities (for example wind) above 10000.
struct station_entry {
  int32_t id;
  char id_tail[4];
  double lon;    // degrees east
  double lat;    // degrees north
  double code;   // coded number
  double value;  // observed value; tervik_data3::undef when missing
};

// Station observations. The header is the caller's; the library never reads it.
class TERVIK_API tervik_data3 {
 public:
  char description[128] = {};
  int32_t valid_time[5] = {};
  int32_t level = 0;
  int32_t station_count = 0;  // equals stations.size()
  std::vector<station_entry> stations;

  static double undef;  // missing-value marker, 9999.0
};

// Soundings of several stations. The header is the caller's; the library never reads it.
struct TERVIK_API tag_tervik_data5 {
  char description[128] = {};
  int32_t valid_time[5] = {};
  int32_t sounding_count = 0;  // equals soundings.size()
  std::vector<tag_tlogp_station> soundings;
};

// Copies every header field of `from` (description, valid time, level, geometry, size,
// contour fields, geometry override) into `to`. The value array is not touched: callers
// follow with set_gridPtr.
TERVIK_API void data4copy(tervik_data4& to, const tervik_data4& from);

// Reads a grid file in the text grid format (docs/formats.md). Returns 0 on success; on any
// failure (missing, empty, truncated or malformed file, sizes that are negative, absurd or
// disagree with the values) returns nonzero and leaves `out` as it was.
TERVIK_API int read_datatype4(const char* path, tervik_data4& out);

// Writes `in` in the text grid format; a later read_datatype4 gives back the same doubles.
// Returns 0 on success, nonzero when the record has no values or the file cannot be written
// (nothing is left at `path` then).
TERVIK_API int write_datatype4(const char* path, const tervik_data4& in);

// ---- Valid times from data-file names ----
//
// Data files are named after their time: the base name begins with two digits each of
// year, month, day and hour, then a dot and the forecast hour in three digits, for
// example "24011512.006".

extern "C" {

// Reads the time of a base file name. The year gets 2000 added when it reads below 100.
// Each two-digit field is cut out by writing a terminator into `name` and putting the
// character back, so `name` must be writable; it is unchanged on return. No field is range
// checked. Returns 0, or 1 when `name` is null or shorter than 12 characters.
TERVIK_API int tduGetTimeByFilename(char* name, int* year, int* month, int* day, int* hour,
                                    int* forecast_hour);

// `path` with its base name replaced by the name of the time `hours` later (earlier when
// negative), forecast hour 000. The new name overwrites the old one in place, so the result
// keeps the length of `path`. `mode` is the calendar: 0 Gregorian, 1 without leap days.
// Returns a malloc()ed string that the caller frees, or null when the name cannot be read,
// the date arithmetic fails or memory runs out.
TERVIK_API char* tduGetFilenameByRelativeTimeInterval(const char* path, int hours, int mode);

}  // extern "C"

#endif
