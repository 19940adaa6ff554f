#ifndef TERVIK_TOOLS_SVG_H
#define TERVIK_TOOLS_SVG_H

// A small SVG canvas for the product pictures: a plot area with a linear mapping from data
// coordinates (longitude, latitude or any x, y) to pixels, and the shapes the products need.

#include <string>
#include <vector>

namespace tervik::cli {

struct Point2 {
  double x, y;
};

class Svg {
 public:
  // A picture of width x height pixels whose plot area, inset by `margin` pixels, shows the
  // data box [x0, x1] x [y0, y1] (y grows upwards in data, downwards in pixels).
  Svg(int width, int height, int margin, double x0, double x1, double y0, double y1);

  double px(double x) const;
  double py(double y) const;

  void polyline(const std::vector<Point2>& pts, const std::string& stroke, double width,
                const std::string& dash = "");
  // One filled path of several rings, filled with the even-odd rule.
  void rings(const std::vector<std::vector<Point2>>& rings, const std::string& fill, double opacity);
  void text(double x, double y, const std::string& s, double size, const std::string& colour,
            double angle_deg = 0, const char* anchor = "middle");
  // A text placed in pixels rather than data coordinates.
  void text_px(double x, double y, const std::string& s, double size, const std::string& colour,
               const char* anchor = "start");
  void line_px(double x1, double y1, double x2, double y2, const std::string& stroke, double width,
               const std::string& dash = "");
  void circle(double x, double y, double r_px, const std::string& fill);
  // An arrowhead at (x2, y2) pointing away from (x1, y1), `size` pixels long.
  void arrowhead(double x1, double y1, double x2, double y2, double size, const std::string& fill);
  // A rectangle placed in pixels, for legend boxes; an empty stroke draws no outline.
  void rect_px(double x, double y, double w, double h, const std::string& fill, const std::string& stroke,
               double opacity = 1.0);
  // Shapes drawn between begin_clip and end_clip are cut at the edge of the plot area.
  void begin_clip();
  void end_clip();
  // Frame, longitude/latitude ticks every `step` data units, and a title.
  void frame(const std::string& title, double step, const char* x_unit = "E", const char* y_unit = "N");

  std::string str() const;

 private:
  std::string clip_definition() const;

  int width_, height_, margin_;
  double x0_, x1_, y0_, y1_;
  std::string body_;
  bool clipped_ = false;  // begin_clip was called: str() defines the clip path
};

// A colour from a blue-white-red ramp for t in [0, 1].
std::string ramp_colour(double t);

// Escapes text for XML.
std::string xml_escape(const std::string& s);

}  // namespace tervik::cli

#endif
