// The text form of isoline_analysis_param.

#include <algorithm>
#include <fstream>

#include <tervik/isoline.h>

#include "isoline/limits.h"

std::ofstream& operator<<(std::ofstream& out, const isoline_analysis_param& p) {
  out << (p.area_set ? 1 : 0) << ' ' << p.first_lon << ' ' << p.last_lon << ' ' << p.first_lat
      << ' ' << p.last_lat << ' ' << p.lon_step << ' ' << p.lat_step << ' ';
  if (p.use_interval || p.levels.empty()) {
    out << 0 << ' ' << p.level_start << ' ' << p.level_interval << ' ' << p.level_end << ' ';
  } else {
    out << p.levels.size() << ' ';
    for (double level : p.levels) out << level << ' ';
  }
  out << (p.shade ? 1 : 0) << ' ' << (p.spline ? 1 : 0) << ' ' << (p.shade_spline ? 1 : 0)
      << ' ' << p.smoothing;
  return out;
}

// Everything is read into a copy first, so a failed read leaves the caller's record as it
// was.
std::ifstream& operator>>(std::ifstream& in, isoline_analysis_param& p) {
  int area_set = 0, count = 0, shade = 0, spline = 0, shade_spline = 0;
  int32_t smoothing = 0;
  double area[6] = {};
  double start = p.level_start, interval = p.level_interval, end = p.level_end;
  std::vector<double> read;

  in >> area_set;
  for (double& a : area) in >> a;
  in >> count;
  if (!in) return in;
  if (count < 0 || count > tervik::detail::kMaxLevels) {
    in.setstate(std::ios::failbit);
    return in;
  }
  if (count == 0) {
    in >> start >> interval >> end;
  } else {
    // Grow with what is actually there, not with what the count promises.
    read.reserve(static_cast<size_t>(std::min(count, 4096)));
    for (int k = 0; k < count && in; ++k) {
      double level;
      if (in >> level) read.push_back(level);
    }
  }
  in >> shade >> spline >> shade_spline >> smoothing;
  if (!in) return in;

  p.area_set = area_set == 1;
  p.first_lon = area[0];
  p.last_lon = area[1];
  p.first_lat = area[2];
  p.last_lat = area[3];
  p.lon_step = area[4];
  p.lat_step = area[5];
  p.use_interval = count == 0;
  if (count == 0) {
    p.level_start = start;
    p.level_interval = interval;
    p.level_end = end;
  } else {
    p.levels.insert(p.levels.end(), read.begin(), read.end());
  }
  p.shade = shade == 1;
  p.spline = spline == 1;
  p.shade_spline = shade_spline == 1;
  p.smoothing = smoothing;
  return in;
}
