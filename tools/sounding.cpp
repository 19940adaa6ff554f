#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include <tervik/records.h>
#include <tervik/sounding.h>

#include "commands.h"
#include "progress.h"
#include "formats/sounding_file.h"
#include "pictures.h"

namespace tervik::cli {

namespace {

const char kSoundingUsage[] =
    "usage: tervik sounding FILE [-o REPORT.txt] [--svg OUT.svg] [--station N]\n";

// The report of every station: a line "station NNNNN", then the 68 lines of key and value
// in the format of the library's own report writer.
std::string report_text(const tag_tervik_data5& soundings, const std::vector<tag_physics_station>& records) {
  std::string text;
  char line[64];
  for (size_t s = 0; s < records.size(); ++s) {
    std::snprintf(line, sizeof line, "station %05d\n", static_cast<int>(soundings.soundings[s].station));
    text += line;
    for (int k = 0; k < 68; ++k) {
      std::snprintf(line, sizeof line, "%9s %12.4f\n", tervik_physics_table[k].key, records[s].index[k]);
      text += line;
    }
  }
  return text;
}

}  // namespace

int cmd_sounding(const Args& args) {
  std::string input, output, picture;
  long station = -1;  // the sounding drawn: -1 the first
  for (size_t k = 0; k < args.size(); ++k) {
    if (take_output_option(args, k, output, picture)) {
      continue;
    } else if (args[k] == "--station" && k + 1 < args.size()) {
      char* end = nullptr;
      station = std::strtol(args[++k].c_str(), &end, 10);
      if (*end != '\0' || station < 0) return fail("--station needs a station number");
    } else if (input.empty() && args[k][0] != '-') {
      input = args[k];
    } else {
      std::fputs(kSoundingUsage, stderr);
      return 2;
    }
  }
  if (input.empty()) {
    std::fputs(kSoundingUsage, stderr);
    return 2;
  }

  std::error_code ec;
  std::ifstream in(input, std::ios::binary);
  if (!in || std::filesystem::is_directory(input, ec)) return fail(input + ": cannot read");
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return fail(input + ": cannot read");
  tag_tervik_data5 soundings;
  std::string error;
  if (!tervik::formats::parse_sounding(text, soundings, error)) return fail(input + ": " + error);

  const tag_tlogp_station* drawn = &soundings.soundings.front();
  if (station >= 0) {
    drawn = nullptr;
    for (const tag_tlogp_station& s : soundings.soundings)
      if (s.station == station && !drawn) drawn = &s;
    if (!drawn) return fail(input + ": no station " + std::to_string(station));
  }

  // Every station is computed, as create_tlogp_physics does for station 0, one at a time so
  // that a long file shows its progress.
  std::vector<tag_physics_station> records(soundings.soundings.size());
  Progress progress("sounding");
  for (size_t k = 0; k < records.size(); ++k) {
    compute_tlogp_physics(soundings.soundings[k], records[k]);
    progress.update(k + 1, records.size());
  }
  const std::string report = report_text(soundings, records);
  if (output.empty()) {
    std::fputs(report.c_str(), stdout);
  } else if (!write_output(output, report, {input})) {
    return 1;
  }
  if (!picture.empty() && !write_output(picture, skewt_diagram(*drawn).str(), {input})) return 1;
  if (!common.quiet && !output.empty())
    std::printf("sounding: %zu station%s -> %s\n", records.size(), records.size() == 1 ? "" : "s",
                output.c_str());
  return 0;
}

}  // namespace tervik::cli
