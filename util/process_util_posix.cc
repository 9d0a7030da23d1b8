#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "util/process_util.h"

extern char** environ;

namespace torvane {

namespace {

// Appends pointers to the strings themselves; execve takes them as char* but does not write there.
void AppendPointers(const std::vector<std::string>& strings, std::vector<char*>* pointers) {
  for (const std::string& string : strings) pointers->push_back(const_cast<char*>(string.c_str()));
}

}  // namespace

void IgnoreWriteSignals() {
  // Unlike SIG_IGN, a handler is not handed on to another program.
  for (const int signal : {SIGPIPE, SIGXFSZ})
    if (std::signal(signal, [](int /*signal*/) {}) == SIG_IGN) std::signal(signal, SIG_IGN);
}

bool SpawnProcess(const std::string& path, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment) {
  std::vector<char*> argumentVector = {const_cast<char*>(path.c_str())};
  AppendPointers(arguments, &argumentVector);
  argumentVector.push_back(nullptr);

  std::vector<char*> environmentVector;
  AppendPointers(environment, &environmentVector);
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
    environmentVector.push_back(*entry);
  environmentVector.push_back(nullptr);

  // The child reports a failed execve by creating this file. Without a name (no temporary
  // directory) a failure goes unnoticed, as when the file cannot be created.
  const char* name = std::tmpnam(nullptr);
  const std::string marker = name != nullptr ? name : "";

  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    execve(path.c_str(), argumentVector.data(), environmentVector.data());
    if (std::FILE* file = std::fopen(marker.c_str(), "wx")) std::fclose(file);
    std::exit(errno);
  }

  const timespec wait = {0, 1000000};
  nanosleep(&wait, nullptr);
  std::FILE* file = std::fopen(marker.c_str(), "r");
  if (file != nullptr) std::fclose(file);
  return file == nullptr;
}

}  // namespace torvane
