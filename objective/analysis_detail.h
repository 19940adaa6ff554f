#ifndef TERVIK_OBJECTIVE_ANALYSIS_DETAIL_H
#define TERVIK_OBJECTIVE_ANALYSIS_DETAIL_H

// Pieces shared by the analysis schemes: owned malloc buffers, column binding, station
// geolocation, great-circle distances and the Cressman correction passes.

#include <cmath>
#include <cstddef>
#include <cstdlib>

#include <tervik/objective.h>

namespace tervik::detail {

// An owned malloc()ed array; released with free() unless handed on with release().
template <typename T>
class MallocArray {
 public:
  MallocArray() = default;
  MallocArray(const MallocArray&) = delete;
  MallocArray& operator=(const MallocArray&) = delete;
  ~MallocArray() { std::free(p_); }

  // Allocates n elements (at least one, so a zero count is not a failure); false when
  // malloc fails.
  bool allocate(size_t n) {
    std::free(p_);
    p_ = static_cast<T*>(std::malloc(sizeof(T) * (n ? n : 1)));
    return p_ != nullptr;
  }
  // Takes ownership of a malloc()ed array, releasing the one held.
  void reset(T* p) {
    std::free(p_);
    p_ = p;
  }
  T* get() const { return p_; }
  T* release() {
    T* p = p_;
    p_ = nullptr;
    return p;
  }
  T& operator[](size_t k) const { return p_[k]; }

 private:
  T* p_ = nullptr;
};

// The degree-to-radian factor of station distances, truncated on purpose: distances in the
// screening, the extremum enhancement and the Barnes weights all use this value.
constexpr double kGreatCircleRadian = 0.0174532925;

// A point on the unit sphere, from longitude and latitude in degrees (converted with the
// truncated factor above).
struct SpherePoint {
  double cx, cy, z;  // cos(lon)cos(lat), sin(lon)cos(lat), sin(lat)
};

inline SpherePoint sphere_point(double lon, double lat) {
  const double lo = lon * kGreatCircleRadian;
  const double la = lat * kGreatCircleRadian;
  return {std::cos(lo) * std::cos(la), std::sin(lo) * std::cos(la), std::sin(la)};
}

// Half the squared chord between two points: sin^2 of half their angle.
inline double half_chord_sq(const SpherePoint& a, const SpherePoint& b) {
  const double dx = a.cx - b.cx;
  const double dy = a.cy - b.cy;
  const double dz = a.z - b.z;
  return (dx * dx + dy * dy + dz * dz) / 4.0;
}

// Great-circle distance in degrees of arc, from the chord between the two unit vectors.
inline double great_circle(const SpherePoint& a, const SpherePoint& b) {
  const double dx = a.cx - b.cx;
  const double dy = a.cy - b.cy;
  const double dz = a.z - b.z;
  return 2.0 * std::asin(std::sqrt(dx * dx + dy * dy + dz * dz) / 2.0) / kGreatCircleRadian;
}

inline double great_circle(double lon1, double lat1, double lon2, double lat2) {
  return great_circle(sphere_point(lon1, lat1), sphere_point(lon2, lat2));
}

// Checks the grid arguments common to every scheme; prints "<scheme>::assimilate: ..." on
// standard error and returns false when they are unusable.
bool check_domain(const char* scheme, int nx, int ny, double lon_min, double lon_max,
                  double lat_min, double lat_max);

// Binds the station columns and the first guess from the code arrays and stores the
// geometry and station count in `base`. A null code array or buffer binds nothing from it.
void bind_input(daBase& base, int nx, int ny, double lon_min, double lon_max, double lat_min,
                double lat_max, int station_count, const int* column_codes,
                double* station_buffer, const int* grid_codes, double* grid_buffer);

// True when the longitude, latitude and value columns are bound; otherwise prints
// "<scheme>::assimilate: longitude, latitude or value column missing." on standard error.
bool check_columns(const char* scheme, const daBase& base);

// Stations placed in the analysis grid: grid coordinates, their cell (index of the cell's
// lower-left point, -1 for a station left out) and the offsets within the cell.
struct LocatedStations {
  MallocArray<double> x, y, fx, fy;
  MallocArray<int> cell;
  int accepted = 0;
  double mean = 0.0;  // mean value of the accepted stations

  bool allocate(int count);
};

// Places the bound stations in the grid. A station is accepted when its cell is a full grid
// cell (0 <= trunc(x) < nx-1, 0 <= trunc(y) < ny-1), its value is defined and finite, and
// its flag (when flags is given) is nonzero. The longitude is brought into the domain by one
// turn of 360 degrees at most. Positions that are not finite are rejected before any
// conversion to int.
void locate_stations(const daBase& base, double undef, const unsigned short* flags,
                     LocatedStations& out);

// Bilinear value of grid g at a located station.
inline double background(const double* g, int nx, int n, double fx, double fy) {
  const double a = g[n] + (g[n + 1] - g[n]) * fx;
  const double b = g[n + nx] + (g[n + nx + 1] - g[n + nx]) * fx;
  return a + (b - a) * fy;
}

// Fills the result grid with the first guess, or with the accepted stations' mean.
void start_grid(const daBase& base, const LocatedStations& located, double* grid);

// Runs scheme.scan_count correction passes over `grid`; stations rejected by a pass get
// cell -1 in `located`. Silent, leaving the grid as it is, when scratch memory runs out.
void correction_passes(const daCressman& scheme, double undef, LocatedStations& located,
                       double* grid);

}  // namespace tervik::detail

#endif
