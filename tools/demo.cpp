#include <cstdio>
#include <filesystem>
#include <system_error>

#include "commands.h"

namespace tervik::cli {

namespace {

// The sample data shipped with the sources; the demo is run from the source tree.
std::string data_dir() {
  for (const char* candidate : {"data", TERVIK_DATA_DIR}) {
    std::error_code ec;
    if (std::filesystem::exists(std::filesystem::path(candidate) / "z500.grid", ec)) return candidate;
  }
  return "data";
}

}  // namespace

int cmd_demo(const Args& args) {
  if (args.size() > 1) {
    std::fprintf(stderr, "usage: tervik demo [DIR]\n");
    return 2;
  }
  const std::string out = args.empty() ? "tervik-demo" : args[0];
  std::error_code ec;
  std::filesystem::create_directories(out, ec);
  if (ec) return fail(out + ": cannot create directory (" + ec.message() + ")");
  const std::string data = data_dir();

  int status = cmd_contour({data + "/z500.grid", "-o", out + "/z500-isolines.geojson", "--svg",
                            out + "/z500-isolines.svg"});
  status |= cmd_stream({data + "/u850.grid", data + "/v850.grid", "-o", out + "/wind850-streamlines.geojson",
                        "--svg", out + "/wind850-streamlines.svg"});
  return status;
}

}  // namespace tervik::cli
