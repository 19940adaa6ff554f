// Feeds arbitrary text to the reader of isoline_analysis_param. A failed read must leave the
// record exactly as it was; a successful one must write out (at full precision) and read
// back to the same record.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include <tervik/isoline.h>

namespace {

// The operators take file streams; a file stream reads and writes any buffer once it is
// handed one through its basic_ios base, which spares the fuzzer a file per input.
void attach(std::ios& stream, std::stringbuf& buffer) { stream.rdbuf(&buffer); }

bool same(const isoline_analysis_param& a, const isoline_analysis_param& b) {
  return a.area_set == b.area_set && a.first_lon == b.first_lon && a.last_lon == b.last_lon &&
         a.first_lat == b.first_lat && a.last_lat == b.last_lat && a.lon_step == b.lon_step &&
         a.lat_step == b.lat_step && a.use_interval == b.use_interval &&
         a.level_start == b.level_start && a.level_interval == b.level_interval &&
         a.level_end == b.level_end && a.levels == b.levels && a.shade == b.shade &&
         a.spline == b.spline && a.shade_spline == b.shade_spline && a.smoothing == b.smoothing;
}

isoline_analysis_param sentinel() {
  isoline_analysis_param p;
  p.first_lon = -1.5;
  p.level_start = 7;
  p.levels = {1, 2};
  p.smoothing = 9;
  return p;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::stringbuf text(std::string(reinterpret_cast<const char*>(data), size), std::ios::in);
  std::ifstream in;
  attach(in, text);
  isoline_analysis_param p = sentinel();
  in >> p;
  if (in.fail()) {
    if (!same(p, sentinel())) std::abort();
    return 0;
  }
  // Appended, not replaced: the old levels stay in front.
  if (p.levels.size() < 2 || p.levels[0] != 1 || p.levels[1] != 2) std::abort();
  p.levels.erase(p.levels.begin(), p.levels.begin() + 2);
  if (!p.use_interval && p.levels.empty()) std::abort();

  std::stringbuf written(std::ios::out);
  std::ofstream out;
  attach(out, written);
  out << std::setprecision(17);
  out << p;
  std::stringbuf again_text(written.str(), std::ios::in);
  std::ifstream again_in;
  attach(again_in, again_text);
  isoline_analysis_param again;
  again_in >> again;
  if (again_in.fail()) std::abort();
  if (again.use_interval) {
    // the interval form does not carry a list
    again.levels = p.levels;
  } else {
    again.level_start = p.level_start;
    again.level_interval = p.level_interval;
    again.level_end = p.level_end;
  }
  if (!same(p, again)) std::abort();
  return 0;
}
