#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/URL.h"

namespace veltrik {

/// What the system says of an item, not following a link. Throws `CocoaError` when there is none.
struct stat statusOf(const platform::URL& item);

/// A name in an open directory, where an item is or is to be made. Nothing here follows a link that stands at the name.
/// What fails throws `CocoaError` with `path`.
struct ItemPlace {
  int directory;  ///< borrowed
  std::string name;
  std::string path;  ///< for messages
};

/// A path's directory ("" for none) and its last part.
std::pair<std::string_view, std::string_view> divided(std::string_view path);

/// Throws `fileWriteFileExists` when something has the name already, be it a link that leads nowhere.
void requireNothing(const ItemPlace& place);

/// Makes a file of what `write` puts into the descriptor. The file gets its name when it is complete; when `write` or
/// anything else fails, with what there is of it.
void makeFile(const ItemPlace& place, const platform::FileAttributes& attributes,
              const std::function<void(int file)>& write);
/// Opens a new file that has no name: nobody sees it, and it is gone with its descriptor. None, with the reason in
/// `errno`, on file systems that know no such files.
platform::FileDescriptor openNameless(int directory, mode_t mode);
/// Gives it one. False, with the reason in `errno`, when that is taken or there is no writing in the directory.
bool giveName(int file, const ItemPlace& place);
/// Sets permissions and times through the open item, whose name may stand for something else by now.
void setAttributes(int item, const ItemPlace& place, const platform::FileAttributes& attributes);
/// An existing directory is fine, a link to one is not. Others get no rights beyond `permissions`.
void makeDirectory(const ItemPlace& place, std::uint16_t permissions);
void setDirectoryAttributes(const ItemPlace& place, const platform::FileAttributes& attributes);
/// The date is set on the link itself; a link has no permissions of its own.
void makeLink(const ItemPlace& place, const std::string& target, const platform::FileAttributes& attributes);

/// Writes everything into an open file, or throws `DataError`.
void writeAll(int file, platform::DataView bytes);

/// The directory at `url`, followed if it is a link; for being looked into only.
platform::FileDescriptor openDirectory(const platform::URL& url);

/// Directories below a root, reached part by part, never through a link. Remembers the last one, since neighbours in an
/// archive mostly share theirs.
class DirectoryTree {
 public:
  explicit DirectoryTree(const platform::URL& root);

  enum class Missing { make, fail };
  /// The directory at a path of plain parts ("a/b"; "" is the root). The descriptor stays the tree's and is valid until
  /// the next call.
  int directory(std::string_view path, Missing missing);

 private:
  platform::FileDescriptor step(int directory, const std::string& name, std::string_view path, Missing missing) const;

  platform::URL root_;
  platform::FileDescriptor rootDirectory_;
  std::string currentPath_;
  platform::FileDescriptor current_;
};

}  // namespace veltrik
