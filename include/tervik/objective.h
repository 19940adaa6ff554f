#ifndef TERVIK_OBJECTIVE_H
#define TERVIK_OBJECTIVE_H

// Objective analysis: scattered station values analysed onto a regular grid.

#include <cstdint>
#include <fstream>
#include <vector>

#include <tervik/export.h>
#include <tervik/isoline.h>
#include <tervik/records.h>

// ---- Analysis schemes ----
//
// An analysis grid has nx columns from lon_min to lon_max and ny rows from lat_min to
// lat_max (degrees, inclusive), spaced evenly: column i lies at lon_min + i*(lon_max -
// lon_min)/(nx - 1), row j likewise. Results are row-major, value (i, j) at j*nx + i.
//
// Station input. The caller describes its station buffer with six column codes, one per
// column in storage order: 1 station number, 2 longitude (deg E), 3 latitude (deg N),
// 4 observed value, 5 wind direction (deg, meteorological), 6 wind speed (m/s). The present
// columns lie back to back in the buffer, station_count doubles each; a code outside 1..6
// means "no column here" and takes no storage. Grid input: two codes for up to two grids of
// nx*ny doubles stored back to back in grid_buffer (grid k at grid_buffer + k*nx*ny); the
// grid coded 11 becomes the first guess (the second one when both are; none when
// grid_buffer is null), and when neither code is 11 the first guess of the previous call is
// kept. The columns of a previous call likewise stay bound when a call does not name them.
// Columns and grids are borrowed: the scheme keeps the pointers after the call and never
// frees them, so a caller that reuses a scheme keeps those buffers alive or names them anew.
//
// assimilate returns a malloc()ed grid of nx*ny values that the caller frees, or null after
// printing the reason on standard error. Every scheme fails, with a message, when nx or ny is
// below 2 or nx*ny does not fit an int, when the domain is not finite or lon_max <= lon_min
// or lat_max == lat_min, and when the longitude, latitude or value column is missing.

// Base of the analysis schemes: grid geometry, the bound station columns and the shared
// screening and smoothing operations. The members are public plain data so that callers
// and tests can inspect what a call bound and found.
class TERVIK_API daBase {
 public:
  int32_t nx = 0;
  int32_t ny = 0;
  double lon_min = 0, lon_max = 0, lat_min = 0, lat_max = 0;
  int32_t station_count = 0;
  double* id_column = nullptr;          // station numbers
  double* lon_column = nullptr;         // degrees east
  double* lat_column = nullptr;         // degrees north
  double* value_column = nullptr;       // the observation analysed
  double* wind_dir_column = nullptr;    // degrees, direction the wind blows from
  double* wind_speed_column = nullptr;  // m/s
  double* first_guess = nullptr;        // nx*ny values, borrowed
  // Stations judged local extrema by qualityControl: +s for a maximum at station index s,
  // -s for a minimum (so station 0 is always recorded as 0, a maximum).
  std::vector<int32_t> extremum_list;

  daBase();
  daBase(const daBase&) = delete;
  daBase& operator=(const daBase&) = delete;
  virtual ~daBase();

  // Analyses the bound stations onto the grid; see the comment above the class.
  virtual double* assimilate(int nx, int ny, double lon_min, double lon_max, double lat_min,
                             double lat_max, int station_count, double undef,
                             const int* column_codes, double* station_buffer,
                             const int* grid_codes, double* grid_buffer, const int* options) = 0;

  // Station screening over the bound columns: flags[s] = 1 for a usable station, 0 for an
  // isolated spike (a local extremum that differs from its nearest neighbours by at least
  // the tolerance: 10 within 8 degrees when options[1] < 1000 hPa, else 8 within 5 degrees)
  // and for surface stations 4205 and 4211. Surviving extrema with neighbours on at least
  // three sides (or 8 neighbours) go to extremum_list. Prints "station ... has no
  // neighbors" on standard output for an extremum without neighbours. Does nothing when
  // flags or a needed column is null; null options act as {0, 0, 0}.
  virtual void qualityControl(unsigned short* flags, int station_count, const int* options);

