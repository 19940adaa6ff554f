#include "support/run_program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "support/paths.h"

namespace tervik::test {

std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

ProgramResult run_program(const std::string& program, const std::vector<std::string>& args) {
  const std::string dir = scratch_dir();
  const std::string out_path = dir + "/stdout", err_path = dir + "/stderr";
  ProgramResult r;
  const pid_t pid = fork();
  if (pid < 0) return r;
  if (pid == 0) {
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (out < 0 || err < 0) _exit(127);
    dup2(out, 1);
    dup2(err, 2);
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  if (waitpid(pid, &status, 0) == pid && WIFEXITED(status)) r.status = WEXITSTATUS(status);
  r.out = read_text(out_path);
  r.err = read_text(err_path);
  return r;
}

}  // namespace tervik::test
