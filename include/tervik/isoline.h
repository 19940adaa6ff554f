#ifndef TERVIK_ISOLINE_H
#define TERVIK_ISOLINE_H

// Isolines (contour lines) of a regular grid: the layer that holds them, the builder
// interface through which tracers deliver geometry, and the tracers themselves.

#include <cstdint>
#include <iosfwd>
#include <vector>

#include <tervik/export.h>
#include <tervik/records.h>

// ---- Isoline layer ----

// A point of a line in map coordinates; `edge` marks the first and the last point.
struct tag_isoline_point {
  double x, y;
  bool edge;
};

// A label placed on a line: position, angle in degrees, text of at most 15 characters.
struct tag_isoline_label {
  double x, y, angle;
  char text[16];
};

// One contour line. A line is closed when its first and last points are equal.
struct tag_isoline {
  double level;
  int32_t closed;        // nonzero for a closed ring
  int32_t point_count;   // equals points.size()
  std::vector<tag_isoline_point> points;
  int32_t label_count;   // equals labels.size()
  std::vector<tag_isoline_label> labels;
};

// One filled (shaded) polygon ring; `first` and `second` are set by the filled-contour
// tracer (see isoline_shade).
struct tag_shaded_isoline {
  int32_t first;
  double level;
  int32_t second;
  int32_t point_count;  // equals points.size()
  std::vector<tag_isoline_point> points;
};

// What contouring produces: lines and polygons in order of completion. The counts equal
// the sizes of their vectors; both are kept because callers read the counts.
struct tag_isoline_layer {
  int32_t line_count;
  std::vector<tag_isoline> lines;
  int32_t polygon_count;
  std::vector<tag_shaded_isoline> polygons;
};

// ---- Builders ----

// Receiver of contour geometry. Tracers never store results: they describe lines, points,
// labels and shaded polygons through these calls. Every operation has an empty default and
// the base class has no layer.
class TERVIK_API contourBuilder {
 public:
  // Begins a line at `level`; `closed` tells whether it is a ring.
  virtual void newLine(double level, bool closed);
  // Finishes the current line.
  virtual void addLine();
  // Adds a point in map coordinates; `edge` is true for the first and the last point.
  virtual void addPoint(double x, double y, bool edge);
  // Adds a label to the current line; `angle` in degrees.
  virtual void addLabel(const char* text, double x, double y, double angle);
  // Begins a shaded polygon ring with the two descriptors of the filled-contour tracer.
  virtual void newShadedLine(double level, int first, int second);
  // Finishes the current polygon ring.
  virtual void addShadedLine();
  // Adds a point to the current polygon ring.
  virtual void addShadedPoint(double x, double y, bool edge);
  // The layer being filled; null in the base class.
  virtual tag_isoline_layer* getLayer();
  // Frees the layer.
  virtual void releaseContour();
  virtual ~contourBuilder();
};

// The builder that collects everything into a tag_isoline_layer. The layer is created by
// the first newLine or newShadedLine; a line or polygon enters it only at addLine or
// addShadedLine. The destructor does not free the layer: whoever takes it through getLayer()
// frees it with releaseContour(), after which the builder must not be used again.
class TERVIK_API isolineContourBuilder : public contourBuilder {
 public:
  isolineContourBuilder();
  isolineContourBuilder(const isolineContourBuilder&) = delete;
  isolineContourBuilder& operator=(const isolineContourBuilder&) = delete;
  ~isolineContourBuilder() override;

  void newLine(double level, bool closed) override;
  void addLine() override;
  void addPoint(double x, double y, bool edge) override;
  // `text` must be shorter than 16 characters; longer texts are cut to 15.
  void addLabel(const char* text, double x, double y, double angle) override;
  void newShadedLine(double level, int first, int second) override;
  void addShadedLine() override;
  void addShadedPoint(double x, double y, bool edge) override;
  tag_isoline_layer* getLayer() override;
  void releaseContour() override;

 private:
  void ensure_layer();

  tag_isoline_layer* layer_;
  tag_isoline* line_;
  tag_shaded_isoline* polygon_;
};

// ---- Contour tracer ----

// Interface of contour tracers over a regular grid.
class TERVIK_API isoline_analysis_base {
 public:
  explicit isoline_analysis_base(contourBuilder* builder) : builder_(builder) {}
  virtual ~isoline_analysis_base();

  // Contours `grid` (nx columns by ny rows, row-major) at `count` levels, in list order.
  // Grid point (column i, row j), counted from 0, lies at map position (x0 + i*dx,
  // y0 + j*dy); points and labels reach the builder in those map units. Values equal to
  // `undef` (exact comparison) are missing and never crossed. Returns true when the
  // builder ends up with a layer (so false for a fresh builder and a grid without lines),
  // false without a grid or a builder. A negative count is an empty list.
  virtual bool create_isoline(double* grid, int nx, int ny, double x0, double y0, double dx,
                              double dy, const double* levels, int count, double undef) = 0;
  virtual bool create_isoline(double* grid, int nx, int ny, double x0, double y0, double dx,
                              double dy, const std::vector<double>& levels, double undef) = 0;

