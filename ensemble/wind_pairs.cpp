#include <cstdio>
#include <cstring>

#include <tervik/ensemble.h>
#include <tervik/sounding.h>

#include "ensemble/detail.h"
#include "ensemble/wind_detail.h"

namespace tervik::detail {

namespace {

constexpr int u_code = 5;
constexpr int v_code = 6;

// Every wind statistic speaks of an empty list and a full list with the mean's words.
void report_missing_wind(int element) {
  std::fprintf(stderr, "compute_winddata_mean(): element(%d) not found\n", element);
}

}  // namespace

bool open_wind_pairs(const char* fn, const std::vector<tervik_data4>& members,
                     const std::vector<int>& codes, int element, int level,
                     tervik_data4* copy_first_to, wind_pairs& pairs) {
  if (!check_sequences(fn, members, codes)) return false;
  if (codes.empty()) {
    report_missing_wind(element);
    return false;
  }
  const int header = find_element(members, codes, u_code, level);

  std::size_t u_list[wind_list_capacity];
  std::size_t v_list[wind_list_capacity];
  int u_count = 0, v_count = 0;
  bool full = false;
  for (std::size_t i = 0; i < members.size() && !full; ++i) {
    if (members[i].level != level) continue;
    if (codes[i] == u_code)
      u_list[u_count++] = i;
    else if (codes[i] == v_code)
      v_list[v_count++] = i;
    full = u_count == wind_list_capacity || v_count == wind_list_capacity;
  }
  const int count = u_count < v_count ? u_count : v_count;

  if (header >= 0 && count > 0) {
    pairs.header = static_cast<std::size_t>(header);
    if (!check_header_grid(fn, members, pairs.header)) return false;
    const int nx = members[pairs.header].nx;
    const int ny = members[pairs.header].ny;
    for (int m = 0; m < count; ++m)
      if (!check_member(fn, members, u_list[m], nx, ny) ||
          !check_member(fn, members, v_list[m], nx, ny))
        return false;
  }

  if (copy_first_to) data4copy(*copy_first_to, members[0]);
  if (header < 0) {
    std::fprintf(stderr, "%s(): element(%d) not found\n", fn, element);
    return false;
  }
  if (full)
    std::fprintf(stderr,
                 "compute_winddata_mean(): too many wind element(%d) exceeds upper limit (%d)\n",
                 u_count, wind_list_capacity);
  if (count == 0) {
    report_missing_wind(element);
    return false;
  }
  pairs.points = grid_points(members[pairs.header]);
  pairs.count = count;
  for (int m = 0; m < count; ++m) {
    pairs.u[m] = members[u_list[m]].data();
    pairs.v[m] = members[v_list[m]].data();
  }
  return true;
}

void wind_block(const wind_pairs& pairs, int m, std::size_t first, int len, double* speed,
                double* direction) {
  const double* east = pairs.u[m] + first;
  const double* north = pairs.v[m] + first;
  for (int k = 0; k < len; ++k) uv2magdir(east[k], north[k], &speed[k], &direction[k]);
}

void report_wind_pairs(const char* fn, int element, int level, const wind_pairs& pairs) {
  std::fprintf(stderr, "%s(): element=%d, level=%d, member_cnt=%d\n", fn, element, level,
               pairs.count);
}

void wind_record_header(tervik_data11& out, const tervik_data4& header, int level,
                        const char* label) {
  std::memcpy(out.description, header.description, sizeof out.description);
  std::memcpy(out.valid_time, header.valid_time, sizeof out.valid_time);
  out.level = header.level;
  out.lon_step = header.lon_step;
  out.lat_step = header.lat_step;
  out.first_lon = header.first_lon;
  out.last_lon = header.last_lon;
  out.first_lat = header.first_lat;
  out.last_lat = header.last_lat;
  out.nx = header.nx;
  out.ny = header.ny;
  cut_title(out.description, level);
  append_title(out.description, label);
}

}  // namespace tervik::detail
