#include <cstdio>
#include <cstring>

#include <tervik/diagnostics.h>
#include <tervik/ensemble.h>

#include "ensemble/detail.h"

namespace tervik::detail {

namespace {

constexpr int temperature_code = 2;  // code 3 also reads T but does not pair for RH
constexpr int dew_point_code = 4;
constexpr int rh_code = 14;

}  // namespace

int gather_block(int member_count) {
  if (member_count <= 0) return 1;
  const int points = 4096 / member_count;
  if (points < 1) return 1;
  return points < accumulation_block ? points : accumulation_block;
}

bool check_sequences(const char* fn, const std::vector<tervik_data4>& members,
                     const std::vector<int>& codes) {
  if (members.size() == codes.size()) return true;
  std::fprintf(stderr, "%s(): %zu element codes for %zu members\n", fn, codes.size(),
               members.size());
  return false;
}

bool check_header_grid(const char* fn, const std::vector<tervik_data4>& members,
                       std::size_t header) {
  const tervik_data4& h = members[header];
  if (h.nx > 0 && h.ny > 0) return true;
  std::fprintf(stderr, "%s(): member %zu has an empty grid (%dx%d)\n", fn, header, h.nx, h.ny);
  return false;
}

bool check_member(const char* fn, const std::vector<tervik_data4>& members, std::size_t i,
                  int nx, int ny) {
  const tervik_data4& m = members[i];
  if (m.nx != nx || m.ny != ny) {
    std::fprintf(stderr, "%s(): member %zu grid is %dx%d, not %dx%d\n", fn, i, m.nx, m.ny, nx,
                 ny);
    return false;
  }
  if (!m.data()) {
    std::fprintf(stderr, "%s(): member %zu has no values\n", fn, i);
    return false;
  }
  return true;
}

bool select_scalar_members(const char* fn, const char* not_found_fn,
                           const std::vector<tervik_data4>& members,
                           const std::vector<int>& codes, int element, int level,
                           scalar_selection& sel) {
  if (!check_sequences(fn, members, codes)) return false;
  // Codes outside the table have no name to put in a title; no member can stand for them.
  if (!ensemble_element_name(element)) {
    std::fprintf(stderr, "%s(): element(%d) is not in the element table\n", fn, element);
    return false;
  }
  int header = find_element(members, codes, element, level);
  sel.derive_rh = false;
  if (header < 0 && element == rh_code) {
    header = find_element(members, codes, dew_point_code, level);
    sel.derive_rh = true;
  }
  if (header < 0) {
    std::fprintf(stderr, "%s(): element(%d) not found\n", not_found_fn, element);
    return false;
  }
  sel.header = static_cast<std::size_t>(header);
  if (!check_header_grid(fn, members, sel.header)) return false;
  const int nx = members[sel.header].nx;
  const int ny = members[sel.header].ny;
  sel.points = grid_points(members[sel.header]);
  if (!sel.sources.allocate(members.size())) {
    std::fprintf(stderr, "%s(): memory allocation error\n", fn);
    return false;
  }

  sel.count = 0;
  if (!sel.derive_rh) {
    for (std::size_t i = 0; i < members.size(); ++i) {
      if (codes[i] != element || members[i].level != level) continue;
      if (!check_member(fn, members, i, nx, ny)) return false;
      sel.sources[sel.count++] = member_source{members[i].data(), nullptr};
    }
    return true;
  }

  // Relative humidity from temperature / dew-point pairs, in the order the members come:
  // the latest of each is held until its partner arrives.
  long t_held = -1;
  long td_held = -1;
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (members[i].level != level) continue;
    if (codes[i] == temperature_code)
      t_held = static_cast<long>(i);
    else if (codes[i] == dew_point_code)
      td_held = static_cast<long>(i);
    else
      continue;
    if (t_held < 0 || td_held < 0) continue;
    const std::size_t t = static_cast<std::size_t>(t_held);
    const std::size_t td = static_cast<std::size_t>(td_held);
    if (!check_member(fn, members, t, nx, ny) || !check_member(fn, members, td, nx, ny))
      return false;
    sel.sources[sel.count++] = member_source{members[t].data(), members[td].data()};
    t_held = td_held = -1;
  }
  // Dew points without any temperature leave no member: report the element as missing
  // rather than divide by a count of zero.
  if (sel.count == 0) {
    std::fprintf(stderr, "%s(): element(%d) not found\n", not_found_fn, element);
    return false;
  }
  return true;
}

const double* source_block(const member_source& src, std::size_t first, int len,
                           double* scratch) {
  if (!src.dew_point) return src.values + first;
  double lo = 0, hi = 0;
  compute_field_ttd2rh(scratch, &lo, &hi, src.values + first, src.dew_point + first, len, 1,
                       1.0);
  return scratch;
}

// ---- Titles ----

namespace {

// Length of the title, making sure it is terminated within its 128 bytes.
std::size_t title_length(char* description) {
  std::size_t len = strnlen(description, 128);
  if (len == 128) description[--len] = '\0';
  return len;
}

// Position of the first "hPa" in the title, or -1.
long find_hpa(const char* description, std::size_t len) {
  for (std::size_t i = 0; i + 3 <= len; ++i)
    if (std::memcmp(description + i, "hPa", 3) == 0) return static_cast<long>(i);
  return -1;
}

}  // namespace

bool cut_title_after_hpa(char* description) {
  const std::size_t len = title_length(description);
  const long at = find_hpa(description, len);
  if (at < 0) return false;
  description[at + 3] = '\0';
  return true;
}

void cut_title(char* description, int level) {
  if (level != 0) {
    cut_title_after_hpa(description);
    return;
  }
  // Level 0: the title loses its last '0' and everything after it.
  const std::size_t len = title_length(description);
  for (std::size_t i = len; i-- > 0;) {
    if (description[i] == '0') {
      description[i] = '\0';
      return;
    }
  }
}

void append_title(char* description, const char* label) {
  std::size_t len = title_length(description);
  for (const char* c = label; *c && len < 127; ++c) description[len++] = *c;
  description[len] = '\0';
}

void install_result(tervik_data4& out, const tervik_data4& header, int level,
                    const char* label, double* values) {
  data4copy(out, header);
  cut_title(out.description, level);
  append_title(out.description, label);
  out.set_gridPtr(values);
}

int rank_index(int n, double f) {
  const double rank = n * f;
  if (!(rank >= 0)) return 0;  // negative or NaN
  if (rank >= n) return n - 1;
  return static_cast<int>(rank);
}

}  // namespace tervik::detail
