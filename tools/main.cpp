#include <cstdio>
#include <cstring>

#include <tervik/tervik.h>

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("tervik %s\n", TERVIK_VERSION_STRING);
    return 0;
  }
  std::fprintf(stderr, "usage: tervik --version\n");
  return 2;
}
