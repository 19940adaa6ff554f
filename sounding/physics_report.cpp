// The text report of one station's physics record: one line of key and value per quantity.

#include <cstdio>

#include <tervik/sounding.h>

int write_physics_station(const char* path, tag_physics_station& record) {
  FILE* out = stdout;
  if (path != nullptr) {
    out = std::fopen(path, "w");
    if (out == nullptr) {
      std::fprintf(stderr, "Fail to open file %s.\n", path);
      return -1;
    }
  }
  for (int k = 0; k < 68; ++k) {
    std::fprintf(out, "%9s %12.4f\n", tervik_physics_table[k].key, record.index[k]);
  }
  // The file is deliberately not closed: it is completed by the flush at process exit,
  // and a reader in the same process sees only what the stream has flushed so far. The
  // stream stays reachable through the C library's list of open streams.
  return 0;
}
