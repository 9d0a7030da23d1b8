#include "util/file_util.h"

#include <deque>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>
#include <utility>

namespace torvane {

std::string ExecutableDirectory() {
  const std::string file = ExecutableFile();
  return file.substr(0, file.rfind('/'));
}

std::string ApplicationDataDirectory(const std::string& org, const std::string& name) {
  const std::string userData = UserDataDirectory();
  if (userData.empty()) return "";
  return userData + "/" + org + "/" + name;
}

bool CopyFile(const std::string& source, const std::string& destination, bool* emptied) {
  const std::size_t slash = destination.rfind('/');
  if (slash != std::string::npos) {
    const std::string parent = destination.substr(0, slash);
    if (!MakeDirectory(parent)) {
      std::cerr << "CopyFile could not make directory " << parent << std::endl;
      return false;
    }
  }

  std::cerr << "Attempt CopyFile from " << source << " to " << destination << std::endl;
  std::error_code error;
  if (std::filesystem::equivalent(source, destination, error)) {
    // Opening the destination would empty the source.
    std::cerr << "CopyFile success: 1" << std::endl;
    return true;
  }

  std::ifstream in(source, std::ios::binary);
  std::ofstream out;
  if (in.is_open()) out.open(destination, std::ios::binary | std::ios::trunc);
  if (!out.is_open()) {
    if (in.is_open()) in.close();
    std::cerr << "failed copy " << source << " to " << destination << std::endl;
    std::cerr << "src good: " << in.good() << " dest good: " << out.good() << std::endl;
    std::cerr << "src state: fail " << in.fail() << " bad " << in.bad() << std::endl;
    std::cerr << "dest state: fail " << out.fail() << " bad " << out.bad() << std::endl;
    return false;
  }
  if (emptied != nullptr) *emptied = true;

  out << in.rdbuf();
  // The insertion fails when it had nothing to insert, and is silent after a short write. The copy
  // is complete when the source has no more to give and nothing is left in the stream's buffer.
  out.clear();
  out.flush();
  const bool samePosition = in.tellg() == out.tellp();
  const bool atEnd = in.peek() == std::ifstream::traits_type::eof() && !in.bad();
  in.close();
  out.close();
  const bool complete = samePosition && atEnd && out.good();

  int mode = 0;
  if (GetPermissions(source, &mode) && !SetPermissions(destination, mode)) {
    std::cerr << "failed during permissions xfer" << std::endl;
    return false;
  }
  std::cerr << "CopyFile success: " << complete << std::endl;
  return complete;
}

bool CopyDirectory(const std::string& source, const std::string& destination) {
  if (!DirectoryExists(source)) {
    std::cerr << "CopyDirectory from does not exist: " << source << std::endl;
    return false;
  }

  std::deque<std::pair<std::string, std::string>> pending = {{source, destination}};
  while (!pending.empty()) {
    const auto [from, to] = std::move(pending.back());
    pending.pop_back();
    for (const std::string& name : ListDirectory(from)) {
      const std::string entry = from + "/" + name;
      const std::string copy = to + "/" + name;
      if (DirectoryExists(entry))
        pending.emplace_back(entry, copy);
      else if (!CopyFile(entry, copy))
        return false;
    }
  }
  return true;
}

}  // namespace torvane
