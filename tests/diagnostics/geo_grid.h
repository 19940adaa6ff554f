#ifndef TERVIK_TESTS_DIAGNOSTICS_GEO_GRID_H
#define TERVIK_TESTS_DIAGNOSTICS_GEO_GRID_H

// A small latitude-longitude grid for the diagnostics tests, with the spacing that the
// finite differences should see, written out independently of the library.

#include <cmath>
#include <functional>
#include <vector>

namespace tervik::test {

struct GeoGrid {
  int nx, ny;
  double lat0, dlat, lon0, dlon;

  std::size_t size() const { return static_cast<std::size_t>(nx) * ny; }
  double lat(int j) const { return lat0 + j * dlat; }
  // metres between columns of row j and between rows
  double dx(int j) const {
    return std::fabs(dlon) * 0.017453292519943 * 6371110.0 * std::cos(lat(j) * 0.017453292519943);
  }
  double dy() const { return std::fabs(dlat) * 111196.84650673404; }
  std::vector<double> field(const std::function<double(int i, int j)>& value) const {
    std::vector<double> f;
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) f.push_back(value(i, j));
    return f;
  }
};

}  // namespace tervik::test

#endif
