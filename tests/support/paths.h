#ifndef TERVIK_TESTS_SUPPORT_PATHS_H
#define TERVIK_TESTS_SUPPORT_PATHS_H

#include <string>

namespace tervik::test {

// A file of the real observations and model output kept beside the repository, or an empty
// string when that folder is absent (tests then skip).
std::string shared_data(const std::string& relative);

// A file of the repository itself.
std::string source_file(const std::string& relative);

// A fresh, empty directory for one test's files, removed at process exit.
std::string scratch_dir();

}  // namespace tervik::test

// Skips the current test when the shared data file is absent.
#define TERVIK_REQUIRE_SHARED_DATA(var, relative)                                  \
  const std::string var = ::tervik::test::shared_data(relative);                   \
  if (var.empty()) GTEST_SKIP() << "shared data not available: " << (relative)

#endif
