#include "support/paths.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tervik::test {
namespace fs = std::filesystem;

std::string shared_data(const std::string& relative) {
  const fs::path p = fs::path(TERVIK_SHARED_DATA_DIR) / relative;
  std::error_code ec;
  return fs::exists(p, ec) ? p.string() : std::string();
}

std::string source_file(const std::string& relative) {
  return (fs::path(TERVIK_SOURCE_DIR) / relative).string();
}

namespace {
struct ScratchRoot {
  fs::path path;
  ScratchRoot() {
    std::string templ = (fs::temp_directory_path() / "tervik-test-XXXXXX").string();
    if (::mkdtemp(&templ[0])) path = templ;
  }
  ~ScratchRoot() {
    std::error_code ec;
    if (!path.empty()) fs::remove_all(path, ec);
  }
};
}  // namespace

std::string scratch_dir() {
  static ScratchRoot root;
  static int counter = 0;
  const fs::path dir = root.path / std::to_string(++counter);
  fs::create_directories(dir);
  return dir.string();
}

}  // namespace tervik::test
