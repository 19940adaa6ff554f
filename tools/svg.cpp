#include "svg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tervik::cli {

namespace {

std::string num(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f", std::isfinite(v) ? v : 0.0);
  return buf;
}

}  // namespace

std::string xml_escape(const std::string& s) {
  std::string out;
  for (char c : s) {
    switch (c) {
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '&': out += "&amp;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string ramp_colour(double t) {
  t = std::clamp(std::isfinite(t) ? t : 0.5, 0.0, 1.0);
  // Blue (low) through white to red (high).
  int r, g, b;
  if (t < 0.5) {
    const double s = t / 0.5;
    r = static_cast<int>(49 + s * (247 - 49));
    g = static_cast<int>(54 + s * (247 - 54));
    b = static_cast<int>(149 + s * (247 - 149));
  } else {
    const double s = (t - 0.5) / 0.5;
    r = static_cast<int>(247 + s * (165 - 247));
    g = static_cast<int>(247 + s * (0 - 247));
    b = static_cast<int>(247 + s * (38 - 247));
  }
  char buf[8];
  std::snprintf(buf, sizeof buf, "#%02x%02x%02x", r, g, b);
  return buf;
}

Svg::Svg(int width, int height, int margin, double x0, double x1, double y0, double y1)
    : width_(width), height_(height), margin_(margin), x0_(x0), x1_(x1), y0_(y0), y1_(y1) {
  if (x1_ == x0_) x1_ = x0_ + 1;
  if (y1_ == y0_) y1_ = y0_ + 1;
}

double Svg::px(double x) const { return margin_ + (x - x0_) / (x1_ - x0_) * (width_ - 2 * margin_); }
double Svg::py(double y) const { return height_ - margin_ - (y - y0_) / (y1_ - y0_) * (height_ - 2 * margin_); }

void Svg::polyline(const std::vector<Point2>& pts, const std::string& stroke, double width,
                   const std::string& dash) {
  if (pts.size() < 2) return;
  body_ += "<polyline fill=\"none\" stroke=\"" + stroke + "\" stroke-width=\"" + num(width) + "\"";
  if (!dash.empty()) body_ += " stroke-dasharray=\"" + dash + "\"";
  body_ += " points=\"";
  for (const Point2& p : pts) body_ += num(px(p.x)) + "," + num(py(p.y)) + " ";
  body_ += "\"/>\n";
}

void Svg::rings(const std::vector<std::vector<Point2>>& rings, const std::string& fill, double opacity) {
  std::string d;
  for (const auto& ring : rings) {
    if (ring.size() < 3) continue;
    d += "M";
    for (size_t k = 0; k < ring.size(); ++k) d += (k ? " " : "") + num(px(ring[k].x)) + "," + num(py(ring[k].y));
    d += "Z";
  }
  if (d.empty()) return;
  body_ += "<path fill-rule=\"evenodd\" stroke=\"none\" fill=\"" + fill + "\" fill-opacity=\"" +
           num(opacity) + "\" d=\"" + d + "\"/>\n";
}

void Svg::text(double x, double y, const std::string& s, double size, const std::string& colour,
               double angle_deg, const char* anchor) {
  const double X = px(x), Y = py(y);
  body_ += "<text x=\"" + num(X) + "\" y=\"" + num(Y) + "\" font-size=\"" + num(size) +
           "\" font-family=\"sans-serif\" fill=\"" + colour + "\" text-anchor=\"" + anchor +
           "\" dominant-baseline=\"middle\"";
  // Data angles count counter-clockwise; SVG rotates clockwise.
  if (angle_deg != 0) body_ += " transform=\"rotate(" + num(-angle_deg) + " " + num(X) + " " + num(Y) + ")\"";
  body_ += ">" + xml_escape(s) + "</text>\n";
}

void Svg::text_px(double x, double y, const std::string& s, double size, const std::string& colour,
                  const char* anchor) {
  body_ += "<text x=\"" + num(x) + "\" y=\"" + num(y) + "\" font-size=\"" + num(size) +
           "\" font-family=\"sans-serif\" fill=\"" + colour + "\" text-anchor=\"" + anchor + "\">" +
           xml_escape(s) + "</text>\n";
}

void Svg::line_px(double x1, double y1, double x2, double y2, const std::string& stroke, double width,
                  const std::string& dash) {
  body_ += "<line x1=\"" + num(x1) + "\" y1=\"" + num(y1) + "\" x2=\"" + num(x2) + "\" y2=\"" + num(y2) +
           "\" stroke=\"" + stroke + "\" stroke-width=\"" + num(width) + "\"";
  if (!dash.empty()) body_ += " stroke-dasharray=\"" + dash + "\"";
  body_ += "/>\n";
}

void Svg::circle(double x, double y, double r_px, const std::string& fill) {
  body_ += "<circle cx=\"" + num(px(x)) + "\" cy=\"" + num(py(y)) + "\" r=\"" + num(r_px) + "\" fill=\"" +
           fill + "\"/>\n";
}

void Svg::arrowhead(double x1, double y1, double x2, double y2, double size, const std::string& fill) {
  const double X1 = px(x1), Y1 = py(y1), X2 = px(x2), Y2 = py(y2);
  const double len = std::hypot(X2 - X1, Y2 - Y1);
  if (!(len > 0)) return;
  const double ux = (X2 - X1) / len, uy = (Y2 - Y1) / len;
  const double bx = X2 - ux * size, by = Y2 - uy * size;
  const double half = size * 0.45;
  body_ += "<polygon fill=\"" + fill + "\" points=\"" + num(X2) + "," + num(Y2) + " " + num(bx - uy * half) +
           "," + num(by + ux * half) + " " + num(bx + uy * half) + "," + num(by - ux * half) + "\"/>\n";
}

void Svg::rect_px(double x, double y, double w, double h, const std::string& fill, const std::string& stroke,
                  double opacity) {
  body_ += "<rect x=\"" + num(x) + "\" y=\"" + num(y) + "\" width=\"" + num(w) + "\" height=\"" + num(h) +
           "\" fill=\"" + fill + "\" fill-opacity=\"" + num(opacity) + "\" stroke=\"" +
           (stroke.empty() ? std::string("none") : stroke) + "\"/>\n";
}

void Svg::begin_clip() {
  clipped_ = true;
  body_ += "<g clip-path=\"url(#plot-area)\">\n";
}

void Svg::end_clip() { body_ += "</g>\n"; }

void Svg::frame(const std::string& title, double step, const char* x_unit, const char* y_unit) {
  const double left = margin_, right = width_ - margin_, top = margin_, bottom = height_ - margin_;
  body_ += "<rect x=\"" + num(left) + "\" y=\"" + num(top) + "\" width=\"" + num(right - left) +
           "\" height=\"" + num(bottom - top) + "\" fill=\"none\" stroke=\"#333\" stroke-width=\"1\"/>\n";
  if (step > 0) {
    char buf[32];
    for (double x = std::ceil(x0_ / step) * step; x <= x1_ + 1e-9; x += step) {
      line_px(px(x), bottom, px(x), bottom + 5, "#333", 1);
      std::snprintf(buf, sizeof buf, "%g%s", x, x_unit);
      text_px(px(x), bottom + 18, buf, 11, "#333", "middle");
    }
    for (double y = std::ceil(y0_ / step) * step; y <= y1_ + 1e-9; y += step) {
      line_px(left - 5, py(y), left, py(y), "#333", 1);
      std::snprintf(buf, sizeof buf, "%g%s", y, y_unit);
      text_px(left - 8, py(y) + 4, buf, 11, "#333", "end");
    }
  }
  text_px(width_ / 2.0, top - 12, title, 15, "#111", "middle");
}

std::string Svg::clip_definition() const {
  if (!clipped_) return "";
  return "<defs><clipPath id=\"plot-area\"><rect x=\"" + num(margin_) + "\" y=\"" + num(margin_) + "\" width=\"" +
         num(width_ - 2 * margin_) + "\" height=\"" + num(height_ - 2 * margin_) + "\"/></clipPath></defs>\n";
}

std::string Svg::str() const {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
         std::to_string(width_) + "\" height=\"" + std::to_string(height_) + "\" viewBox=\"0 0 " +
         std::to_string(width_) + " " + std::to_string(height_) + "\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" +
         clip_definition() + body_ + "</svg>\n";
}

}  // namespace tervik::cli
