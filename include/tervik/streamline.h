#ifndef TERVIK_STREAMLINE_H
#define TERVIK_STREAMLINE_H

// Streamlines with arrow marks through a u/v wind field.

#include <cstdint>
#include <memory>
#include <vector>

#include <tervik/export.h>

// ---- Streamline layer ----

// A point of a streamline in map coordinates.
struct tagSTREAMLINE_POINT {
  double x, y;
};

// One streamline (one half of a traced line, see streamline_analysis_gx).
struct tagSTREAMLINE {
  int32_t point_count = 0;  // equals points.size()
  std::vector<tagSTREAMLINE_POINT> points;
};

// An arrow mark on the segment from (x1, y1) to (x2, y2), pointing towards (x2, y2), that is
// downstream.
struct tagSTREAMLINE_ARROW {
  double x1, y1, x2, y2;
};

// What streamline tracing produces: finished lines in order of completion and arrows in the
// order they were reported. The counts equal the sizes of their vectors; both are kept
// because callers read the counts.
struct tagSTREAMLINE_LAYER {
  int32_t line_count = 0;
  std::vector<tagSTREAMLINE> lines;
  int32_t arrow_count = 0;
  std::vector<tagSTREAMLINE_ARROW> arrows;
};

// ---- Builders ----

// Receiver of streamline geometry. The tracer never stores results: it describes lines,
// points and arrows through these calls, all in map units. Every operation has an empty
// default and the base class has no layer.
class TERVIK_API streamlineBuilder {
 public:
  // Begins a streamline.
  virtual void newLine();
  // Finishes the current streamline.
  virtual void addLine();
  // Appends a point to the current streamline.
  virtual void addPoint(double x, double y);
  // Records an arrow on the segment from (x1, y1) to (x2, y2), pointing towards (x2, y2).
  virtual void addArrow(double x1, double y1, double x2, double y2);
  // The layer being filled; null in the base class.
  virtual tagSTREAMLINE_LAYER* getLayer();
  virtual ~streamlineBuilder();
};

// The builder that collects everything into a tagSTREAMLINE_LAYER. A line enters the layer
// only at addLine (as a copy; the current line stays until the next newLine); arrows enter it
// at once. Successive tracings accumulate in the same layer.
//
// Ownership: a layer given to the constructor is the caller's; the builder resets it (counts
// 0, vectors emptied) and never frees it. Constructed with a null layer, the builder makes a
// layer of its own at the first newLine or addArrow; that layer belongs to the builder and
// is freed with it, so a caller who wants to keep it copies *getLayer() first.
// Points and addLine before any newLine have no line to go to and are ignored.
class TERVIK_API strmStreamlineBuilder : public streamlineBuilder {
 public:
  explicit strmStreamlineBuilder(tagSTREAMLINE_LAYER* layer);
  strmStreamlineBuilder(const strmStreamlineBuilder&) = delete;
  strmStreamlineBuilder& operator=(const strmStreamlineBuilder&) = delete;
  ~strmStreamlineBuilder() override;

  void newLine() override;
  void addLine() override;
  void addPoint(double x, double y) override;
  void addArrow(double x1, double y1, double x2, double y2) override;
  tagSTREAMLINE_LAYER* getLayer() override;

 private:
  void ensure_layer();

  tagSTREAMLINE_LAYER* layer_;                     // the caller's or own_layer_; may be null
  std::unique_ptr<tagSTREAMLINE> line_;            // current line, from newLine
  std::unique_ptr<tagSTREAMLINE_LAYER> own_layer_;  // made when constructed without a layer
};

// ---- Streamline tracer ----

// Interface of streamline tracers over a regular grid.
class TERVIK_API streamline_analysis_base {
 public:
  virtual ~streamline_analysis_base();
  virtual bool create_streamline(double* u, double* v, int nx, int ny, double x0, double y0,
                                 double dx, double dy, double undef, int density) = 0;
};

// The streamline tracer. Seeds lines evenly over the grid, integrates each forward and then
// backward from its seed through the bilinearly interpolated wind in steps of half a seeding
// cell, and reports every line as two builder lines that both begin at the seed: the
// downstream half, then the upstream half. Arrows pointing downstream mark every 21st step
// of a half (on the upstream half the first comes after 2 steps, to be seen early). A half ends at the grid border, at a cell with a missing corner, where the wind is
// calm (both components below 0.1 in magnitude), where it enters the track of an earlier
// line, or after 11 steps within one seeding cell.
class TERVIK_API streamline_analysis_gx : public streamline_analysis_base {
 public:
  // `builder` is borrowed and never deleted.
  explicit streamline_analysis_gx(streamlineBuilder* builder);
  streamline_analysis_gx(const streamline_analysis_gx&) = delete;
  streamline_analysis_gx& operator=(const streamline_analysis_gx&) = delete;
  ~streamline_analysis_gx() override;

  // Traces the wind (u, v) (any speed unit; calm means below 0.1 in that unit) given as nx
  // columns by ny rows, row-major: value (i, j) at index j*nx + i, at map position
  // (x0 + i*dx, y0 + j*dy). Values equal to `undef` are missing; NaN and infinite winds stop a
  // line like missing ones. `density` 1 to 4 sets how closely lines are seeded (seeding cells
  // of 1/density grid lengths); any other value means 4.
  //
  // Returns whether the builder then has a layer. Fails with false, reporting nothing to the
  // builder, when the seeding grid cannot be allocated ("Cannot allocate memory for streamline
  // function\n" on standard error), when the builder is null ("No builder for streamline
  // function\n") or when u or v is null or nx or ny is below 1 ("Invalid wind grid for
  // streamline function\n"). A grid of one column or row has no cells: every seed then gives
  // two one-point lines.
  bool create_streamline(double* u, double* v, int nx, int ny, double x0, double y0, double dx,
                         double dy, double undef, int density) override;

 private:
  double* u_ = nullptr;
  double* v_ = nullptr;
  int nx_ = 0;
  int ny_ = 0;
  double x0_ = 0, y0_ = 0, dx_ = 0, dy_ = 0;
  double undef_ = 0;
  streamlineBuilder* builder_;  // not owned
};

#endif
