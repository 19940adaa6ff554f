// New members derived from a pair of existing ones: isotachs from U and V, relative humidity
// from T and Td. Each call consumes its pair by marking their codes, so that a caller can
// derive one member per pair by calling until -1.

#include <cfloat>
#include <cmath>
#include <cstdio>

#include <tervik/diagnostics.h>
#include <tervik/ensemble.h>

#include "ensemble/detail.h"

using tervik::detail::malloc_array;

namespace {

constexpr int temperature_code = 2;
constexpr int dew_point_code = 4;
constexpr int u_code = 5;
constexpr int v_code = 6;

// Finds and consumes the first pair (first_code, second_code) at `level`, checks both
// against the second member's grid, and allocates the result. Returns the index of the
// second member (the header), or -1. Missing members fail silently: running out of pairs is
// how a caller's loop ends. Bad members fail with a message and consume nothing.
int take_pair(const char* fn, const std::vector<tervik_data4>& members,
              std::vector<int>& codes, int level, int first_code, int second_code,
              int& first, malloc_array<double>& result) {
  if (!tervik::detail::check_sequences(fn, members, codes)) return -1;
  first = find_element(members, codes, first_code, level);
  if (first < 0) return -1;
  const int second = find_element(members, codes, second_code, level);
  if (second < 0) {
    codes[first] = ensemble_consumed_code;
    return -1;
  }
  const std::size_t header = static_cast<std::size_t>(second);
  const int nx = members[header].nx;
  const int ny = members[header].ny;
  if (!tervik::detail::check_header_grid(fn, members, header) ||
      !tervik::detail::check_member(fn, members, static_cast<std::size_t>(first), nx, ny) ||
      !tervik::detail::check_member(fn, members, header, nx, ny))
    return -1;
  codes[first] = ensemble_consumed_code;
  codes[second] = ensemble_consumed_code;
  if (!result.allocate(tervik::detail::grid_points(members[header]))) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  return second;
}

// Header, title ("hPa" titles only get the label) and values of a derived member.
void install_derived(tervik_data4& out, const tervik_data4& header, const char* label,
                     malloc_array<double>& result) {
  data4copy(out, header);
  if (tervik::detail::cut_title_after_hpa(out.description))
    tervik::detail::append_title(out.description, label);
  out.set_gridPtr(result.release());
}

}  // namespace

int compute_wind_isotach(const std::vector<tervik_data4>& members, std::vector<int>& codes,
                         int level, double scale, tervik_data4& out) {
  const char* fn = "compute_wind_isotach";
  int iu = -1;
  malloc_array<double> result;
  const int iv = take_pair(fn, members, codes, level, u_code, v_code, iu, result);
  if (iv < 0) return -1;
  const tervik_data4& header = members[static_cast<std::size_t>(iv)];
  double lo = DBL_MAX, hi = -DBL_MAX;
  if (compute_field_isotachs(result.get(), &lo, &hi, members[static_cast<std::size_t>(iu)].data(),
                             header.data(), header.nx, header.ny, scale) != 0) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  install_derived(out, header, "Isotachs(unit:m/s)", result);
  // Isotachs every 8 m/s, from the first multiple of 8 above the lowest speed.
  out.contour_interval = 8;
  out.contour_start = std::floor((8 + lo) * 0.125) * 8;
  out.contour_end = std::floor(hi * 0.125) * 8;
  return 0;
}

int compute_rh(const std::vector<tervik_data4>& members, std::vector<int>& codes, int level,
               double, tervik_data4& out) {
  const char* fn = "compute_rh";
  int it = -1;
  malloc_array<double> result;
  const int itd = take_pair(fn, members, codes, level, temperature_code, dew_point_code, it,
                            result);
  if (itd < 0) return -1;
  const tervik_data4& header = members[static_cast<std::size_t>(itd)];
  double lo = DBL_MAX, hi = -DBL_MAX;
  if (compute_field_ttd2rh(result.get(), &lo, &hi, members[static_cast<std::size_t>(it)].data(),
                           header.data(), header.nx, header.ny, 1.0) != 0) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return -1;
  }
  install_derived(out, header, "RH(unit:%)", result);
  out.contour_start = 0;
  out.contour_interval = 10;
  out.contour_end = 100;
  return 0;
}
