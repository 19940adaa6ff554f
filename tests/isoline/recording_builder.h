#ifndef TERVIK_TESTS_ISOLINE_RECORDING_BUILDER_H
#define TERVIK_TESTS_ISOLINE_RECORDING_BUILDER_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <tervik/isoline.h>

namespace tervik::test {

// Shortest plain text that reads back as the same double ("12", "20.25", "0.1").
inline std::string num(double v) {
  char text[40];
  for (int digits = 1; digits <= 17; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, v);
    if (std::strtod(text, nullptr) == v && !std::strchr(text, 'e')) return text;
  }
  std::snprintf(text, sizeof text, "%.17g", v);
  return text;
}

struct RecordedPoint {
  double x, y;
  bool edge;
};

struct RecordedLabel {
  std::string text;
  double x, y, angle;
};

struct RecordedLine {
  double level = 0.0;
  bool closed = false;
  std::vector<RecordedPoint> points;
  std::vector<RecordedLabel> labels;
  int finished = 0;  // addLine calls
};

// A builder that writes down every call, both as text (to compare whole sequences) and as
// lines (to check properties). It reports a layer once a line has begun, as the layer
// builder does.
class RecordingBuilder : public contourBuilder {
 public:
  std::vector<std::string> calls;
  std::vector<RecordedLine> lines;

  void newLine(double level, bool closed) override {
    calls.push_back("newLine " + num(level) + (closed ? " closed" : " open"));
    lines.push_back(RecordedLine{level, closed, {}, {}, 0});
  }
  void addPoint(double x, double y, bool edge) override {
    calls.push_back("point " + num(x) + " " + num(y) + (edge ? " edge" : ""));
    if (!lines.empty()) lines.back().points.push_back({x, y, edge});
  }
  void addLabel(const char* text, double x, double y, double angle) override {
    calls.push_back("label " + std::string(text) + " " + num(x) + " " + num(y) + " " +
                    num(angle));
    if (!lines.empty()) lines.back().labels.push_back({text, x, y, angle});
  }
  void addLine() override {
    calls.push_back("addLine");
    if (!lines.empty()) ++lines.back().finished;
  }
  tag_isoline_layer* getLayer() override { return lines.empty() ? nullptr : &layer_; }

 private:
  tag_isoline_layer layer_{};
};

}  // namespace tervik::test

#endif
