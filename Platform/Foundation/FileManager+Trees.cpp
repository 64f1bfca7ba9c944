#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <array>
#include <climits>
#include <memory>
#include <string_view>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/FileManager.h"

namespace platform {

namespace {

constexpr std::size_t kCopyStep = 1 << 20;

/// An item below an open directory; `path` is for messages.
struct Place {
  int directory;
  std::string name;
  std::string path;

  Place below(int opened, const std::string& item) const { return {opened, item, path + "/" + item}; }
  struct stat status() const {
    struct stat item {};
    if (fstatat(directory, name.c_str(), &item, AT_SYMLINK_NOFOLLOW) != 0) throw CocoaError::reading(errno, path);
    return item;
  }
};

Place placeOf(const URL& url) {
  std::string path = url.path();
  if (path.find('\0') != std::string::npos) {
    throw CocoaError(CocoaError::Code::fileReadInvalidFileName, path, "the name holds a NUL byte");
  }
  return {AT_FDCWD, path, path};
}

FileDescriptor openDirectory(const Place& place) {
  FileDescriptor opened(openat(place.directory, place.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened) throw CocoaError::reading(errno, place.path);
  return opened;
}

/// Calls `visit` with the name of each item in an open directory; names are read first, so the directory may change.
template <class Visit>
void forEachName(const FileDescriptor& directory, const std::string& path, const Visit& visit) {
  FileDescriptor own(openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(own ? fdopendir(own.get()) : nullptr, closedir);
  if (!stream) throw CocoaError::reading(errno, path);
  own.release();
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* item = readdir(stream.get())) {
    const std::string_view name = item->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) throw CocoaError::reading(errno, path);
  for (const std::string& name : names) visit(name);
}

void copyBytes(int from, int to, const Place& source, const Place& destination) {
  // File systems that share blocks between files copy without moving any.
  if (ioctl(to, FICLONE, from) == 0) return;
  std::vector<std::byte> buffer;
  while (true) {
    // The kernel copies where both file systems let it; the first refusal comes before the first byte.
    ssize_t count = buffer.empty() ? copy_file_range(from, nullptr, to, nullptr, kCopyStep, 0) : -1;
    if (count < 0) {
      buffer.resize(kCopyStep);
      count = read(from, buffer.data(), buffer.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throw CocoaError::reading(errno, source.path);
      for (ssize_t done = 0; done < count;) {
        const ssize_t written = write(to, buffer.data() + done, static_cast<std::size_t>(count - done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw CocoaError::writing(errno, destination.path);
        done += written;
      }
    }
    if (count == 0) return;
  }
}

/// Permissions and times of `status` for an open item.
void applyStatus(int item, const struct stat& status, const Place& place) {
  const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
  if (fchmod(item, status.st_mode & 07777) != 0 || futimens(item, times.data()) != 0) {
    throw CocoaError::writing(errno, place.path);
  }
}

void copyFile(const Place& source, const struct stat& status, const Place& destination) {
  const FileDescriptor from(openat(source.directory, source.name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!from) throw CocoaError::reading(errno, source.path);
  FileDescriptor to(
      openat(destination.directory, destination.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!to) throw CocoaError::writing(errno, destination.path);
  copyBytes(from.get(), to.get(), source, destination);
  applyStatus(to.get(), status, destination);
  if (!to.close()) throw CocoaError::writing(errno, destination.path);
}

/// A second name for the file; a copy where the file system has none, or doesn't let this user make one.
void linkFile(const Place& source, const struct stat& status, const Place& destination) {
  if (linkat(source.directory, source.name.c_str(), destination.directory, destination.name.c_str(), 0) != 0)
    copyFile(source, status, destination);
}

void copyLink(const Place& source, const Place& destination) {
  std::array<char, PATH_MAX> target{};
  const ssize_t length = readlinkat(source.directory, source.name.c_str(), target.data(), target.size() - 1);
  if (length < 0) throw CocoaError::reading(errno, source.path);
  if (symlinkat(target.data(), destination.directory, destination.name.c_str()) != 0) {
    throw CocoaError::writing(errno, destination.path);
  }
}

/// How a regular file gets to its destination: `copyFile` or `linkFile`.
using FileStep = void (*)(const Place& source, const struct stat& status, const Place& destination);

void copyAny(const Place& source, const Place& destination, FileStep fileStep);

void copyDirectory(const Place& source, const struct stat& status, const Place& destination, FileStep fileStep) {
  const FileDescriptor from = openDirectory(source);
  if (mkdirat(destination.directory, destination.name.c_str(), 0700) != 0) {
    throw CocoaError::writing(errno, destination.path);
  }
  const FileDescriptor to = openDirectory(destination);
  forEachName(from, source.path, [&](const std::string& name) {
    copyAny(source.below(from.get(), name), destination.below(to.get(), name), fileStep);
  });
  applyStatus(to.get(), status, destination);
}

void copyAny(const Place& source, const Place& destination, FileStep fileStep) {
  const struct stat status = source.status();
  switch (status.st_mode & S_IFMT) {
    case S_IFDIR:
      return copyDirectory(source, status, destination, fileStep);
    case S_IFLNK:
      return copyLink(source, destination);
    case S_IFREG:
      return fileStep(source, status, destination);
    default:
      throw CocoaError(CocoaError::Code::fileReadUnknown, source.path, "neither a file nor a directory nor a link");
  }
}

void removeAny(const Place& place) {
  if (unlinkat(place.directory, place.name.c_str(), 0) == 0) return;
  if (errno != EISDIR) throw CocoaError::writing(errno, place.path);
  {
    const FileDescriptor opened = openDirectory(place);
    forEachName(opened, place.path, [&](const std::string& name) { removeAny(place.below(opened.get(), name)); });
  }
  if (unlinkat(place.directory, place.name.c_str(), AT_REMOVEDIR) != 0) throw CocoaError::writing(errno, place.path);
}

void requireAbsent(const FileManager& files, const URL& url) {
  if (files.isReachableItem(url)) {
    throw CocoaError(CocoaError::Code::fileWriteFileExists, url.path(), "there is an item already");
  }
}

void copyWhole(const FileManager& files, const URL& source, const URL& destination, FileStep fileStep) {
  requireAbsent(files, destination);
  try {
    copyAny(placeOf(source), placeOf(destination), fileStep);
  } catch (...) {
    // Half a copy must not pass for a whole one.
    try {
      if (files.isReachableItem(destination)) files.removeItem(destination);
    } catch (const CocoaError&) {
      // The first failure is the one to tell.
    }
    throw;
  }
}

}  // namespace

void FileManager::copyItem(const URL& source, const URL& destination) const {
  copyWhole(*this, source, destination, copyFile);
}

void FileManager::linkItem(const URL& source, const URL& destination) const {
  copyWhole(*this, source, destination, linkFile);
}

void FileManager::moveItem(const URL& source, const URL& destination) const {
  const Place from = placeOf(source);
  const Place to = placeOf(destination);
  if (renameat2(AT_FDCWD, from.name.c_str(), AT_FDCWD, to.name.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno == ENOENT && !isReachableItem(source)) throw CocoaError::reading(ENOENT, from.path);
  if (errno != EXDEV) throw CocoaError::writing(errno, to.path);
  copyItem(source, destination);
  removeItem(source);
}

void FileManager::removeItem(const URL& url) const {
  removeAny(placeOf(url));
}

void FileManager::replaceItem(const URL& url, const URL& replacement) const {
  const Place from = placeOf(replacement);
  const Place to = placeOf(url);
  if (rename(from.name.c_str(), to.name.c_str()) == 0) return;
  if (errno != EXDEV) throw CocoaError::writing(errno, to.path);
  const URL beside = url.deletingLastPathComponent().appendingPathComponent(".replacement-" + globallyUniqueString());
  copyItem(replacement, beside);
  if (rename(beside.path().c_str(), to.name.c_str()) != 0) {
    const CocoaError failure = CocoaError::writing(errno, to.path);
    removeItem(beside);
    throw failure;
  }
  removeItem(replacement);
}

}  // namespace platform
