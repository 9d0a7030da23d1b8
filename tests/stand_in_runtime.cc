// Stands in for the runtime: records what it was started with beside its own executable, as
// NUL-terminated pieces. The record of the arguments comes last and complete, so a test may wait
// for it. With the argument --linger it stays for a while.
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

extern char** environ;

namespace {

void Record(char** pieces, const std::string& path) {
  {
    std::ofstream file(path + ".part", std::ios::binary);
    for (; *pieces != nullptr; ++pieces) file << *pieces << '\0';
  }
  std::rename((path + ".part").c_str(), path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string self = argv[0];
  Record(environ, self + ".environment");
  Record(argv, self + ".arguments");
  for (int i = 1; i < argc; ++i)
    if (std::string(argv[i]) == "--linger") sleep(5);
}
