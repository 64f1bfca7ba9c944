#include "Platform/Foundation/FileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"

namespace platform {

namespace {

/// The path for the system, which would take a NUL byte for its end and so another item for the one that is meant.
const char* systemPath(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw CocoaError(CocoaError::Code::fileReadInvalidFileName, path, "the name holds a NUL byte");
  }
  return path.c_str();
}

bool hasSystemPath(const std::string& path) {
  return path.find('\0') == std::string::npos;
}

std::string environmentOr(const char* name, std::string otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::string(value) : std::move(otherwise);
}

using DirectoryStream = std::unique_ptr<DIR, int (*)(DIR*)>;

DirectoryStream openDirectory(const std::string& path) {
  DirectoryStream directory(opendir(systemPath(path)), closedir);
  if (!directory) throw CocoaError::reading(errno, path);
  return directory;
}

/// The names in a directory, sorted.
std::vector<std::string> namesIn(const DirectoryStream& directory, const std::string& path) {
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* item = readdir(directory.get())) {
    const std::string_view name = item->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) throw CocoaError::reading(errno, path);
  std::sort(names.begin(), names.end());
  return names;
}

bool isItselfDirectory(const std::string& path) {
  struct stat item {};
  return hasSystemPath(path) && lstat(path.c_str(), &item) == 0 && S_ISDIR(item.st_mode);
}

/// `folder` with a "/" behind it and `name` behind that; just the name below no folder.
std::string joined(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty()) path.push_back('/');
  return path.append(name);
}

