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