  // Moving-average smoother: each point becomes the mean of the points of the
  // (2*mask+1) x (2*mask+1) square around it that lie in the grid and are not missing
  // (tervik_data4::undef). Missing points stay missing. mask <= 0 leaves the grid as it is.
  virtual void smoothField(double* grid, int nx, int ny, int mask);

  // Gaussian smoothing of standard deviation sigma grid lengths, in place; the kernel
  // reaches 1 + trunc(3*sigma) points each way, at most 32 (beyond that a warning goes to
  // standard error and the kernel is cut). sigma not positive and finite: nothing happens.
  virtual void gaussianSmooth(double* grid, int nx, int ny, double sigma);

  // Least-squares surface smoothing: each point is replaced by the value at that point of
  // the polynomial surface of degree `mode` (1 plane, 2 quadratic, 3 cubic; any other mode
  // acts as 1) fitted by least squares to the square window of half-width `mode` around it,
  // cut at the grid edge. The whole grid is treated `levels` times, each time from the
  // previous result; levels <= 0 does nothing. A fit reproduces polynomials of its degree
  // exactly, so the plane keeps gradients and the quadratic keeps curvature (extrema).
  virtual void surfaceSmooth(double* grid, int nx, int ny, int levels, int mode);
};

// Successive-correction (Cressman) analysis. Starting from the first guess, or from the mean
// of the stations when there is none, each pass k corrects every grid point by the weighted
// mean of the station increments (observation minus the bilinear background) within
// scan_radius[k] grid lengths, weight (R^2 - r^2)/(R^2 + r^2). Stations whose increment
// exceeds reject_threshold[k] are dropped for the rest of the call (reported on standard
// output). From the second pass on, stations between 23 and 66 N that carry wind add a
// geostrophic estimate of the height difference to the grid point. options is not read.
class TERVIK_API daCressman : public daBase {
 public:
  double weight_factor;       // multiplies every station weight
  double wind_weight_factor;  // weight of the geostrophic wind term relative to a station's
  int32_t scan_count;         // passes, 1..5; anything else is repaired to 5 with a message
  double scan_radius[5];      // grid lengths
  double reject_threshold[5];  // units of the observation

  explicit daCressman(int scan_count);

  double* assimilate(int nx, int ny, double lon_min, double lon_max, double lat_min,
                     double lat_max, int station_count, double undef, const int* column_codes,
                     double* station_buffer, const int* grid_codes, double* grid_buffer,
                     const int* options) override;

 private:
  void init();
};

// The operational Cressman variant: screens the stations with qualityControl, conditions
// the first guess by options[0] (0: the region 60-110 E, 20-50 N is set to the mean of its
// screened stations, NaN when there is none; 1: kept as it is; 2: Gaussian smoothing of 4
// grid lengths), runs the passes and, when options[2] is nonzero, sharpens the recorded
// extrema: the values of stations near an analysed extremum are changed in the caller's
// value column, the passes run again and the grid gets surfaceSmooth(6, mode 2 or 1).
// options[1] is the level in hPa (1000 and above: surface). Null options act as {0, 0, 0}.
class TERVIK_API daCressmanHQ : public daCressman {
 public:
  explicit daCressmanHQ(int scan_count);

  double* assimilate(int nx, int ny, double lon_min, double lon_max, double lat_min,
                     double lat_max, int station_count, double undef, const int* column_codes,
                     double* station_buffer, const int* grid_codes, double* grid_buffer,
                     const int* options) override;
};

// Barnes analysis on the sphere: a first pass of Gaussian weights exp(-D/(4 kappa)) within
// influence_radius degrees of arc (D the squared great-circle distance in degrees^2), then
// five correction passes of radius influence_radius/(k+2) and shape 4*kappa*gamma^k. The
// first guess and options are not used. Stations whose position or value is not finite take
// no part; values equal to undef are not screened (pass only defined stations). With no
// station the grid is all 0.
class TERVIK_API daBarnes : public daBase {
 public:
  double kappa;             // Gaussian shape parameter, degrees^2
  double influence_radius;  // radius of the first pass, degrees of arc
  double gamma;             // each correction pass multiplies the shape by it

