#include <cstring>

#include <tervik/isoline.h>

// ---- contourBuilder: a receiver that ignores everything ----

void contourBuilder::newLine(double, bool) {}
void contourBuilder::addLine() {}
void contourBuilder::addPoint(double, double, bool) {}
void contourBuilder::addLabel(const char*, double, double, double) {}
void contourBuilder::newShadedLine(double, int, int) {}
void contourBuilder::addShadedLine() {}
void contourBuilder::addShadedPoint(double, double, bool) {}
tag_isoline_layer* contourBuilder::getLayer() { return nullptr; }
void contourBuilder::releaseContour() {}
contourBuilder::~contourBuilder() = default;

// ---- isolineContourBuilder: collects into a tag_isoline_layer ----

isolineContourBuilder::isolineContourBuilder() : layer_(nullptr), line_(nullptr), polygon_(nullptr) {}

// The layer is not freed here: it belongs to whoever took it through getLayer().
isolineContourBuilder::~isolineContourBuilder() {
  delete line_;
  delete polygon_;
}

void isolineContourBuilder::ensure_layer() {
  if (layer_) return;
  layer_ = new tag_isoline_layer();
  layer_->line_count = 0;
  layer_->polygon_count = 0;
}

void isolineContourBuilder::newLine(double level, bool closed) {
  ensure_layer();
  delete line_;
  line_ = new tag_isoline();
  line_->level = level;
  line_->closed = closed ? 1 : 0;
  line_->point_count = 0;
  line_->label_count = 0;
}

// Points, labels and finishing calls that arrive before any newLine have no line to go to
// and are ignored.
void isolineContourBuilder::addPoint(double x, double y, bool edge) {
  if (!line_) return;
  line_->points.push_back(tag_isoline_point{x, y, edge});
  ++line_->point_count;
}

void isolineContourBuilder::addLabel(const char* text, double x, double y, double angle) {
  if (!line_) return;
  tag_isoline_label label{x, y, angle, {}};
  if (text) std::strncpy(label.text, text, sizeof label.text - 1);
  label.text[sizeof label.text - 1] = '\0';
  line_->labels.push_back(label);
  ++line_->label_count;
}

// The current line stays ours after it is copied: a second addLine appends it again.
void isolineContourBuilder::addLine() {
  if (!line_ || !layer_) return;
  layer_->lines.push_back(*line_);
  ++layer_->line_count;
}

void isolineContourBuilder::newShadedLine(double level, int first, int second) {
  ensure_layer();
  delete polygon_;
  polygon_ = new tag_shaded_isoline();
  polygon_->first = first;
  polygon_->level = level;
  polygon_->second = second;
  polygon_->point_count = 0;
}

void isolineContourBuilder::addShadedPoint(double x, double y, bool edge) {
  if (!polygon_) return;
  polygon_->points.push_back(tag_isoline_point{x, y, edge});
  ++polygon_->point_count;
}

void isolineContourBuilder::addShadedLine() {
  if (!polygon_ || !layer_) return;
  layer_->polygons.push_back(*polygon_);
  ++layer_->polygon_count;
}

tag_isoline_layer* isolineContourBuilder::getLayer() { return layer_; }

// Releasing is meant to be the builder's last act. The pointer is reset so that a second
// release or a stray getLayer() finds no layer instead of freed memory; a builder used
// again after release starts a fresh layer that its new owner must release in turn.
void isolineContourBuilder::releaseContour() {
  if (!layer_) return;
  delete layer_;
  layer_ = nullptr;
}
