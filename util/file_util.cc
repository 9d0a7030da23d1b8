#include "util/file_util.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace fs = std::filesystem;

namespace torvane {

namespace {

const std::string partStem = ".Torvane Odrel.part";
std::string partName = partStem;

// Up to the last "/", that one excluded; empty when there is none.
std::string Parent(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
}

// What is at path itself, links not followed: not_found for nothing, none when that is unknown.
fs::file_type TypeAt(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type();
}

// Where opening the path would open or create a file; still a link when its links do not end.
std::string FollowLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < 40 && fs::is_symlink(path, error); ++i)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path;
}

// A copy in the making.
struct Part {
  std::string path;
  std::string place;     // that the copy goes to, in the same directory
  fs::file_type before;  // what was at the place when the copy began
};

// True when nothing is left at path, a directory with all that is in it.
bool RemovePart(const std::string& path) {
  std::error_code error;
  fs::remove_all(path, error);
  return !error || error == std::errc::not_a_directory;  // in a file nothing can be left
}

// Begins a copy to place. False when what has the part's name stays; it might be a user's link.
bool BeginPart(const std::string& place, Part* part) {
  *part = {fs::path(place).replace_filename(partName), place, TypeAt(place)};
  return RemovePart(part->path);
}

// Ends a copy. A complete part takes its place, unless something of another type has come there
// since, which somebody else would lose. Otherwise the part is removed, and the result is false.
bool EndPart(const Part& part, bool isComplete) {
  if (isComplete && TypeAt(part.place) == part.before &&
      std::rename(part.path.c_str(), part.place.c_str()) == 0)
    return true;
  RemovePart(part.path);
  return false;
}

// Flushes what is at path, of the copy to destination, unless the caller will: it flushes the file
// system of the directory flushedLater, if that is not empty. One flush for all files is quicker.
bool FlushCopy(const std::string& destination, const std::string& path,
               const std::string& flushedLater) {
  if ((!flushedLater.empty() && ShareFileSystem(path, flushedLater)) || Flush(path)) return true;
  std::cerr << "Failed to write \"" << destination << "\" to the disk" << std::endl;
  return false;
}

// Opens a file and stores its size in bytes. Not a pipe or a device, which might never end.
bool OpenSource(const std::string& path, std::ifstream* in, std::uintmax_t* size) {
  std::error_code error;
  *size = fs::file_size(path, error);  // only files have one
  if (!error) in->open(path, std::ios::binary);
  return in->is_open();
}

// Opens a part that is to replace a file or nothing. Until it has the source's permissions, nobody
// else may read it.
bool OpenPart(const Part& part, std::ofstream* out) {
  if (part.before != fs::file_type::regular && part.before != fs::file_type::not_found)
    return false;
  const mode_t mask = umask(077);
  out->open(part.path, std::ios::binary);
  umask(mask);
  return out->is_open();
}

// Copies the bytes and closes the destination. True when all that was read is written, and no less
// than size. The streams' flags alone do not say: an empty source sets one, a read error may not.
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

// Copies the link itself, in place of anything but a directory.
bool CopyLink(const std::string& source, const std::string& destination,
              const std::string& target) {
  Part part;
  std::error_code error;
  const bool hasPlace = BeginPart(target, &part) && part.before != fs::file_type::directory;
  if (hasPlace) fs::copy_symlink(source, part.path, error);
  if (!hasPlace || error) return ReportUnopened(source, destination, true);
  return ReportOutcome(EndPart(part, true));
}

// Copies a file or a link to a directory. The lines name the destination; target is the same or,
// while a whole directory is copied, its place in the part.
bool Copy(const std::string& source, const std::string& destination, const std::string& target,
          const std::string& flushedLater) {
  // The look at the last directory spares a mkdir for each of them.
  if (!DirectoryExists(Parent(target)) && !MakeDirectory(Parent(target))) {
    std::cerr << "CopyFile could not make directory " << Parent(destination) << std::endl;
    return false;
  }

  std::cerr << "Attempt CopyFile from " << source << " to " << destination << std::endl;
  if (LinksToDirectory(source)) return CopyLink(source, destination, target);

  std::ifstream in;
  std::uintmax_t size = 0;
  if (!OpenSource(source, &in, &size)) return ReportUnopened(source, destination, false);
  std::error_code error;
  if (fs::equivalent(source, target, error)) return ReportOutcome(true);

  Part part;
  std::ofstream out;
  if (!BeginPart(FollowLinks(target), &part) || !OpenPart(part, &out))
    return ReportUnopened(source, destination, true);

  bool isComplete = Transfer(size, &in, &out);
  int mode = 0;  // one that cannot be read is not carried over, and no failure
  const bool hasPermissions = !GetPermissions(source, &mode) || SetPermissions(part.path, mode);
  isComplete = isComplete && FlushCopy(destination, part.path, flushedLater);
  isComplete = EndPart(part, isComplete) && FlushCopy(destination, part.place, flushedLater);
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

  std::vector<std::string> pending = {""};  // relative, with a "/" in front
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
  return CopyTree(source, destination, destination, "");
}

bool CopyWholeDirectory(const std::string& source, const std::string& destination) {
  if (TypeAt(destination) != fs::file_type::not_found) return CopyDirectory(source, destination);

  Part part;
  const bool isComplete = BeginPart(destination, &part) &&
                          CopyTree(source, destination, part.path, Parent(destination));
  if (isComplete && !FileExists(part.path)) return true;  // nothing comes of a tree without files
  return EndPart(part, isComplete && FlushCopy(destination, part.path, ""));
}

bool IsPart(const std::string& path) {
  // With a "." appended both kinds of names begin in the same way.
  return (fs::path(path).filename().string() + ".").rfind(partStem + ".", 0) == 0;
}

void AddToPartName(const std::string& suffix) { partName += suffix; }

bool DeletePart(const std::string& directory) { return RemovePart(directory + "/" + partName); }

}  // namespace torvane
