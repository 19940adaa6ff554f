// tervik ensemble: statistics over ensemble members read from grid files.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <tervik/ensemble.h>
#include <tervik/records.h>

#include "commands.h"
#include "pictures.h"

namespace tervik::cli {

namespace {

const char kEnsembleUsage[] =
    "usage: tervik ensemble STAT [--element NAME] [--p FRACTION] -o OUT.grid [--svg OUT.svg]\n"
    "                       MEMBER...\n"
    "\n"
    "STAT: mean var min max median percentile (of --element, default T),\n"
    "      wind-mean wind-var wind-min wind-max wind-median (speed of the U and V members),\n"
    "      isotach (speed of the first U/V pair), rh (relative humidity of the first T/Td pair).\n"
    "A MEMBER is a grid file, or NAME:FILE to give its element (T, Td, U, V, RH, GH, MSL, ...).\n"
    "--p is the fraction of the median (default 0.5) or the percentile (default 0.9).\n";

using ScalarStat = int (*)(const std::vector<tervik_data4>&, const std::vector<int>&, int, int, double,
                           tervik_data4&);

struct Stat {
  const char* name;
  ScalarStat run;
  double default_p;
};

const Stat kStats[] = {
    {"mean", compute_griddata_mean, 0},
    {"var", compute_griddata_var, 0},
    {"min", compute_griddata_min, 0},
    {"max", compute_griddata_max, 0},
    {"median", compute_griddata_median, 0.5},
    {"percentile", compute_griddata_percentile, 0.9},
    {"wind-mean", compute_winddata_mean, 0},
    {"wind-var", compute_winddata_var, 0},
    {"wind-min", compute_winddata_min, 0},
    {"wind-max", compute_winddata_max, 0},
    {"wind-median", compute_winddata_median, 0.5},
};

// Element code of a name of the element table; -1 when unknown.
int element_code(const std::string& name) {
  for (int code = 0; code < ensemble_element_count; ++code)
    if (const char* n = ensemble_element_name(code); n && name == n) return code;
  return -1;
}

}  // namespace

int cmd_ensemble(const Args& args) {
  if (args.empty()) {
    std::fputs(kEnsembleUsage, stderr);
    return 2;
  }
  const std::string stat = args[0];
  // Wind statistics name their element Wind in messages; the others default to temperature.
  std::string output, picture, element_name = stat.compare(0, 5, "wind-") == 0 ? "Wind" : "T";
  double p = -1;
  Args member_args;
  for (size_t k = 1; k < args.size(); ++k) {
    const std::string& a = args[k];
    if (take_output_option(args, k, output, picture)) {
      continue;
    } else if (a == "--element" && k + 1 < args.size()) {
      element_name = args[++k];
    } else if (a == "--p" && k + 1 < args.size()) {
      p = std::atof(args[++k].c_str());
      if (!(p > 0 && p < 1)) return fail("--p needs a fraction between 0 and 1");
    } else if (a[0] != '-') {
      member_args.push_back(a);
    } else {
      std::fputs(kEnsembleUsage, stderr);
      return 2;
    }
  }
  if (output.empty() || member_args.empty()) {
    std::fputs(kEnsembleUsage, stderr);
    return 2;
  }
  const int element = element_code(element_name);
  if (element < 0) return fail("unknown element '" + element_name + "'");

  std::vector<tervik_data4> members(member_args.size());
  std::vector<int> codes;
  Args inputs;
  for (size_t k = 0; k < member_args.size(); ++k) {
    std::string path = member_args[k];
    int code = element;
    const size_t colon = path.find(':');
    if (colon != std::string::npos) {
      code = element_code(path.substr(0, colon));
      if (code < 0) return fail("unknown element '" + path.substr(0, colon) + "' in " + path);
      path = path.substr(colon + 1);
    }
    if (read_datatype4(path.c_str(), members[k]) != 0) return fail(path + ": not a readable grid file");
    codes.push_back(code);
    inputs.push_back(path);
  }
  const int level = members[0].level;

  tervik_data4 out;
  int rc = -1;
  if (stat == "isotach") {
    rc = compute_wind_isotach(members, codes, level, 1.0, out);
  } else if (stat == "rh") {
    rc = compute_rh(members, codes, level, 0.0, out);
  } else {
    const Stat* chosen = nullptr;
    for (const Stat& s : kStats)
      if (stat == s.name) chosen = &s;
    if (!chosen) {
      fail("unknown statistic '" + stat + "'");
      std::fputs(kEnsembleUsage, stderr);
      return 2;
    }
    rc = chosen->run(members, codes, element, level, p > 0 ? p : chosen->default_p, out);
  }
  if (rc != 0) return fail("ensemble " + stat + " failed");
  if (!output_allowed(output, inputs)) return 1;
  if (write_datatype4(output.c_str(), out) != 0) return fail(output + ": cannot write");
  if (!picture.empty()) {
    if (!write_output(picture, isoline_picture(out, out.contour_interval), inputs)) return 1;
  }
  if (!common.quiet)
    std::printf("ensemble %s: %zu members -> %s (%s)\n", stat.c_str(), members.size(), output.c_str(),
                out.description);
  return 0;
}

}  // namespace tervik::cli
