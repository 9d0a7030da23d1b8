// Stands in for the runtime: records its arguments and its environment beside its own executable,
// as NUL-terminated pieces. The record appears complete. With --linger it stays for a while.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

extern char** environ;

int main(int argc, char** argv) {
  const std::string record = std::string(argv[0]) + ".record";
  {
    std::ofstream file(record + ".part", std::ios::binary);
    for (char** pieces : {argv, environ})
      for (; *pieces != nullptr; ++pieces) file << *pieces << '\0';
  }
  std::rename((record + ".part").c_str(), record.c_str());
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "--linger") == 0) sleep(5);
}
