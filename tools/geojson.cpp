#include "geojson.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace tervik::cli {

void append_json_number(std::string& out, double v) {
  if (!std::isfinite(v)) {
    out += "null";
    return;
  }
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

void append_json_string(std::string& out, const std::string& s) {
  out += '"';
  for (unsigned char c : s) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20) {
          char esc[8];
          std::snprintf(esc, sizeof esc, "\\u%04x", c);
          out += esc;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  out += '"';
}

namespace {

void append_position(std::string& out, double x, double y) {
  out += '[';
  append_json_number(out, x);
  out += ',';
  append_json_number(out, y);
  out += ']';
}

void append_ring(std::string& out, const std::vector<tag_isoline_point>& ring) {
  out += '[';
  for (size_t k = 0; k < ring.size(); ++k) {
    if (k) out += ',';
    append_position(out, ring[k].x, ring[k].y);
  }
  out += ']';
}

// Even-odd point-in-polygon test of (x, y) against a closed ring.
bool inside(const std::vector<tag_isoline_point>& ring, double x, double y) {
  bool in = false;
  for (size_t a = 0, b = ring.size() - 1; a < ring.size(); b = a++) {
    const double ya = ring[a].y, yb = ring[b].y;
    if ((ya > y) != (yb > y) && x < (ring[b].x - ring[a].x) * (y - ya) / (yb - ya) + ring[a].x) in = !in;
  }
  return in;
}

double area(const std::vector<tag_isoline_point>& ring) {
  double twice = 0;
  for (size_t a = 0, b = ring.size() - 1; a < ring.size(); b = a++)
    twice += (ring[b].x - ring[a].x) * (ring[b].y + ring[a].y);
  return std::fabs(twice) / 2;
}

}  // namespace

void GeoJson::begin_feature() {
  if (count_++) features_ += ",\n";
  features_ += "{\"type\":\"Feature\",";
}

void GeoJson::add_isolines(const tag_isoline_layer& layer) {
  for (const tag_isoline& line : layer.lines) {
    if (line.points.size() < 2) continue;  // a LineString needs two positions
    begin_feature();
    features_ += "\"properties\":{\"kind\":\"isoline\",\"level\":";
    append_json_number(features_, line.level);
    features_ += line.closed ? ",\"closed\":true}," : ",\"closed\":false},";
    features_ += "\"geometry\":{\"type\":\"LineString\",\"coordinates\":[";
    for (size_t k = 0; k < line.points.size(); ++k) {
      if (k) features_ += ',';
      append_position(features_, line.points[k].x, line.points[k].y);
    }
    features_ += "]}}";
    for (const tag_isoline_label& label : line.labels) {
      begin_feature();
      features_ += "\"properties\":{\"kind\":\"label\",\"text\":";
      append_json_string(features_, label.text);
      features_ += ",\"level\":";
      append_json_number(features_, line.level);
      features_ += ",\"angle\":";
      append_json_number(features_, label.angle);
      features_ += "},\"geometry\":{\"type\":\"Point\",\"coordinates\":";
      append_position(features_, label.x, label.y);
      features_ += "}}";
    }
  }
}

void GeoJson::add_bands(const tag_isoline_layer& layer) {
  const auto& rings = layer.polygons;
  // Each hole belongs to the smallest outer ring of its band that contains it.
  std::vector<std::vector<size_t>> holes(rings.size());
  for (size_t h = 0; h < rings.size(); ++h) {
    if (rings[h].second != 1 || rings[h].points.size() < 4) continue;
    const double x = rings[h].points[0].x, y = rings[h].points[0].y;
    size_t best = rings.size();
    double best_area = 0;
    for (size_t o = 0; o < rings.size(); ++o) {
      if (rings[o].second != 0 || rings[o].first != rings[h].first || rings[o].points.size() < 4) continue;
      if (!inside(rings[o].points, x, y)) continue;
      const double a = area(rings[o].points);
      if (best == rings.size() || a < best_area) best = o, best_area = a;
    }
    if (best < rings.size()) holes[best].push_back(h);
  }
  for (size_t o = 0; o < rings.size(); ++o) {
    if (rings[o].second != 0 || rings[o].points.size() < 4) continue;
    begin_feature();
    features_ += "\"properties\":{\"kind\":\"band\",\"colour\":" + std::to_string(rings[o].first) +
                 ",\"level\":";
    append_json_number(features_, rings[o].level);
    features_ += "},\"geometry\":{\"type\":\"Polygon\",\"coordinates\":[";
    append_ring(features_, rings[o].points);
    for (size_t h : holes[o]) {
      features_ += ',';
      append_ring(features_, rings[h].points);
    }
    features_ += "]}}";
  }
}

void GeoJson::add_streamlines(const tagSTREAMLINE_LAYER& layer) {
  for (const tagSTREAMLINE& line : layer.lines) {
    if (line.points.size() < 2) continue;
    begin_feature();
    features_ += "\"properties\":{\"kind\":\"streamline\"},";
    features_ += "\"geometry\":{\"type\":\"LineString\",\"coordinates\":[";
    for (size_t k = 0; k < line.points.size(); ++k) {
      if (k) features_ += ',';
      append_position(features_, line.points[k].x, line.points[k].y);
    }
    features_ += "]}}";
  }
  for (const tagSTREAMLINE_ARROW& a : layer.arrows) {
    begin_feature();
    features_ += "\"properties\":{\"kind\":\"arrow\"},";
    features_ += "\"geometry\":{\"type\":\"LineString\",\"coordinates\":[";
    append_position(features_, a.x1, a.y1);
    features_ += ',';
    append_position(features_, a.x2, a.y2);
    features_ += "]}}";
  }
}

void GeoJson::add_stations(const tervik_data3& stations) {
  for (const station_entry& s : stations.stations) {
    if (s.value == tervik_data3::undef) continue;
    begin_feature();
    features_ += "\"properties\":{\"kind\":\"station\",\"id\":" + std::to_string(s.id) + ",\"value\":";
    append_json_number(features_, s.value);
    features_ += "},\"geometry\":{\"type\":\"Point\",\"coordinates\":";
    append_position(features_, s.lon, s.lat);
    features_ += "}}";
  }
}

std::string GeoJson::text() const {
  return "{\"type\":\"FeatureCollection\",\"features\":[\n" + features_ + "\n]}\n";
}

}  // namespace tervik::cli