  daBarnes();

  double* assimilate(int nx, int ny, double lon_min, double lon_max, double lat_min,
                     double lat_max, int station_count, double undef, const int* column_codes,
                     double* station_buffer, const int* grid_codes, double* grid_buffer,
                     const int* options) override;

 private:
  void init();
};

// Variational surface fit: the grid that minimises the squared misfit of its bilinear values
// at the stations plus 0.2 times the sum of squared second differences along rows and
// (weighted by 1/cos^4 of the latitude) along columns, found by conjugate gradients from a
// constant surface at the stations' mean. The first guess and options are not used. Values
// equal to undef or not finite are skipped; with no usable station the call fails.
class TERVIK_API daSurfaceFit : public daBase {
 public:
  // Conjugate-gradient iterations of the last successful fit.
  int32_t iteration_count = 0;

  daSurfaceFit();

  double* assimilate(int nx, int ny, double lon_min, double lon_max, double lat_min,
                     double lat_max, int station_count, double undef, const int* column_codes,
                     double* station_buffer, const int* grid_codes, double* grid_buffer,
                     const int* options) override;
};

// ---- Objective analysis parameters and driver ----

// Settings of one objective analysis.
struct obj_analysis_param {
  double lon_min;     // longitude of the first grid column, degrees east
  double lon_max;     // longitude of the last grid column
  double lat_min;     // latitude of the first grid row, degrees north
  double lat_max;     // latitude of the last grid row
  double grid_step;   // grid spacing in degrees, both directions
  int32_t method;     // 1 daCressman, 2 daBarnes, 5 daSurfaceFit, anything else daCressmanHQ
  int32_t first_guess_model;  // 0 none, 1 "k402", 2 "polarnav", 3 "kiwan", 4 "ORCA_QRT"
  bool enhance_extrema;       // extremum enhancement of daCressmanHQ
};

// Text form: the five doubles, method, first_guess_model and an integer that sets
// enhance_extrema exactly when it is 1, separated by white space. On a read failure the
// stream fails and `p` keeps its old values.
TERVIK_API std::ifstream& operator>>(std::ifstream& in, obj_analysis_param& p);
// Writes the eight items in that order, one blank between them, no line end, with the
// stream's current formatting (six significant digits by default).
TERVIK_API std::ofstream& operator<<(std::ofstream& out, const obj_analysis_param& p);

// Analyses the stations whose value is not tervik_data3::undef onto the grid of `param`
// (nx = trunc((lon_max - lon_min)/grid_step) + 1, ny likewise) and contours the result.
// `level` is the level in hPa; `data_kind` 0 (pressure) and 1 (height) carry wind in each
// station's code (speed*10000 + direction); 0, 1 and 2 (temperature) can take a model first
// guess. The first-guess file is found from `file_name`, whose station file name must follow
// its last backslash and which must contain "data"; a first guess that cannot be found or
// read is skipped. Prints "It takes N milliseconds." on standard output. When
// iso_param.area_set is false, the area is set to the analysis grid and regular levels
// (start and end on multiples of the truncated level_interval) are derived from the station
// values. grid_out receives the grid, layer_out its isolines.
//
// Returns true when isolines were produced. False, with a message on standard error, for a
// grid step that is not positive or leaves fewer than 2 columns or rows, no valid station
// or a failed analysis (grid_out and layer_out are then untouched), and when contouring the
// grid fails (grid_out then holds the grid, layer_out is untouched). Values that are not
// finite count as missing; stations without wind (data_kind 2 and above) get undef winds.
// An interval below 1 puts the derived levels on whole numbers, and one that is not positive
// is replaced by 1; a derived start above the derived end is exchanged with it.
TERVIK_API bool do_objective_analysis(const char* file_name, const tervik_data3& stations, int level,
                                      int data_kind, const obj_analysis_param& param,
                                      isoline_analysis_param& iso_param, tervik_data4& grid_out,
                                      tag_isoline_layer& layer_out);

#endif
