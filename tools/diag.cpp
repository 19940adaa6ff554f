// tervik diag: any grid diagnostic by name, from grid files to a grid file.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <vector>

#include <tervik/diagnostics.h>
#include <tervik/records.h>

#include "commands.h"
#include "pictures.h"

namespace tervik::cli {

namespace {

// What a diagnostic sees: its input grids (all of one geometry), the scalar options and
// the output array.
struct Call {
  std::vector<const double*> in;
  std::vector<double> levels;  // level stacks: the level (hPa or K) of each grid of a stack
  int nz = 0;                  // level stacks: grids per stack
  std::map<std::string, double> opt;
  const tervik_data4* geo;
  double* out;
  double* out2;  // the second output (the v component of psi2wind)
  double min, max;
};

struct Diagnostic {
  const char* name;
  // Names of the input grids, for the help text. "A... B..." means two level stacks of
  // equal length: every grid of the first, then every grid of the second, the levels taken
  // from the grid files of the first stack.
  const char* inputs;
  std::vector<const char*> options;  // scalar options (--name VALUE), all required
  const char* title;    // appended to the output's description
  std::function<int(Call&)> run;
};

#define GEO c.geo->nx, c.geo->ny
#define LATLON c.geo->first_lat, c.geo->lat_step, c.geo->first_lon, c.geo->lon_step

const std::vector<Diagnostic>& diagnostics() {
  static const std::vector<Diagnostic> table = {
      {"diff", "A B", {}, "Difference",
       [](Call& c) { return compute_field_diff(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, c.opt["scale"]); }},
      {"rh", "T TD", {}, "RH(unit:%)",
       [](Call& c) { return compute_field_ttd2rh(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, 1.0); }},
      {"isotachs", "U V", {}, "Isotachs(unit:m/s)",
       [](Call& c) { return compute_field_isotachs(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, 1.0); }},
      {"q", "TD", {"p"}, "Specific humidity(unit:g/kg)",
       [](Call& c) { return compute_field_q(c.out, &c.min, &c.max, c.in[0], c.opt["p"], GEO, 1000.0); }},
      {"theta", "T", {"p"}, "Theta(unit:K)",
       [](Call& c) { return compute_field_theta(c.out, &c.min, &c.max, c.in[0], c.opt["p"], GEO, 1.0); }},
      {"thetase", "T", {"p"}, "Theta-se(unit:K)",
       [](Call& c) { return compute_field_thetase(c.out, &c.min, &c.max, c.in[0], c.opt["p"], GEO, 1.0); }},
      {"div", "U V", {}, "Divergence(unit:1e-5/s)",
       [](Call& c) { return compute_field_div(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, LATLON, 1e5); }},
      {"vor", "U V", {}, "Vorticity(unit:1e-5/s)",
       [](Call& c) { return compute_field_vor(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, LATLON, 1e5); }},
      {"absvor", "U V", {}, "Absolute vorticity(unit:1/s)",
       [](Call& c) { return compute_field_absvor(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, LATLON, 1.0); }},
      {"adv", "F U V", {}, "Advection(unit:per hour)",
       [](Call& c) {
         return compute_field_adv(c.out, &c.min, &c.max, c.in[0], c.in[1], c.in[2], GEO, LATLON, 3600.0);
       }},
      {"voradv", "U V", {}, "Vorticity advection(unit:1e-10/s2)",
       [](Call& c) { return compute_field_voradv(c.out, &c.min, &c.max, c.in[0], c.in[1], GEO, LATLON, 1e10); }},
      {"qflux", "U V T RH", {"p"}, "Moisture flux",
       [](Call& c) {
         return compute_field_qflux(c.out, &c.min, &c.max, c.in[0], c.in[1], c.in[2], c.in[3], c.opt["p"], GEO, 1.0);
       }},
      {"qdiv", "U V T RH", {"p"}, "Moisture flux divergence",
       [](Call& c) {
         return compute_field_qdiv(c.out, &c.min, &c.max, c.in[0], c.in[1], c.in[2], c.in[3], c.opt["p"], GEO,
                                   LATLON, 1e7);
       }},
      {"pv", "U V T1 T2", {"p1", "p2"}, "PV(unit:PVU)",
       [](Call& c) {
         return compute_field_isop_pv(c.out, &c.min, &c.max, c.in[0], c.in[1], c.in[2], c.in[3], c.opt["p1"],
                                      c.opt["p2"], GEO, LATLON, 1e6);
       }},
      {"frontogen", "T0 T1 TU TL U V OMEGA", {"p0", "pu", "pl", "dt"}, "Frontogenesis",
       [](Call& c) {
         return compute_field_frontogen(c.out, &c.min, &c.max, c.in[0], c.in[1], c.in[2], c.in[3], c.in[4],
                                        c.in[5], c.in[6], c.opt["p0"], c.opt["pu"], c.opt["pl"], GEO,
                                        static_cast<int>(c.opt["dt"]), LATLON, 1.0);
       }},
      {"cape", "T... TD...", {}, "CAPE(unit:J/kg)",
       [](Call& c) {
         return compute_field_cape(c.out, &c.min, &c.max, c.in.data(), c.in.data() + c.nz, c.levels.data(), c.nz,
                                   GEO, 1.0);
       }},
      {"ipv", "PV... THETA...", {"theta"}, "PV on isentrope(unit:PVU)",
       [](Call& c) {
         return compute_field_isentropic_pv(c.out, &c.min, &c.max, c.in.data(), c.in.data() + c.nz,
                                            c.levels.data(), c.opt["theta"], 9999.0, c.nz, GEO);
       }},
      {"pvheight", "PV... Z...", {"pv"}, "Height of PV surface",
       [](Call& c) {
         return compute_field_height_pvunit(c.out, &c.min, &c.max, c.in.data(), c.in.data() + c.nz,
                                            c.levels.data(), c.opt["pv"], 9999.0, c.nz, GEO);
       }},
      {"psi2wind", "PSI", {}, "U wind(unit:m/s)",
       [](Call& c) {
         c.min = c.max = 0;
         return compute_field_psi2wind(c.out, c.out2, c.in[0], GEO, LATLON);
       }},
      {"psi2h", "PSI", {}, "Height(unit:m)",
       [](Call& c) { return compute_field_psi2h(c.out, &c.min, &c.max, c.in[0], GEO); }},
      {"psi2theta", "PSI1 PSI2", {"p", "p1", "p2"}, "Theta(unit:K)",
       [](Call& c) {
         return compute_field_psi2theta(c.out, &c.min, &c.max, c.in[0], c.in[1], c.opt["p"], c.opt["p1"],
                                        c.opt["p2"], GEO);
       }},
      {"psi2t", "PSI1 PSI2", {"p", "p1", "p2"}, "Temperature(unit:C)",
       [](Call& c) {
         return compute_field_psi2t(c.out, &c.min, &c.max, c.in[0], c.in[1], c.opt["p"], c.opt["p1"], c.opt["p2"],
                                    GEO);
       }},
  };
  return table;
}

#undef GEO
#undef LATLON

size_t count_words(const char* s) {
  size_t n = 0;
  for (bool in_word = false; *s; ++s) {
    const bool blank = *s == ' ';
    if (!blank && !in_word) ++n;
    in_word = !blank;
  }
  return n;
}

int usage() {
  std::fprintf(stderr, "usage: tervik diag NAME INPUT... -o OUT.grid [--svg OUT.svg] [--NAME VALUE...]\n\n"
                       "(diff takes --scale X, default 1: (A - B) / X)\n\n"
                       "diagnostics (inputs; options):\n");
  for (const Diagnostic& d : diagnostics()) {
    std::string opts;
    for (const char* o : d.options) opts += std::string(" --") + o + " X";
    std::fprintf(stderr, "  %-10s %-22s%s\n", d.name, d.inputs, opts.c_str());
  }
  std::fprintf(stderr, "\nPressures in hPa, dt in seconds; outputs carry their unit in the title.\n"
                       "A... B...: two stacks of level grids of equal length, the levels read from\n"
                       "the grid files of the first stack. psi2wind writes u to -o and v to --v-output.\n");
  return 2;
}

// Reverses the order of the rows of an nx x ny grid in place.
void flip_rows(double* g, int nx, int ny) {
  for (int top = 0, bottom = ny - 1; top < bottom; ++top, --bottom)
    std::swap_ranges(g + static_cast<size_t>(top) * nx, g + static_cast<size_t>(top + 1) * nx,
                     g + static_cast<size_t>(bottom) * nx);
}

// Cuts the title after "hPa" (or keeps it whole) and appends `word`.
void retitle(tervik_data4& g, const char* word) {
  char* hpa = std::strstr(g.description, "hPa");
  if (hpa) hpa[3] = '\0';
  const size_t used = std::strlen(g.description);
  std::snprintf(g.description + used, sizeof g.description - used, " %s", word);
}

}  // namespace

int cmd_diag(const Args& args) {
  if (args.empty() || args[0] == "--help") return usage();
  const Diagnostic* d = nullptr;
  for (const Diagnostic& cand : diagnostics())
    if (args[0] == cand.name) d = &cand;
  if (!d) {
    fail("unknown diagnostic '" + args[0] + "'");
    return usage();
  }
  Args inputs;
  std::string output, picture, v_output;
  Call call{};
  for (size_t k = 1; k < args.size(); ++k) {
    const std::string& a = args[k];
    if (take_output_option(args, k, output, picture)) {
      continue;
    } else if (a == "--v-output" && k + 1 < args.size()) {
      v_output = args[++k];
    } else if (a.size() > 2 && a.compare(0, 2, "--") == 0 && k + 1 < args.size()) {
      char* end = nullptr;
      const double v = std::strtod(args[k + 1].c_str(), &end);
      if (!end || *end || !std::isfinite(v)) return fail(a + " needs a number, not '" + args[k + 1] + "'");
      call.opt[a.substr(2)] = v;
      ++k;
    } else if (a[0] != '-') {
      inputs.push_back(a);
    } else {
      return usage();
    }
  }
  const bool stacked = std::strstr(d->inputs, "...") != nullptr;
  if (stacked ? inputs.empty() || inputs.size() % 2 != 0 : inputs.size() != count_words(d->inputs))
    return fail(std::string(d->name) + " needs " +
                (stacked ? std::string("two stacks of the same number of") : std::to_string(count_words(d->inputs))) +
                " input grids (" + d->inputs + "), got " + std::to_string(inputs.size()));
  const bool two_outputs = std::strcmp(d->name, "psi2wind") == 0;
  if (two_outputs && v_output.empty()) return fail("psi2wind needs --v-output V.grid");
  if (!call.opt.count("scale")) call.opt["scale"] = 1.0;  // the one option with a default
  for (const char* o : d->options)
    if (!call.opt.count(o)) return fail(std::string(d->name) + " needs --" + o);
  if (output.empty()) return fail("diag needs -o OUT.grid");

  std::vector<tervik_data4> grids(inputs.size());
  for (size_t k = 0; k < inputs.size(); ++k) {
    if (read_datatype4(inputs[k].c_str(), grids[k]) != 0) return fail(inputs[k] + ": not a readable grid file");
    if (grids[k].nx != grids[0].nx || grids[k].ny != grids[0].ny)
      return fail(inputs[k] + ": grid size differs from " + inputs[0]);
    call.in.push_back(grids[k].data());
  }
  if (stacked) {
    call.nz = static_cast<int>(inputs.size() / 2);
    for (int z = 0; z < call.nz; ++z) call.levels.push_back(grids[z].level);
  }
  const size_t n = static_cast<size_t>(grids[0].nx) * grids[0].ny;
  double* out = static_cast<double*>(std::malloc(n * sizeof(double)));
  double* out2 = two_outputs ? static_cast<double*>(std::malloc(n * sizeof(double))) : nullptr;
  if (!out || (two_outputs && !out2)) {
    std::free(out);
    std::free(out2);
    return fail("out of memory");
  }
  // The finite differences take the first row as the northernmost. A grid stored from the
  // south is turned over for the computation and the result turned back.
  tervik_data4 geometry = grids[0];
  const bool south_first = grids[0].lat_step > 0;
  if (south_first) {
    for (tervik_data4& g : grids) flip_rows(g.data(), g.nx, g.ny);
    geometry.first_lat = grids[0].last_lat;
    geometry.lat_step = -grids[0].lat_step;
  }
  call.geo = &geometry;
  call.out = out;
  call.out2 = out2;
  const int rc = d->run(call);
  if (south_first) {
    for (tervik_data4& g : grids) flip_rows(g.data(), g.nx, g.ny);
    flip_rows(out, grids[0].nx, grids[0].ny);
    if (out2) flip_rows(out2, grids[0].nx, grids[0].ny);
  }
  if (rc != 0) {
    std::free(out);
    std::free(out2);
    return fail(std::string(d->name) + " failed");
  }
  tervik_data4 result;
  data4copy(result, grids[0]);
  retitle(result, d->title);
  result.contour_interval = 0;
  result.set_gridPtr(out);
  tervik_data4 second;
  if (out2) {
    data4copy(second, grids[0]);
    retitle(second, "V wind(unit:m/s)");
    second.contour_interval = 0;
    second.set_gridPtr(out2);
  }
  if (!output_allowed(output, inputs) || (out2 && !output_allowed(v_output, inputs))) return 1;
  if (write_datatype4(output.c_str(), result) != 0) return fail(output + ": cannot write");
  if (out2 && write_datatype4(v_output.c_str(), second) != 0) return fail(v_output + ": cannot write");
  if (!picture.empty()) {
    if (!write_output(picture, isoline_picture(result, 0), inputs)) return 1;
  }
  if (!common.quiet)
    std::printf("diag %s: range %g .. %g -> %s\n", d->name, call.min, call.max, output.c_str());
  return 0;
}

}  // namespace tervik::cli
