#include "util/file_util.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <deque>
#include <fstream>
#include <iostream>

namespace fs = std::filesystem;

namespace torvane {

namespace {

const std::string partStem = ".Torvane Odrel.part";
std::string partName = partStem;

std::string Parent(const std::string& path) { return fs::path(path).parent_path(); }

// The part of a copy to place.
std::string PartBeside(const std::string& place) {
  return fs::path(place).replace_filename(partName);
}

// Where opening the path would open or create a file; still a link when its links do not end.
std::string FollowLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < 40 && fs::is_symlink(path, error); ++i)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path;
}

// Flushes what is at path, of the copy to destination, unless the caller will: it flushes the file
// system of the directory flushedLater, if that is not empty. One flush for all files is quicker.
bool FlushCopy(const std::string& destination, const std::string& path,
               const std::string& flushedLater) {
  if ((!flushedLater.empty() && ShareFileSystem(path, flushedLater)) || Flush(path)) return true;
  std::cerr << "Failed to write \"" << destination << "\" to the disk" << std::endl;
  return false;
}

// Renames a complete part, unless something of another type than before has come to its place.
// Otherwise removes it and returns false.
bool EndCopy(bool isComplete, const std::string& part, const std::string& place,
             fs::file_type before) {
  if (isComplete && TypeAt(place) == before && std::rename(part.c_str(), place.c_str()) == 0)
    return true;
  std::error_code error;
  fs::remove_all(part, error);
  return false;
}

// Copies the link itself, in place of anything but a directory.
bool CopyLink(const std::string& source, const std::string& place) {
  const fs::file_type before = TypeAt(place);
  const std::string part = PartBeside(place);
  DeleteFile(part);
  std::error_code error;
  fs::copy_symlink(source, part, error);
  return EndCopy(!error, part, place, before);
}

// Copies the bytes and closes the destination. True when the file system has taken all that was
// read, which is no less than the size. The streams' flags alone do not say: an empty source sets
// one, a read error may not.
bool Transfer(std::uintmax_t size, std::ifstream* in, std::ofstream* out) {
  *out << in->rdbuf();
  out->clear();
  const std::streamoff read = in->tellg();
  const std::streamoff written = out->tellp();
  out->close();
  return out->good() && read == written && read >= 0 && static_cast<std::uintmax_t>(read) >= size;
}

bool ReportUnopened(const std::string& source, const std::string& destination, bool sourceGood) {
  std::cerr << "failed copy " << source << " to " << destination << std::endl;
  std::cerr << "src good: " << sourceGood << " dest good: " << !sourceGood << std::endl;
  std::cerr << "src state: fail " << !sourceGood << " bad 0" << std::endl;
  std::cerr << "dest state: fail " << sourceGood << " bad 0" << std::endl;
  return false;
}

bool ReportOutcome(bool success) {
  std::cerr << "CopyFile success: " << success << std::endl;
  return success;
}

// Copies a file or a link to a directory to target. That is the destination, which the lines name,
// or, while a whole directory is still a part, the same place below that.
bool Copy(const std::string& source, const std::string& destination, const std::string& target,
          const std::string& flushedLater) {
  // The look at the last directory spares a mkdir for each of them.
  if (!DirectoryExists(Parent(target)) && !MakeDirectory(Parent(target))) {
    std::cerr << "CopyFile could not make directory " << Parent(destination) << std::endl;
    return false;
  }

  std::cerr << "Attempt CopyFile from " << source << " to " << destination << std::endl;
  if (LinksToDirectory(source)) return ReportOutcome(CopyLink(source, target));

  std::error_code error;
  const std::uintmax_t size = fs::file_size(source, error);  // only files have one
  std::ifstream in;
  if (!error) in.open(source, std::ios::binary);
  if (!in.is_open()) return ReportUnopened(source, destination, false);
  if (fs::equivalent(source, target, error)) return ReportOutcome(true);

  const std::string place = FollowLinks(target);
  const fs::file_type before = TypeAt(place);
  const std::string part = PartBeside(place);
  DeleteFile(part);
  const mode_t mask = umask(077);  // nobody else may read the part meanwhile
  std::ofstream out;
  if (before == fs::file_type::regular || before == fs::file_type::not_found)
    out.open(part, std::ios::binary);
  umask(mask);
  if (!out.is_open()) return ReportUnopened(source, destination, true);

  bool isComplete = Transfer(size, &in, &out);
  int mode = 0;  // one that cannot be read is not carried over, and no failure
  const bool hasPermissions = !GetPermissions(source, &mode) || SetPermissions(part, mode);
  isComplete = isComplete && FlushCopy(destination, part, flushedLater);
  isComplete =
      EndCopy(isComplete, part, place, before) && FlushCopy(destination, place, flushedLater);
  if (hasPermissions) return ReportOutcome(isComplete);
  std::cerr << "failed during permissions xfer" << std::endl;
  return false;
}

