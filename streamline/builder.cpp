#include <tervik/streamline.h>

// The base receiver ignores everything and has no layer.
void streamlineBuilder::newLine() {}
void streamlineBuilder::addLine() {}
void streamlineBuilder::addPoint(double, double) {}
void streamlineBuilder::addArrow(double, double, double, double) {}
tagSTREAMLINE_LAYER* streamlineBuilder::getLayer() { return nullptr; }
streamlineBuilder::~streamlineBuilder() = default;

namespace {

void reset(tagSTREAMLINE_LAYER& layer) {
  layer.line_count = 0;
  layer.lines.clear();
  layer.arrow_count = 0;
  layer.arrows.clear();
}

}  // namespace

strmStreamlineBuilder::strmStreamlineBuilder(tagSTREAMLINE_LAYER* layer) : layer_(layer) {
  if (layer_ != nullptr) reset(*layer_);
}

strmStreamlineBuilder::~strmStreamlineBuilder() = default;

// Without a caller's layer the builder fills one of its own (see the header for who frees it).
void strmStreamlineBuilder::ensure_layer() {
  if (layer_ != nullptr) return;
  own_layer_ = std::make_unique<tagSTREAMLINE_LAYER>();
  layer_ = own_layer_.get();
}

void strmStreamlineBuilder::newLine() {
  ensure_layer();
  line_ = std::make_unique<tagSTREAMLINE>();
}

void strmStreamlineBuilder::addPoint(double x, double y) {
  if (!line_) return;  // no line begun: nowhere to put the point
  line_->points.push_back({x, y});
  ++line_->point_count;
}

// Arrows belong to the layer, not to a line, so they are kept even if their line is never
// finished.
void strmStreamlineBuilder::addArrow(double x1, double y1, double x2, double y2) {
  ensure_layer();
  layer_->arrows.push_back({x1, y1, x2, y2});
  ++layer_->arrow_count;
}

void strmStreamlineBuilder::addLine() {
  if (!line_) return;  // no line begun: nothing to finish
  layer_->lines.push_back(*line_);
  ++layer_->line_count;
}

tagSTREAMLINE_LAYER* strmStreamlineBuilder::getLayer() { return layer_; }
