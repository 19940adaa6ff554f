#ifndef TERVIK_TOOLS_PROGRESS_H
#define TERVIK_TOOLS_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

#include <unistd.h>

#include "commands.h"

namespace tervik::cli {

// A progress line on standard error for work that takes more than a second: "what: k/n",
// redrawn in place. Nothing is shown for quick work, with --quiet, or when standard error
// is not a terminal (logs get no carriage-return noise).
class Progress {
 public:
  explicit Progress(std::string what)
      : what_(std::move(what)), start_(std::chrono::steady_clock::now()),
        enabled_(!common.quiet && isatty(STDERR_FILENO)) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void update(size_t done, size_t total) {
    if (!enabled_ || std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1)) return;
    std::fprintf(stderr, "\r%s: %zu/%zu", what_.c_str(), done, total);
    shown_ = true;
  }

  ~Progress() {
    if (shown_) std::fputc('\n', stderr);
  }

 private:
  std::string what_;
  std::chrono::steady_clock::time_point start_;
  bool enabled_;
  bool shown_ = false;
};

}  // namespace tervik::cli

#endif
