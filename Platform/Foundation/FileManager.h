#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// What a file system says about an item: its permission bits (07777) and when it was last changed.
struct FileAttributes {
  std::uint16_t posixPermissions = 0;
  std::chrono::system_clock::time_point modificationDate;
  friend bool operator==(const FileAttributes&, const FileAttributes&) = default;
};

/// Something below a directory, as the file system described it when it was listed.
struct DirectoryItem {
  std::string path;  ///< relative to the directory
  mode_t mode = 0;
  std::int64_t size = 0;
};

/// The user's folders, where a program looks for and keeps its things.
struct UserFolders {
  std::string home;
  std::string caches;
  std::string temporary;

  /// As the environment says (HOME, XDG_CACHE_HOME, TMPDIR) with the usual defaults for what it
  /// leaves out.
  static PLATFORM_EXPORT UserFolders fromEnvironment();
};

/// Operations on the file system. Paths are bytes as the system takes them. What fails throws `CocoaError` with the
/// path; queries that answer yes or no never throw. A final symbolic link is looked at itself, never followed, but
/// where an operation says otherwise. Holds no state but the folders; any thread.
class PLATFORM_EXPORT FileManager {
 public:
  explicit FileManager(UserFolders folders = UserFolders::fromEnvironment()) : folders_(std::move(folders)) {}

  const UserFolders& folders() const { return folders_; }

  // Queries.
  /// There is an item, be it a link that leads nowhere.
  bool isReachableItem(const URL& url) const;
  /// As above, but a link is followed: one that leads nowhere does not count.
  bool fileExists(const std::string& path) const;
  bool isDirectory(const URL& url) const;
  bool isReadableFile(const std::string& path) const;
  /// Names in a directory, sorted by their bytes, without "." and "..".
  std::vector<URL> contentsOfDirectory(const URL& directory) const;
  /// Paths of everything below a directory, relative to it, each directory before what it holds and names sorted by
  /// their bytes. Links are listed and not followed.
  std::vector<std::string> subpathsOfDirectory(const std::string& path) const;
  /// The same with what the items are.
  std::vector<DirectoryItem> itemsBelowDirectory(const std::string& path) const;
  /// The text of a symbolic link.
  std::string destinationOfSymbolicLink(const std::string& path) const;

  /// Both lead to the same item, links followed.
  bool isSameItem(const URL& first, const URL& second) const;

  // Making.
  /// An existing directory (or link to one) is fine; with `withIntermediateDirectories` missing parents are made as
  /// well.
  void createDirectory(const URL& url, bool withIntermediateDirectories) const;
  /// Makes the directory that holds `url`, with its parents.
  void createParentDirectories(const URL& url) const;
  void createSymbolicLink(const std::string& path, const std::string& destination) const;

  // Reading and writing whole files.
  Data contents(const URL& url) const;
  /// The file has the new contents or is as before: they are written beside it, synchronised and moved into place.
  void writeAtomically(DataView bytes, const URL& url) const;
  /// Throws `fileWriteFileExists` and touches nothing when there is an item already.
  void writeWithoutOverwriting(DataView bytes, const URL& url) const;

  // Moving. All refuse a destination that exists, but `replaceItem`.
  /// Copies a file, a link, or a directory with everything in it; permissions and times as well.
  void copyItem(const URL& source, const URL& destination) const;
  /// As `copyItem`, but files become hard links where the file system has them: no bytes move, and what is later
  /// written into such a file is seen under both names.
  void linkItem(const URL& source, const URL& destination) const;
  /// Renames; between file systems copies and then removes the source.
  void moveItem(const URL& source, const URL& destination) const;
  /// Removes an item and, if it is a directory, everything in it. Links are removed, not followed.
  void removeItem(const URL& url) const;
  /// Puts `replacement` in the place of `url` in one step: at no time is there neither. Both are on one file system, or
  /// the replacement is copied beside `url` first.
  void replaceItem(const URL& url, const URL& replacement) const;
  /// A new, empty directory on the file system of `url`, beside it, for building its replacement; the caller removes
  /// it. In the temporary folder when there is no writing beside `url`.
  URL itemReplacementDirectory(const URL& url) const;

  /// Puts each of two items in the other's place in one step. False, with nothing changed, where the file system can't.
  bool exchangeItems(const URL& first, const URL& second) const;

  // Making sure: when these return, a power cut takes back nothing of it.
  /// Everything on the file system that holds the directory.
  void synchronizeFileSystem(const URL& directory) const;
  /// The names in the directory.
  void synchronizeDirectory(const URL& directory) const;

  /// Permissions and modification time. Of a symbolic link only the time is set, on the link itself.
  void setAttributes(const FileAttributes& attributes, const std::string& path) const;

 private:
  UserFolders folders_;
};

/// A text that no other call gave and will give, on this machine or another.
PLATFORM_EXPORT std::string globallyUniqueString();

}  // namespace platform
