#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/FileManager.h"

namespace platform {

namespace {

FileDescriptor openedDirectory(const std::string& path) {
  FileDescriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory) throw CocoaError::reading(errno, path);
  return directory;
}

}  // namespace

void FileManager::synchronizeFileSystem(const URL& directory) const {
  const FileDescriptor opened = openedDirectory(directory.path());
  if (syncfs(opened.get()) != 0) throw CocoaError::writing(errno, directory.path());
}

void FileManager::synchronizeDirectory(const URL& directory) const {
  const FileDescriptor opened = openedDirectory(directory.path());
  if (fsync(opened.get()) != 0) throw CocoaError::writing(errno, directory.path());
}

bool FileManager::exchangeItems(const URL& first, const URL& second) const {
  if (renameat2(AT_FDCWD, first.path().c_str(), AT_FDCWD, second.path().c_str(), RENAME_EXCHANGE) == 0) return true;
  // What a file system says that doesn't know the exchange, or not for directories.
  if (errno == EINVAL || errno == ENOSYS || errno == EXDEV || errno == EOPNOTSUPP) return false;
  throw CocoaError::writing(errno, second.path());
}

bool FileManager::isSameItem(const URL& first, const URL& second) const {
  struct stat one {};
  struct stat other {};
  return stat(first.path().c_str(), &one) == 0 && stat(second.path().c_str(), &other) == 0 &&
         one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace platform
