#include "VeltrikAppKit/ReplacementFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/URL.h"
#include "VeltrikAppKit/Data+CRC32.h"

namespace veltrik {

using platform::CocoaError;
using platform::FileDescriptor;

namespace {

constexpr mode_t kOwnerOnly = 0600;

/// Removes what a killed process left under a name. False when it is somebody's: another user's, or in use.
bool clearLeftover(const ItemPlace& place) {
  const FileDescriptor left(
      openat(place.directory, place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!left) return errno == ENOENT;
  struct stat status {};
  const bool isOurs = fstat(left.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
  // A living process holds the lock for as long as the file has this name.
  return isOurs && flock(left.get(), LOCK_EX | LOCK_NB) == 0 && unlinkat(place.directory, place.name.c_str(), 0) == 0;
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path) : target_(path) {
  const auto [folder, name] = divided(path);
  directory_ = openDirectory(platform::URL::directoryURL(folder.empty() ? "/" : folder));
  // Of the name only a sum: with it whole, this one could be too long.
  const std::string own = fmt::format(".replacement-{:08X}", crc32(platform::bytesOf(name)));
  place_ = {directory_.get(), own, std::string(folder) + "/" + own};
  file_ = openNameless(directory_.get(), kOwnerOnly);
  if (file_) return;
  chooseName();
  file_ = FileDescriptor(
      openat(directory_.get(), place_.name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  if (!file_) throw CocoaError::writing(errno, place_.path);
  hasName_ = true;
  flock(file_.get(), LOCK_EX | LOCK_NB);
}

ReplacementFile::~ReplacementFile() {
  if (hasName_) unlinkat(directory_.get(), place_.name.c_str(), 0);
}

void ReplacementFile::chooseName() {
  if (!clearLeftover(place_)) place_.name += "-" + platform::globallyUniqueString();
}

void ReplacementFile::takePlace(int file) {
  if (!hasName_) {
    chooseName();
    flock(file, LOCK_EX | LOCK_NB);
    if (!giveName(file, place_)) throw CocoaError::writing(errno, place_.path);
    hasName_ = true;
  }
  if (renameat(directory_.get(), place_.name.c_str(), directory_.get(), target_.c_str()) != 0) {
    throw CocoaError::writing(errno, target_);
  }
  hasName_ = false;
  flock(file, LOCK_UN);
}

}  // namespace veltrik
