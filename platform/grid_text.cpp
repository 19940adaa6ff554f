#include "platform/grid_text.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tervik::detail {
namespace {

constexpr std::string_view kMagic = "tervik-grid 1";

struct Cursor {
  std::string_view text;
  size_t pos = 0;
  int line = 1;

  bool at_end() const { return pos >= text.size(); }

  // The next line without its terminator; false at the end of the text.
  bool next_line(std::string_view& out) {
    if (at_end()) return false;
    const size_t eol = text.find('\n', pos);
    const size_t stop = eol == std::string_view::npos ? text.size() : eol;
    out = text.substr(pos, stop - pos);
    if (!out.empty() && out.back() == '\r') out.remove_suffix(1);
    pos = eol == std::string_view::npos ? text.size() : eol + 1;
    ++line;
    return true;
  }
};

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

std::string_view trim(std::string_view s) {
  while (!s.empty() && is_space(s.front())) s.remove_prefix(1);
  while (!s.empty() && is_space(s.back())) s.remove_suffix(1);
  return s;
}

// Splits "key rest" at the first blank.
void split_key(std::string_view s, std::string_view& key, std::string_view& rest) {
  size_t cut = 0;
  while (cut < s.size() && !is_space(s[cut])) ++cut;
  key = s.substr(0, cut);
  rest = trim(s.substr(cut));
}

// Reads whitespace-separated numbers; the whole text must be consumed.
template <class T>
bool read_numbers(std::string_view s, T* out, int count) {
  const char* p = s.data();
  const char* end = s.data() + s.size();
  for (int k = 0; k < count; ++k) {
    while (p < end && is_space(*p)) ++p;
    if (p < end && *p == '+') ++p;  // from_chars takes no plus sign
    const auto r = std::from_chars(p, end, out[k]);
    if (r.ec != std::errc()) return false;
    p = r.ptr;
    if (p < end && !is_space(*p)) return false;
  }
  while (p < end && is_space(*p)) ++p;
  return p == end;
}

struct Header {
  tervik_data4 grid;  // header fields only
  bool have_nx = false, have_ny = false, have_first_lon = false, have_first_lat = false;
  bool have_lon_step = false, have_lat_step = false, have_last_lon = false,
       have_last_lat = false;
};

bool fail(std::string& error, int line, const std::string& what) {
  error = "line " + std::to_string(line) + ": " + what;
  return false;
}

// Applies one "key value" line to the header.
bool apply_key(std::string_view key, std::string_view rest, Header& h, int line,
               std::string& error) {
  tervik_data4& g = h.grid;
  auto number = [&](double& field, bool* seen) {
    if (!read_numbers(rest, &field, 1)) return fail(error, line, "bad number for " + std::string(key));
    if (seen) *seen = true;
    return true;
  };
  auto integer = [&](int32_t& field, bool* seen) {
    if (!read_numbers(rest, &field, 1)) return fail(error, line, "bad integer for " + std::string(key));
    if (seen) *seen = true;
    return true;
  };
  if (key == "description") {
    if (rest.size() >= sizeof g.description)
      return fail(error, line, "description longer than 127 characters");
    std::memset(g.description, 0, sizeof g.description);
    std::memcpy(g.description, rest.data(), rest.size());
    return true;
  }
  if (key == "valid_time") {
    if (!read_numbers(rest, g.valid_time, 5)) return fail(error, line, "valid_time needs five integers");
    return true;
  }
  if (key == "contour") {
    double c[3];
    if (!read_numbers(rest, c, 3)) return fail(error, line, "contour needs interval, start and end");
    g.contour_interval = c[0];
    g.contour_start = c[1];
    g.contour_end = c[2];
    return true;
  }
  if (key == "level") return integer(g.level, nullptr);
  if (key == "geometry_override") return integer(g.geometry_override, nullptr);
  if (key == "nx") return integer(g.nx, &h.have_nx);
  if (key == "ny") return integer(g.ny, &h.have_ny);
  if (key == "first_lon") return number(g.first_lon, &h.have_first_lon);
  if (key == "first_lat") return number(g.first_lat, &h.have_first_lat);
  if (key == "lon_step") return number(g.lon_step, &h.have_lon_step);
  if (key == "lat_step") return number(g.lat_step, &h.have_lat_step);
  if (key == "last_lon") return number(g.last_lon, &h.have_last_lon);
  if (key == "last_lat") return number(g.last_lat, &h.have_last_lat);
  return fail(error, line, "unknown key '" + std::string(key) + "'");
}

bool check_header(Header& h, int line, std::string& error) {
  const char* missing = !h.have_nx          ? "nx"
                        : !h.have_ny        ? "ny"
                        : !h.have_first_lon ? "first_lon"
                        : !h.have_first_lat ? "first_lat"
                        : !h.have_lon_step  ? "lon_step"
                        : !h.have_lat_step  ? "lat_step"
                                            : nullptr;
  if (missing) return fail(error, line, std::string("missing ") + missing);
  tervik_data4& g = h.grid;
  if (g.nx < 1 || g.ny < 1) return fail(error, line, "nx and ny must be at least 1");
  if (static_cast<long long>(g.nx) * g.ny > kMaxGridValues)
    return fail(error, line, "grid larger than " + std::to_string(kMaxGridValues) + " values");
  if (!h.have_last_lon) g.last_lon = g.first_lon + (g.nx - 1) * g.lon_step;
  if (!h.have_last_lat) g.last_lat = g.first_lat + (g.ny - 1) * g.lat_step;
  return true;
}

struct FreeDeleter {
  void operator()(double* p) const { std::free(p); }
};

}  // namespace

