#ifndef TERVIK_TESTS_SUPPORT_RUN_PROGRAM_H
#define TERVIK_TESTS_SUPPORT_RUN_PROGRAM_H

#include <string>
#include <vector>

namespace tervik::test {

struct ProgramResult {
  int status = -1;  // exit status, -1 when the program did not exit normally
  std::string out;  // standard output
  std::string err;  // standard error
};

// Runs `program` with `args` (no shell: arguments are passed as they are) and collects its
// exit status and output.
ProgramResult run_program(const std::string& program, const std::vector<std::string>& args);

// The whole content of a file; empty when it cannot be read.
std::string read_text(const std::string& path);

}  // namespace tervik::test

#endif