std::vector<DirectoryItem> itemsIn(const std::string& path) {
  const DirectoryStream directory = openDirectory(path);
  std::vector<DirectoryItem> items;
  for (std::string& name : namesIn(directory, path)) {
    // One that can't be looked at must not pass for a file, or what it holds would be left out without a word.
    struct stat item {};
    if (fstatat(dirfd(directory.get()), name.c_str(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
      throw CocoaError::reading(errno, joined(path, name));
    }
    items.push_back({std::move(name), item.st_mode, item.st_size});
  }
  return items;
}

void collectItems(const std::string& root, const std::string& prefix, std::vector<DirectoryItem>& found) {
  for (DirectoryItem& item : itemsIn(prefix.empty() ? root : joined(root, prefix))) {
    item.path = joined(prefix, item.path);
    found.push_back(std::move(item));
    if (!S_ISDIR(found.back().mode)) continue;
    const std::string path = found.back().path;
    collectItems(root, path, found);
  }
}

void writeAll(int file, DataView bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw CocoaError::writing(errno, path);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void makeDirectory(const std::string& path) {
  if (mkdir(systemPath(path), 0777) == 0) return;
  const int error = errno;
  struct stat item {};
  if (error == EEXIST && stat(path.c_str(), &item) == 0 && S_ISDIR(item.st_mode)) return;
  throw CocoaError::writing(error, path);
}

/// Runs `write`, and removes the new file at `path` when it throws.
template <class Write>
void removingOnFailure(const std::string& path, const Write& write) {
  try {
    write();
  } catch (...) {
    unlink(path.c_str());
    throw;
  }
}

}  // namespace

UserFolders UserFolders::fromEnvironment() {
  const std::string home = environmentOr("HOME", "/");
  return {.home = home,
          .caches = environmentOr("XDG_CACHE_HOME", home + "/.cache"),
          .temporary = environmentOr("TMPDIR", "/tmp")};
}

bool FileManager::isReachableItem(const URL& url) const {
  struct stat item {};
  const std::string path = url.path();
  return url.isFileURL() && hasSystemPath(path) && lstat(path.c_str(), &item) == 0;
}

bool FileManager::fileExists(const std::string& path) const {
  return hasSystemPath(path) && access(path.c_str(), F_OK) == 0;
}

bool FileManager::isDirectory(const URL& url) const {
  return isItselfDirectory(url.path());
}

bool FileManager::isReadableFile(const std::string& path) const {
  return hasSystemPath(path) && access(path.c_str(), R_OK) == 0;
}

std::vector<URL> FileManager::contentsOfDirectory(const URL& directory) const {
  std::vector<URL> found;
  const std::string path = directory.path();
  for (const std::string& name : namesIn(openDirectory(path), path)) {
    const URL item = directory.appendingPathComponent(name);
    found.push_back(isDirectory(item) ? item.appendingPathComponent("") : item);
  }
  return found;
}

std::vector<std::string> FileManager::subpathsOfDirectory(const std::string& path) const {
  std::vector<std::string> found;
  for (DirectoryItem& item : itemsBelowDirectory(path)) found.push_back(std::move(item.path));
  return found;
}

std::vector<DirectoryItem> FileManager::itemsBelowDirectory(const std::string& path) const {
  std::vector<DirectoryItem> found;
  collectItems(path, {}, found);
  return found;
}

std::string FileManager::destinationOfSymbolicLink(const std::string& path) const {
  std::array<char, PATH_MAX> text{};
  const ssize_t length = readlink(systemPath(path), text.data(), text.size());
  if (length < 0) throw CocoaError::reading(errno, path);
  return {text.data(), static_cast<std::size_t>(length)};
}

void FileManager::createDirectory(const URL& url, bool withIntermediateDirectories) const {
  if (withIntermediateDirectories && !fileExists(url.path())) createParentDirectories(url);
  makeDirectory(url.path());
}

void FileManager::createParentDirectories(const URL& url) const {
  const URL parent = url.deletingLastPathComponent();
  if (fileExists(parent.path()) || parent == url) return;
  createParentDirectories(parent);
  makeDirectory(parent.path());
}

void FileManager::createSymbolicLink(const std::string& path, const std::string& destination) const {
  if (symlink(systemPath(destination), systemPath(path)) != 0) throw CocoaError::writing(errno, path);
}

Data FileManager::contents(const URL& url) const {
  const std::string path = url.path();
  const FileDescriptor file(open(systemPath(path), O_RDONLY | O_CLOEXEC));
  if (!file) throw CocoaError::reading(errno, path);
  Data data;
  constexpr std::size_t kStep = 65536;
  while (true) {
    const std::size_t size = data.size();
    data.resize(size + kStep);
    const ssize_t count = read(file.get(), data.data() + size, kStep);
    if (count < 0 && errno != EINTR) throw CocoaError::reading(errno, path);
    data.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return data;
  }
}

void FileManager::writeAtomically(DataView bytes, const URL& url) const {
  const std::string path = url.path();
  const std::string beside = url.deletingLastPathComponent().path() + "/." + globallyUniqueString();
  systemPath(path);
  FileDescriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file) throw CocoaError::writing(errno, path);
  removingOnFailure(beside, [&] {
    writeAll(file.get(), bytes, path);
    if (fsync(file.get()) != 0 || !file.close()) throw CocoaError::writing(errno, path);
    if (rename(beside.c_str(), path.c_str()) != 0) throw CocoaError::writing(errno, path);
  });
}

void FileManager::writeWithoutOverwriting(DataView bytes, const URL& url) const {
  const std::string path = url.path();
  FileDescriptor file(open(systemPath(path), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file) throw CocoaError::writing(errno, path);
  removingOnFailure(path, [&] {
    writeAll(file.get(), bytes, path);
    if (!file.close()) throw CocoaError::writing(errno, path);
  });
}

URL FileManager::itemReplacementDirectory(const URL& url) const {
  for (const std::string& folder : {url.deletingLastPathComponent().path(), folders_.temporary}) {
    URL made = URL::directoryURL(folder + "/.replacement-" + globallyUniqueString());
    if (mkdir(systemPath(made.path()), 0700) == 0) return made;
  }
  throw CocoaError::writing(errno, url.path());
}

void FileManager::setAttributes(const FileAttributes& attributes, const std::string& path) const {
  using std::chrono::floor;
  using std::chrono::nanoseconds;
  using std::chrono::seconds;
  const auto sinceEpoch = attributes.modificationDate.time_since_epoch();
  const auto wholeSeconds = floor<seconds>(sinceEpoch);
  const timespec changed = {.tv_sec = wholeSeconds.count(),
                            .tv_nsec = std::chrono::duration_cast<nanoseconds>(sinceEpoch - wholeSeconds).count()};
  const std::array<timespec, 2> times = {changed, changed};
  struct stat item {};
  if (lstat(systemPath(path), &item) != 0) throw CocoaError::reading(errno, path);
  if (!S_ISLNK(item.st_mode) && chmod(path.c_str(), attributes.posixPermissions & 07777) != 0) {
    throw CocoaError::writing(errno, path);
  }
  if (utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) throw CocoaError::writing(errno, path);
}

std::string globallyUniqueString() {
  std::array<unsigned char, 16> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw CocoaError(CocoaError::Code::fileReadUnknown, {}, "the system gives no random bytes");
  }
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char byte : bytes) text.append({kDigits[byte >> 4], kDigits[byte & 0xF]});
  return text;
}

}  // namespace platform