 protected:
  std::vector<double> levels_;
  contourBuilder* builder_;  // not owned
};

// The contour tracer: marks the cell sides each level crosses, walks lines through the
// cells (closing rings, ending at the border and at missing data, resolving saddle cells by
// the shorter pairing), optionally smooths them with a cubic Hermite spline, and hands
// points and labels to the builder in map coordinates. A line is labelled with its level
// ("%d" for whole levels, else "%.1f") at its first point when it is at least 0.1 map
// units long, and again after every 40 map units of line.
class TERVIK_API isoline_analysis_gx : public isoline_analysis_base {
 public:
  explicit isoline_analysis_gx(contourBuilder* builder);
  isoline_analysis_gx(const isoline_analysis_gx&) = delete;
  isoline_analysis_gx& operator=(const isoline_analysis_gx&) = delete;
  ~isoline_analysis_gx() override;

  // Spline smoothing of traced lines; on after construction.
  void enable_spline(bool on);

  // Also missing: values that are NaN or infinite. Grids with fewer than two columns or
  // rows have no lines. A level whose work storage cannot be allocated is skipped with
  // "Error in GXCLEV: Unable to allocate storage \n" on standard output; a spline longer
  // than the line buffer prints "spline fit yields too many points.\n" on standard error
  // and enlarges the buffer. The tracer keeps its buffers (they only grow) and the grid
  // pointer and levels of the last call.
  bool create_isoline(double* grid, int nx, int ny, double x0, double y0, double dx, double dy,
                      const double* levels, int count, double undef) override;
  bool create_isoline(double* grid, int nx, int ny, double x0, double y0, double dx, double dy,
                      const std::vector<double>& levels, double undef) override;

 private:
  // The tracer's state lives in the implementation; see isoline/tracer.cpp.
  struct State;
  State* state_;
};

// ---- Filled-contour tracer ----

// Filled contours: the polygons covering the part of a grid whose values lie in each band
// between consecutive levels, handed to a builder through newShadedLine, addShadedPoint and
// addShadedLine.
//
// Bands. The levels are taken in ascending order of value (any order may be given; NaN
// levels are dropped, equal levels bound an empty band that yields nothing). A value v lies
// in the band (a, b] of the consecutive levels a < b, in the open band below the lowest
// level when v <= lowest, and in the open band above the highest when v > highest: a value
// equal to a level counts below it, exactly as the contour tracer decides which cell sides a
// level crosses, so band boundaries run through the same side crossings as the lines.
// Inside a cell the field is taken as bilinear; boundaries are straight between side
// crossings, and a saddle cell joins its corners the way the bilinear surface does (by the
// value at its saddle point).
//
// Descriptors of newShadedLine(level, first, second), per ring:
//  - first: colour of the band. create_isoshade gives a band the colour of the level at its
//    lower edge and the open band below the lowest level -1; create_isoshade_high2low gives a
//    band the colour of the level at its upper edge and the open band above the highest level
//    -1. With colours 0..count-1 for ascending levels, create_isoshade numbers the bands
//    -1..count-1 from the bottom; for descending levels, high2low numbers them -1..count-1
//    from the top.
//  - level: the level whose colour the band carries (for the -1 band the nearest level).
//  - second: 0 for an outer boundary, 1 for a hole.
// Rings are closed (the last point repeats the first), outer boundaries run counter-clockwise
// and holes clockwise in map coordinates (whatever the signs of dx and dy), so filling all
// rings of one band together with either the even-odd or the nonzero rule gives the band.
// Rings of a band come in no particular nesting order. Only the first and the last point of
// a ring are passed with edge true. The signed areas of all rings of all bands add up to the
// area of the cells with four defined corners (up to rounding), smoothed or not.
//
// Missing data: grid values equal to `undef`, NaN or infinite are missing; a cell with a
// missing corner belongs to no band and its sides bound the bands around it.
//
// `open_bands` says which open bands to build: 1 the band below the lowest level, 2 the band
// above the highest, 3 both (the whole defined area is then covered), 0 neither.
//
// Spline smoothing (on after construction) smooths every piece of a ring that follows a
// level with the contour tracer's cubic Hermite curve (steps of 0.25 grid units, 0.1 when a
// grid step is 0.1 or less); pieces along the grid border or missing data stay straight.
// Neighbouring bands share the same smoothed curve, so bands still neither overlap nor leave
// gaps at their common boundaries.
//
// Grid layout and map coordinates as for isoline_analysis_gx: point (column i, row j),
// counted from 0, is grid[j*nx + i] at (x0 + i*dx, y0 + j*dy).
class TERVIK_API isoline_shade {
 public:
  explicit isoline_shade(contourBuilder* builder);
  isoline_shade(const isoline_shade&) = delete;
  isoline_shade& operator=(const isoline_shade&) = delete;
  ~isoline_shade();

  void enable_spline(bool on);

