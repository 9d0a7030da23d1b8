#include "util/file_util.h"

#include <cstdint>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <system_error>
#include <utility>

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

void ReportUnopened(const std::string& source, const std::ifstream& in,
                    const std::string& destination, const std::ofstream& out) {
  std::cerr << "failed copy " << source << " to " << destination << std::endl;
  std::cerr << "src good: " << in.good() << " dest good: " << out.good() << std::endl;
  std::cerr << "src state: fail " << in.fail() << " bad " << in.bad() << std::endl;
  std::cerr << "dest state: fail " << out.fail() << " bad " << out.bad() << std::endl;
}

bool ReportOutcome(bool complete) {
  std::cerr << "CopyFile success: " << complete << std::endl;
  return complete;
}

// Lies among the notes once their copies are whole. Its name comes after all of theirs, so that it
// is the last to go.
const char* const removedSource = "/source";

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

bool CopyFile(const std::string& source, const std::string& destination, bool* incomplete) {
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
  if (fs::is_symlink(source, error) && fs::is_directory(source, error))
    return ReportOutcome(CopyLink(source, destination));

  std::ifstream in;
  if (fs::is_regular_file(source, error)) in.open(source, std::ios::binary);
  // Opening the source itself as the destination would empty it.
  if (in.is_open() && fs::equivalent(source, destination, error)) return ReportOutcome(true);

  std::ofstream out;
  if (in.is_open()) OpenPrivate(destination, &out);
  if (!out.is_open()) {
    in.close();  // fails when it was not open, as the report says then
    ReportUnopened(source, in, destination, out);
    return false;
  }

  const bool complete = Transfer(source, &in, &out);
  if (incomplete != nullptr) *incomplete = !complete;
  int mode = 0;
  if (GetPermissions(source, &mode) && !SetPermissions(destination, mode)) {
    std::cerr << "failed during permissions xfer" << std::endl;
    return false;
  }
  return ReportOutcome(complete);
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

void NoteCopy(const std::string& notes, const std::string& path) {
  std::error_code error;
  fs::create_directory(notes, error);
  // Relative, so that it leads to the same place once the user's directory was moved or copied. The
  // name only has to differ from those of other paths, which may be longer than a name.
  fs::create_symlink(fs::path(path).lexically_relative(notes),
                     notes + "/" + std::to_string(std::hash<std::string>{}(path)), error);
}

bool RemoveSource(const std::string& notes, const std::string& source) {
  return std::rename(source.c_str(), (notes + removedSource).c_str()) == 0;
}

void EndCopies(const std::string& notes, bool keep) {
  if (!DirectoryExists(notes)) return;
  std::error_code error;
  if (fs::symlink_status(notes + removedSource, error).type() != fs::file_type::not_found)
    keep = true;
  for (const std::string& name : ListDirectory(notes)) {
    const std::string note = notes + "/" + name;
    const fs::path part = notes / fs::read_symlink(note, error);
    const bool removed = keep || (!error && DeleteTree(part));
    if (!removed || !DeleteFile(note))
      std::cerr << "Failed to end the copy that \"" << note << "\" notes" << std::endl;
  }
  fs::remove(notes, error);
}

}  // namespace torvane