bool CopyTree(const std::string& source, const std::string& destination, const std::string& target,
              const std::string& flushedLater) {
  if (!DirectoryExists(source)) {
    std::cerr << "CopyDirectory from does not exist: " << source << std::endl;
    return false;
  }

  std::deque<std::string> pending = {""};  // relative, with a "/" in front
  while (!pending.empty()) {
    const std::string directory = std::move(pending.back());
    pending.pop_back();
    for (const std::string& name : ListDirectory(source + directory)) {
      const std::string entry = directory + "/" + name;
      if (DirectoryExists(source + entry))
        pending.push_back(entry);
      else if (!Copy(source + entry, destination + entry, target + entry, flushedLater))
        return false;
    }
  }
  return true;
}

}  // namespace

std::string ExecutableDirectory() {
  const std::string file = ExecutableFile();
  return file.substr(0, file.rfind('/'));
}

std::string ApplicationDataDirectory(const std::string& org, const std::string& name) {
  const std::string userData = UserDataDirectory();
  return userData.empty() ? "" : userData + "/" + org + "/" + name;
}

fs::file_type TypeAt(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type();
}

bool LinksToDirectory(const std::string& path) {
  std::error_code error;
  return fs::is_symlink(path, error) && fs::is_directory(path, error);
}

bool IsCopyOf(const std::string& path, const std::string& original) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error || fs::file_size(original, error) != size || fs::equivalent(path, original, error))
    return false;

  // A read error ends the loop early, with a flag in libstdc++ and without one in libc++.
  std::ifstream one(path, std::ios::binary), other(original, std::ios::binary);
  char bytes[4096], others[sizeof(bytes)];
  std::uintmax_t same = 0;
  while (one.read(bytes, sizeof(bytes)).gcount() > 0 &&
         other.read(others, sizeof(bytes)).gcount() == one.gcount() &&
         std::memcmp(bytes, others, one.gcount()) == 0)
    same += one.gcount();
  return same == size;
}

bool CopyFile(const std::string& source, const std::string& destination,
              const std::string& flushedLater) {
  return Copy(source, destination, destination, flushedLater);
}

bool CopyDirectory(const std::string& source, const std::string& destination) {
  if (TypeAt(destination) != fs::file_type::not_found)
    return CopyTree(source, destination, destination, "");

  const std::string part = PartBeside(destination);
  bool isComplete =
      DeletePart(Parent(destination)) && CopyTree(source, destination, part, Parent(destination));
  if (isComplete && !FileExists(part)) return true;  // nothing comes of a tree without files
  isComplete = isComplete && FlushCopy(destination, part, "");
  return EndCopy(isComplete, part, destination, fs::file_type::not_found);
}

bool IsPart(const std::string& path) {
  return (fs::path(path).filename().string() + ".").rfind(partStem + ".", 0) == 0;
}

void AddToPartName(const std::string& suffix) { partName += suffix; }

bool DeletePart(const std::string& directory) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) return true;
  fs::remove_all(directory + "/" + partName, error);
  return !error;
}

}  // namespace torvane
