// tervik: meteorological analysis products from the command line.
#include <cstdio>
#include <cstring>
#include <string>

#include <tervik/version.h>

#include "commands.h"

namespace {

const char kUsage[] = R"(usage: tervik [--quiet] COMMAND [ARGS...]

Meteorological analysis products from grids, station observations and soundings.

commands:
  contour GRID [-o OUT.geojson] [--svg OUT.svg] [--interval X] [--fill] [--smooth 0-3]
                     isolines with labels (and filled bands) of a grid file
  stream U_GRID V_GRID [-o OUT.geojson] [--svg OUT.svg] [--density 1-4]
                     streamlines with arrows of a wind field
  objan STATIONS.csv [--method cressman|cressman-hq|barnes|surface-fit]
        [--box LON0,LON1,LAT0,LAT1] [--step DEG] [--first-guess GRID] [--interval X]
        [-o OUT.grid] [--geojson OUT.geojson] [--svg OUT.svg]
                     objective analysis of station observations, then isolines
  diag NAME INPUT... -o OUT.grid [--svg OUT.svg] [--OPTION VALUE...]
                     a grid diagnostic (vor, div, adv, rh, theta, ...); 'tervik diag'
                     lists them with their inputs and options
  ensemble STAT [--element NAME] [--p FRACTION] -o OUT.grid [--svg OUT.svg] MEMBER...
                     an ensemble statistic (mean, var, min, max, median, percentile,
                     wind-mean, ..., isotach, rh); 'tervik ensemble' lists them
  sounding FILE [-o REPORT.txt] [--svg OUT.svg] [--station N]
                     the 68-quantity report of every station in a sounding file
                     (text listing or CSV), on standard output or to REPORT.txt;
                     the picture is a skew-T / log-p diagram of the first station,
                     or of station N
  demo [DIR]         run every product on the sample data in data/ and write the
                     results and pictures to DIR (default tervik-demo/)

options:
  -q, --quiet        no summary or progress lines (reports still go to standard output)
  -h, --help         show this text
  --version          show the version

Outputs are GeoJSON (RFC 7946) and SVG; file formats are described in docs/formats.md.
)";

struct Command {
  const char* name;
  int (*run)(const tervik::cli::Args&);
};

const Command kCommands[] = {
    {"contour", tervik::cli::cmd_contour},
    {"stream", tervik::cli::cmd_stream},
    {"objan", tervik::cli::cmd_objan},
    {"diag", tervik::cli::cmd_diag},
    {"ensemble", tervik::cli::cmd_ensemble},
    {"sounding", tervik::cli::cmd_sounding},
    {"demo", tervik::cli::cmd_demo},
};

}  // namespace

int main(int argc, char** argv) {
  int k = 1;
  for (; k < argc && argv[k][0] == '-'; ++k) {
    const std::string opt = argv[k];
    if (opt == "--help" || opt == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (opt == "--version") {
      std::printf("tervik %s\n", TERVIK_VERSION_STRING);
      return 0;
    }
    if (opt == "--quiet" || opt == "-q") {
      tervik::cli::common.quiet = true;
      continue;
    }
    std::fprintf(stderr, "tervik: unknown option '%s'\n%s", argv[k], kUsage);
    return 2;
  }
  if (k == argc) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  for (const Command& c : kCommands) {
    if (std::strcmp(argv[k], c.name) == 0)
      return c.run(tervik::cli::Args(argv + k + 1, argv + argc));
  }
  std::fprintf(stderr, "tervik: unknown command '%s' (see tervik --help)\n", argv[k]);
  return 2;
}