bool parse_grid_text(std::string_view text, tervik_data4& out, std::string& error) {
  Cursor cur{text};
  std::string_view line;
  if (!cur.next_line(line) || trim(line) != kMagic)
    return fail(error, 1, "not a grid file (first line must be '" + std::string(kMagic) + "')");

  Header h;
  bool values_seen = false;
  while (cur.next_line(line)) {
    const std::string_view body = trim(line);
    if (body.empty() || body.front() == '#') continue;
    std::string_view key, rest;
    split_key(body, key, rest);
    if (key == "values") {
      if (!rest.empty()) return fail(error, cur.line - 1, "'values' stands alone on its line");
      values_seen = true;
      break;
    }
    if (!apply_key(key, rest, h, cur.line - 1, error)) return false;
  }
  if (!values_seen) return fail(error, cur.line, "missing 'values' line");
  if (!check_header(h, cur.line - 1, error)) return false;

  const size_t count = static_cast<size_t>(h.grid.nx) * static_cast<size_t>(h.grid.ny);
  std::unique_ptr<double, FreeDeleter> data(static_cast<double*>(std::malloc(count * sizeof(double))));
  if (!data) return fail(error, cur.line, "out of memory");

  const char* p = text.data() + cur.pos;
  const char* end = text.data() + text.size();
  int line_no = cur.line;
  size_t k = 0;
  while (true) {
    while (p < end && is_space(*p)) line_no += (*p++ == '\n');
    if (p == end) break;
    if (k == count) return fail(error, line_no, "more values than nx*ny = " + std::to_string(count));
    if (*p == '+') ++p;
    const auto r = std::from_chars(p, end, data.get()[k]);
    if (r.ec != std::errc() || (r.ptr < end && !is_space(*r.ptr)))
      return fail(error, line_no, "bad value number " + std::to_string(k + 1));
    p = r.ptr;
    ++k;
  }
  if (k != count)
    return fail(error, line_no,
                "found " + std::to_string(k) + " values, nx*ny = " + std::to_string(count));

  data4copy(out, h.grid);
  out.set_gridPtr(data.release());
  return true;
}

namespace {

void append_number(std::string& s, double v) {
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  s.append(buf, r.ptr);
}

}  // namespace

std::string print_grid_text(const tervik_data4& in) {
  const double* v = in.data();
  if (!v || in.nx < 1 || in.ny < 1 || static_cast<long long>(in.nx) * in.ny > kMaxGridValues)
    return std::string();
  std::string s;
  s.reserve(static_cast<size_t>(in.nx) * in.ny * 10 + 512);
  s += kMagic;
  s += '\n';
  // The description goes up to its terminator; line breaks would end the field early.
  s += "description ";
  for (size_t k = 0; k < sizeof in.description && in.description[k]; ++k)
    s += (in.description[k] == '\n' || in.description[k] == '\r') ? ' ' : in.description[k];
  s += "\nvalid_time";
  for (int t : in.valid_time) s += ' ' + std::to_string(t);
  s += "\nlevel " + std::to_string(in.level);
  s += "\nnx " + std::to_string(in.nx) + "\nny " + std::to_string(in.ny);
  const std::pair<const char*, double> geometry[] = {
      {"first_lon", in.first_lon}, {"first_lat", in.first_lat}, {"lon_step", in.lon_step},
      {"lat_step", in.lat_step},   {"last_lon", in.last_lon},   {"last_lat", in.last_lat}};
  for (const auto& [key, value] : geometry) {
    s += '\n';
    s += key;
    s += ' ';
    append_number(s, value);
  }
  s += "\ncontour ";
  append_number(s, in.contour_interval);
  s += ' ';
  append_number(s, in.contour_start);
  s += ' ';
  append_number(s, in.contour_end);
  s += "\ngeometry_override " + std::to_string(in.geometry_override);
  s += "\nvalues\n";
  for (int j = 0; j < in.ny; ++j) {
    for (int i = 0; i < in.nx; ++i) {
      if (i) s += ' ';
      append_number(s, v[static_cast<size_t>(j) * in.nx + i]);
    }
    s += '\n';
  }
  return s;
}

}  // namespace tervik::detail
