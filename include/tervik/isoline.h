#ifndef TERVIK_ISOLINE_H
#define TERVIK_ISOLINE_H

// Isolines (contour lines) of a regular grid: the layer that holds them, the builder
// interface through which tracers deliver geometry, and the tracers themselves.

#include <cstdint>
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

// ---- Analysis parameters and driver ----

#endif
