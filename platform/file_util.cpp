#include "platform/file_util.h"

#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tervik::detail {
namespace {
struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;
}  // namespace

bool read_file(const char* path, std::string& out) {
  if (!path) return false;
  struct stat st;
  if (::stat(path, &st) != 0 || !S_ISREG(st.st_mode)) return false;
  File f(std::fopen(path, "rb"));
  if (!f) return false;
  std::string text;
  char buf[1 << 16];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f.get())) > 0) text.append(buf, n);
  if (std::ferror(f.get())) return false;
  out.swap(text);
  return true;
}

bool write_file_atomically(const char* path, std::string_view text) {
  if (!path || !*path) return false;
  std::string tmp = std::string(path) + ".tmp.XXXXXX";
  const int fd = ::mkstemp(&tmp[0]);
  if (fd < 0) return false;
  File f(::fdopen(fd, "wb"));
  if (!f) {
    ::close(fd);
    ::unlink(tmp.c_str());
    return false;
  }
  const bool written = std::fwrite(text.data(), 1, text.size(), f.get()) == text.size();
  const bool closed = std::fclose(f.release()) == 0;
  if (!written || !closed || std::rename(tmp.c_str(), path) != 0) {
    ::unlink(tmp.c_str());
    return false;
  }
  // mkstemp creates the file private to its owner; give it the usual permissions.
  ::chmod(path, 0644);
  return true;
}

}  // namespace tervik::detail
