#include "VeltrikAppKit/ArchiveItem.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/ArchiveError.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::FileAttributes;
using platform::FileDescriptor;

constexpr mode_t kSpecialBits = 07000;

/// The date as access and modification time.
std::array<timespec, 2> timesOf(const FileAttributes& attributes) {
  const auto sinceEpoch = attributes.modificationDate.time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const timespec time = {.tv_sec = seconds.count(),
                         .tv_nsec = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch - seconds).count()};
  return {time, time};
}

[[noreturn]] void failWriting(const ItemPlace& place) {
  throw CocoaError::writing(errno, place.path);
}

/// A file that has no name yet, or, on file systems that know no nameless files, one that nobody looks for.
class NewFile {
 public:
  NewFile(const ItemPlace& place, mode_t mode) : place_(place) {
    file_ = openNameless(place.directory, mode);
    if (!file_) {
      const std::string name = "." + platform::globallyUniqueString();
      file_ = FileDescriptor(
          openat(place.directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
      if (file_) temporaryName_ = name;
    }
    if (!file_) throw CocoaError(CocoaError::Code::fileNoSuchFile, place.path, CocoaError::writing(errno, {}).cause());
  }
  ~NewFile() {
    if (!temporaryName_.empty()) unlinkat(place_.directory, temporaryName_.c_str(), 0);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int get() const { return file_.get(); }

  /// Gives the file its name; false with the reason in `errno` when that fails.
  bool publish() { return temporaryName_.empty() ? giveName(get(), place_) : rename(place_.name.c_str()); }

  bool close() { return file_.close(); }

 private:
  bool rename(const char* name) {
    if (renameat2(place_.directory, temporaryName_.c_str(), place_.directory, name, RENAME_NOREPLACE) != 0)
      return false;
    temporaryName_.clear();
    return true;
  }

  const ItemPlace& place_;
  FileDescriptor file_;
  std::string temporaryName_;
};

}  // namespace

FileDescriptor openNameless(int directory, mode_t mode) {
  return FileDescriptor(openat(directory, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
}

bool giveName(int file, const ItemPlace& place) {
  // Older systems let only privileged processes link a descriptor itself.
  static std::atomic<bool> mayLinkDescriptor = true;
  if (mayLinkDescriptor) {
    if (linkat(file, "", place.directory, place.name.c_str(), AT_EMPTY_PATH) == 0) return true;
    if (errno != ENOENT) return false;
    mayLinkDescriptor = false;
  }
  const std::string descriptor = "/proc/self/fd/" + std::to_string(file);
  return linkat(AT_FDCWD, descriptor.c_str(), place.directory, place.name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

void setAttributes(int item, const ItemPlace& place, const FileAttributes& attributes) {
  struct stat status {};
  if (fstat(item, &status) != 0) failWriting(place);
  const bool isDifferent = (status.st_mode & 07777) != attributes.posixPermissions;
  if (isDifferent && fchmod(item, attributes.posixPermissions) != 0) failWriting(place);
  if (futimens(item, timesOf(attributes).data()) != 0) failWriting(place);
}

struct stat statusOf(const platform::URL& item) {
  const std::string path = item.path();
  struct stat status {};
  const bool isPath = item.isFileURL() && path.find('\0') == std::string::npos;
  if (!isPath || lstat(path.c_str(), &status) != 0) throw CocoaError::reading(ENOENT, path);
  return status;
}

std::pair<std::string_view, std::string_view> divided(std::string_view path) {
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos) return {{}, path};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

void requireNothing(const ItemPlace& place) {
  struct stat status {};
  if (fstatat(place.directory, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    throw CocoaError::writing(EEXIST, place.path);
  }
}

void makeFile(const ItemPlace& place, const FileAttributes& attributes, const std::function<void(int file)>& write) {
  NewFile file(place, attributes.posixPermissions & 0777);
  try {
    write(file.get());
    setAttributes(file.get(), place, attributes);
  } catch (...) {
    file.publish();
    throw;
  }
  if (!file.publish() || !file.close()) failWriting(place);
}

void makeDirectory(const ItemPlace& place, std::uint16_t permissions) {
  // The owner must be able to fill it, whatever permissions it gets at last.
  const mode_t mode = (permissions & ~kSpecialBits) | S_IRWXU;
  if (mkdirat(place.directory, place.name.c_str(), mode) == 0) return;
  const int error = errno;
  struct stat status {};
  const bool isThere = error == EEXIST &&
                       fstatat(place.directory, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                       S_ISDIR(status.st_mode);
  if (!isThere) throw CocoaError::writing(error, place.path);
}

void setDirectoryAttributes(const ItemPlace& place, const FileAttributes& attributes) {
  const FileDescriptor opened(
      openat(place.directory, place.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened) failWriting(place);
  setAttributes(opened.get(), place, attributes);
}

void makeLink(const ItemPlace& place, const std::string& target, const FileAttributes& attributes) {
  if (symlinkat(target.c_str(), place.directory, place.name.c_str()) != 0) failWriting(place);
  if (utimensat(place.directory, place.name.c_str(), timesOf(attributes).data(), AT_SYMLINK_NOFOLLOW) != 0) {
    failWriting(place);
  }
}

void writeAll(int file, platform::DataView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw DataError(DataError::Case::unwritableFile, errno);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

FileDescriptor openDirectory(const platform::URL& url) {
  FileDescriptor opened(open(url.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!opened) throw CocoaError::reading(errno, url.path());
  return opened;
}

DirectoryTree::DirectoryTree(const platform::URL& root) : root_(root), rootDirectory_(openDirectory(root)) {}

int DirectoryTree::directory(std::string_view path, Missing missing) {
  if (path == currentPath_ && current_) return current_.get();
  std::string_view rest = path;
  FileDescriptor reached;
  if (current_ && !currentPath_.empty() && path.starts_with(currentPath_ + "/")) {
    reached = std::move(current_);
    rest.remove_prefix(currentPath_.size() + 1);
  }
  while (!rest.empty()) {
    const std::string name(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    reached = step(reached ? reached.get() : rootDirectory_.get(), name, path, missing);
  }
  if (!reached) return rootDirectory_.get();
  currentPath_ = path;
  current_ = std::move(reached);
  return current_.get();
}

FileDescriptor DirectoryTree::step(int directory, const std::string& name, std::string_view path,
                                   Missing missing) const {
  const auto enter = [&] {
    return FileDescriptor(openat(directory, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  };
  FileDescriptor entered = enter();
  if (entered) return entered;
  int error = errno;
  const std::string fullPath = root_.appendingPathComponent(path).path();
  if (error == ENOENT && missing == Missing::make) {
    makeDirectory({directory, name, fullPath}, 0777);
    entered = enter();
    if (entered) return entered;
    error = errno;
  }
  if (error == ENOTDIR || error == ELOOP) {
    throw CocoaError(CocoaError::Code::fileReadInvalidFileName, fullPath,
                     "'" + name + "' stands in the way and is no directory");
  }
  throw missing == Missing::make ? CocoaError::writing(error, fullPath) : CocoaError::reading(error, fullPath);
}

}  // namespace veltrik
