#include "util/file_util.h"

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

}  // namespace torvane
