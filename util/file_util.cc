#include "util/file_util.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace fs = std::filesystem;

namespace torvane {

namespace {

// Copies the link itself. It takes the place of a file or a link, not of a directory.
bool CopyLink(const std::string& source, const std::string& destination) {
  std::error_code error;
  const fs::path target = fs::read_symlink(source, error);
  if (error) return false;
  if (fs::read_symlink(destination, error) == target) return true;
  DeleteFile(destination);
  fs::create_symlink(target, destination, error);
  return !error;
}

// Moves the bytes and closes both streams. True when every byte of the source has reached the file
// system. The streams' flags alone do not tell: an empty source sets one, a read error may not.
bool Transfer(const std::string& source, std::ifstream* in, std::ofstream* out) {
  *out << in->rdbuf();
  out->clear();
  const std::streamoff read = in->tellg();
  const std::streamoff written = out->tellp();
  in->close();
  out->close();
  std::error_code error;
  const std::uintmax_t size = fs::file_size(source, error);
  return out->good() && !error && read == written && static_cast<std::uintmax_t>(read) == size;
}

// Exactly one side of a copy that cannot begin has failed.
Made ReportUnopened(const std::string& source, const std::string& destination, bool sourceGood) {
  std::cerr << "failed copy " << source << " to " << destination << std::endl;
  std::cerr << "src good: " << sourceGood << " dest good: " << !sourceGood << std::endl;
  std::cerr << "src state: fail " << !sourceGood << " bad 0" << std::endl;
  std::cerr << "dest state: fail " << sourceGood << " bad 0" << std::endl;
  return Made::nothing;
}

Made ReportOutcome(Made made) {
  std::cerr << "CopyFile success: " << (made >= Made::whole) << std::endl;
  return made;
}

}  // namespace

std::string ExecutableDirectory() {
  const std::string file = ExecutableFile();
  return file.substr(0, file.rfind('/'));
}

std::string ApplicationDataDirectory(const std::string& org, const std::string& name) {
  const std::string userData = UserDataDirectory();
  if (userData.empty()) return "";
  return userData + "/" + org + "/" + name;
}

bool LinksToDirectory(const std::string& path) {
  std::error_code error;
  return fs::is_symlink(path, error) && fs::is_directory(path, error);
}

bool CopyFile(const std::string& source, const std::string& destination) {
  return CopyFile(source, destination, destination) >= Made::whole;
}

Made CopyFile(const std::string& source, const std::string& destination, const std::string& path) {
  if (!MakeDirectory(fs::path(path).parent_path())) {
    std::cerr << "CopyFile could not make directory "
              << fs::path(destination).parent_path().string() << std::endl;
    return Made::nothing;
  }

  std::cerr << "Attempt CopyFile from " << source << " to " << destination << std::endl;
  if (LinksToDirectory(source))
    return ReportOutcome(CopyLink(source, path) ? Made::link : Made::nothing);

  std::error_code error;
  std::ifstream in;
  if (fs::is_regular_file(source, error)) in.open(source, std::ios::binary);
  if (!in.is_open()) return ReportUnopened(source, destination, false);
  // Opening the source itself as the destination would empty it.
  if (fs::equivalent(source, destination, error)) return ReportOutcome(Made::existing);
  std::ofstream out;
  const fs::file_status there = fs::status(path, error);
  if (!fs::exists(there) || fs::is_regular_file(there)) OpenPrivate(path, &out);
  if (!out.is_open()) return ReportUnopened(source, destination, true);

  const bool complete = Transfer(source, &in, &out);
  int mode = 0;
  if (GetPermissions(source, &mode) && !SetPermissions(path, mode)) {
    std::cerr << "failed during permissions xfer" << std::endl;
    return complete ? Made::unprotected : Made::part;
  }
  return ReportOutcome(complete ? Made::whole : Made::part);
}

bool CopyDirectory(const std::string& source, const std::string& destination) {
  return CopyDirectory(source, destination, destination) >= Made::whole;
}

Made CopyDirectory(const std::string& source, const std::string& destination,
                   const std::string& path) {
  if (!DirectoryExists(source)) {
    std::cerr << "CopyDirectory from does not exist: " << source << std::endl;
    return Made::nothing;
  }

  const bool isNew = IsMissing(path);
  Made made = Made::existing;
  std::deque<std::string> pending = {""};  // below all three, with a "/" in front
  while (!pending.empty()) {
    const std::string directory = std::move(pending.back());
    pending.pop_back();
    for (const std::string& name : ListDirectory(source + directory)) {
      const std::string entry = directory + "/" + name;
      if (DirectoryExists(source + entry))
        pending.push_back(entry);
      else if (CopyFile(source + entry, destination + entry, path + entry) < Made::whole)
        return isNew ? Made::part : Made::nothing;
      else
        made = Made::whole;
    }
  }
  return made;
}

}  // namespace torvane