  // Builds the bands of `count` levels with their colours (see above). Returns false, with
  // nothing or only part of the rings delivered, when an argument is unusable (null
  // pointers, nx or ny below 2, more than 2^29 grid points, x0, y0, dx or dy not finite, dx
  // or dy zero, no level that is not NaN), when
  // no cell has four defined corners, when the bands would need more than 2^26 side
  // crossings, or when memory runs out (or, as a guard, a ring fails to close); true
  // otherwise.
  bool create_isoshade(const double* grid, int nx, int ny, double x0, double y0, double dx,
                       double dy, const double* levels, const int* colours, int count,
                       double undef, int open_bands);
  bool create_isoshade_high2low(const double* grid, int nx, int ny, double x0, double y0,
                                double dx, double dy, const double* levels,
                                const int* colours, int count, double undef, int open_bands);

 private:
  bool shade(const double* grid, int nx, int ny, double x0, double y0, double dx, double dy,
             const double* levels, const int* colours, int count, double undef, int open_bands,
             bool colour_from_upper_edge);

  contourBuilder* builder_;  // not owned
  bool spline_;
};

// ---- Analysis parameters and driver ----

// How do_isoline_analysis contours a grid. Longitudes and latitudes in degrees.
struct isoline_analysis_param {
  // The area fields hold valid values. do_isoline_analysis does not read it; the objective
  // analysis fills the area from its grid when it finds it false.
  bool area_set = false;
  double first_lon = 0, last_lon = 0, first_lat = 0, last_lat = 0;  // map area to contour
  double lon_step = 0, lat_step = 0;                                // sampling of the area
  bool use_interval = true;  // levels from start, interval and end; false: `levels`
  double level_start = 0, level_interval = 0, level_end = 0;
  std::vector<double> levels;  // explicit levels, in file order
  bool shade = false;          // also build filled bands
  bool spline = false;         // smooth the isolines
  bool shade_spline = false;   // smooth the filled bands
  int32_t smoothing = 0;       // field smoothing: 0 none, 1 box of 3, 2 box of 5, 3 Gaussian
};

// Writes the parameters as one line of whitespace-separated numbers, a blank after each but
// the last and no line break: area_set (1 or 0); first_lon last_lon first_lat last_lat
// lon_step lat_step; the level count n (0 when use_interval is set, else the list's size);
// level_start level_interval level_end when n is 0, else the n levels; shade spline
// shade_spline (1 or 0); smoothing. Numbers use the stream's current format (six
// significant digits unless the caller set another precision).
TERVIK_API std::ofstream& operator<<(std::ofstream& out, const isoline_analysis_param& param);

// Reads the text written above. Flags are integers and true exactly when equal to 1;
// use_interval becomes (n == 0); the n levels are appended to `levels` without clearing it,
// and when n is 0 the list is left alone and start, interval and end are read instead (they
// are left alone when n is above 0). On truncated or non-numeric text, a negative level count
// or one above 10 000 000, the stream is left failed and the record exactly as it was;
// memory grows only with the levels actually present in the text.
TERVIK_API std::ifstream& operator>>(std::ifstream& in, isoline_analysis_param& param);

// Proposes contour settings for values between `min` and `max`: a round interval giving
// about ten levels, the first multiple of it above `min` (one interval above the largest
// multiple not greater than `min`) and the largest multiple not greater than `max`. A range
// below 1e-16, or a min or max that is not finite, gives start 0, interval 1, end 0. Null
// output pointers are skipped.
TERVIK_API void find_isoline_values(double min, double max, double* start, double* interval,
                                    double* end);

// Contours a grid record into `out` with the parameters: levels, field smoothing, the area
// (the whole grid with the parameters' geometry when the record's geometry_override is set;
// the whole grid when the six area values equal the record's within 0.001; else the area
// cut out of the grid), isolines and, when param.shade is set, filled bands through an
// isolineContourBuilder. The bands (see isoline_shade) include both open bands and give
// level k of the level list colour k; they are built upwards (create_isoshade) when
// level_interval is above 0 and high to low otherwise, explicit lists included. On success
// `out` is replaced by the lines and polygons built and the result is true.
//
// Fails, returning false with `out` untouched: silently for a level count of 0 or less (an
// interval that is zero or NaN, or would give more than 10 000 000 levels, counts as none)
// and for failed level memory; with "Isoline analysis fails.\n" on standard error when the
// area reaches outside the grid, the record has no values or nothing was contoured (no
// isoline crosses the grid). An area whose size formula gives no rows or columns (such as a
// cut-out with a negative lat_step, which gives at most one row) contours nothing and so
// fails the same way. Smoothing choices other than 1, 2 and 3 smooth nothing. Missing values
// are those equal to tervik_data4::undef; smoothing spreads them like any value. Failed
// shading prints "Shaded isoline analysis fails.\n" and leaves the result true.
TERVIK_API bool do_isoline_analysis(const tervik_data4& grid, tag_isoline_layer& out,
                                    const isoline_analysis_param& param);

#endif
