#ifndef TERVIK_TOOLS_GEOJSON_H
#define TERVIK_TOOLS_GEOJSON_H

// GeoJSON (RFC 7946) output of the analysed products: positions are [longitude, latitude].

#include <string>

#include <tervik/isoline.h>
#include <tervik/streamline.h>

namespace tervik::cli {

// Collects features and prints them as one FeatureCollection.
class GeoJson {
 public:
  // Every isoline as a LineString with its level and whether it is closed, and every label
  // as a Point with its text and angle.
  void add_isolines(const tag_isoline_layer& layer);

  // The filled bands: one Polygon per outer ring with the holes that lie inside it, with the
  // band's colour index and level.
  void add_bands(const tag_isoline_layer& layer);

  // Every streamline as a LineString and every arrow as a LineString from its tail to its
  // head (pointing downstream).
  void add_streamlines(const tagSTREAMLINE_LAYER& layer);

  // Every station with a value as a Point with its number and value.
  void add_stations(const tervik_data3& stations);

  std::string text() const;
  size_t feature_count() const { return count_; }

 private:
  void begin_feature();
  std::string features_;
  size_t count_ = 0;
};

// Appends `v` in the shortest form that reads back to the same double; non-finite values,
// which JSON cannot hold, become null.
void append_json_number(std::string& out, double v);

// Appends `s` as a JSON string with quotes and escapes.
void append_json_string(std::string& out, const std::string& s);

}  // namespace tervik::cli

#endif
