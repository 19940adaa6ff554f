#include <cstdio>
#include <filesystem>
#include <system_error>

#include "commands.h"
#include "platform/file_util.h"

namespace tervik::cli {

Common common;

int fail(const std::string& message) {
  std::fprintf(stderr, "tervik: %s\n", message.c_str());
  return 1;
}

bool take_output_option(const Args& args, size_t& k, std::string& output, std::string& picture) {
  if (k + 1 >= args.size()) return false;
  const std::string& a = args[k];
  std::string* target = a == "-o" || a == "--output" ? &output : a == "--svg" ? &picture : nullptr;
  if (!target) return false;
  *target = args[++k];
  return true;
}

bool output_allowed(const std::string& path, const Args& inputs) {
  namespace fs = std::filesystem;
  std::error_code ec;
  for (const std::string& in : inputs) {
    if (fs::exists(path, ec) && fs::equivalent(path, in, ec)) {
      fail(path + ": refusing to overwrite an input file");
      return false;
    }
  }
  return true;
}

bool write_output(const std::string& path, const std::string& text, const Args& inputs) {
  if (!output_allowed(path, inputs)) return false;
  if (!tervik::detail::write_file_atomically(path.c_str(), text)) {
    fail(path + ": cannot write");
    return false;
  }
  return true;
}

}  // namespace tervik::cli
