#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "commands.h"
#include "progress.h"

namespace tervik::cli {

namespace {

// The sample data shipped with the sources: data/ of the current directory, else of the
// source tree the program was built from.
std::string data_dir() {
  for (const char* candidate : {"data", TERVIK_DATA_DIR}) {
    std::error_code ec;
    if (std::filesystem::exists(std::filesystem::path(candidate) / "z500.grid", ec)) return candidate;
  }
  return "data";
}

Args member_files(const std::string& dir, const char* prefix, const char* element) {
  Args files;
  for (int m = 0; m < 100; ++m) {
    char name[64];
    std::snprintf(name, sizeof name, "%s_m%02d.grid", prefix, m);
    const std::filesystem::path p = std::filesystem::path(dir) / "ensemble" / name;
    std::error_code ec;
    if (!std::filesystem::exists(p, ec)) break;
    files.push_back(std::string(element) + ":" + p.string());
  }
  return files;
}

// Members of two elements, one of each in turn: relative humidity pairs each temperature
// with the dew point that follows it.
Args interleaved(const Args& a, const Args& b) {
  Args out;
  for (size_t k = 0; k < a.size() || k < b.size(); ++k) {
    if (k < a.size()) out.push_back(a[k]);
    if (k < b.size()) out.push_back(b[k]);
  }
  return out;
}

Args joined(Args a, const Args& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

int cmd_demo(const Args& args) {
  if (args.size() > 1) {
    std::fprintf(stderr, "usage: tervik demo [DIR]\n");
    return 2;
  }
  const auto started = std::chrono::steady_clock::now();
  const std::string out = args.empty() ? "tervik-demo" : args[0];
  std::error_code ec;
  std::filesystem::create_directories(out, ec);
  if (ec) return fail(out + ": cannot create directory (" + ec.message() + ")");
  const std::string data = data_dir();
  const std::string o = out + "/";

  int failures = 0, done = 0;
  constexpr int kProducts = 12;  // the run() calls below
  Progress progress("demo");
  auto run = [&](int status) {
    failures += status != 0;
    progress.update(++done, kProducts);
  };

  run(cmd_contour({data + "/z500.grid", "--fill", "-o", o + "z500-contours.geojson", "--svg",
                   o + "z500-contours.svg"}));
  run(cmd_stream({data + "/u850.grid", data + "/v850.grid", "--density", "1", "-o",
                  o + "wind850-streamlines.geojson", "--svg", o + "wind850-streamlines.svg"}));
  for (const char* method : {"cressman", "cressman-hq", "barnes", "surface-fit"}) {
    const std::string base = o + "slp-" + method;
    run(cmd_objan({data + "/stations.csv", "--method", method, "--box", "70,140,15,60", "--step", "0.5",
                   "--interval", "4", "-o", base + ".grid", "--geojson", base + ".geojson", "--svg",
                   base + ".svg"}));
  }
  run(cmd_sounding({data + "/sounding.csv", "-o", o + "sounding-report.txt", "--svg", o + "sounding-skewt.svg"}));
  run(cmd_diag({"vor", data + "/u850.grid", data + "/v850.grid", "-o", o + "vorticity850.grid", "--svg",
                o + "vorticity850.svg"}));
  const Args t = member_files(data, "t850", "T"), td = member_files(data, "td850", "Td");
  const Args u = member_files(data, "u850", "U"), v = member_files(data, "v850", "V");
  run(cmd_ensemble(joined({"mean", "-o", o + "ensemble-t850-mean.grid", "--svg", o + "ensemble-t850-mean.svg"}, t)));
  run(cmd_ensemble(joined({"percentile", "--p", "0.9", "-o", o + "ensemble-t850-p90.grid"}, t)));
  run(cmd_ensemble(joined(joined({"wind-mean", "-o", o + "ensemble-wind850-mean.grid", "--svg",
                                  o + "ensemble-wind850-mean.svg"}, u), v)));
  run(cmd_ensemble(joined({"mean", "--element", "RH", "-o", o + "ensemble-rh850-mean.grid"}, interleaved(t, td))));

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  if (!common.quiet)
    std::printf("demo: results in %s (%.1f s)%s\n", out.c_str(), seconds,
                failures ? ", with failures" : "");
  return failures ? 1 : 0;
}

}  // namespace tervik::cli
