#include "VeltrikAppKit/UnpackFolder.h"

#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {

using platform::URL;

namespace {

/// The names in the archive's topmost folder that end in ".app"; none when it can't be read, which is for the tool to
/// find out.
std::set<std::string> applicationNames(const URL& archiveURL) {
  std::set<std::string> names;
  const auto archive = Archive::open(archiveURL);
  if (!archive) return names;
  for (const Entry& entry : *archive) {
    const std::string path = entry.path();
    const std::string name = path.substr(0, path.find('/'));
    if (name.ends_with(".app")) names.insert(name);
  }
  return names;
}

/// The tool writes such a name as it is; others it decodes in its own way, or makes harmless.
bool isPlain(const std::string& path) {
  const bool isASCII = std::ranges::all_of(path, [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
  return isASCII && !path.starts_with('/') && path.find("..") == std::string::npos;
}

/// What the owner may do with a file is what the archive says; what others may is less by the user's mask.
bool hasItsRights(const Entry& entry, mode_t mode) {
  const auto& structure = entry.centralDirectoryStructure();
  const bool isFromUNIX = structure.versionMadeBy >> 8 == static_cast<int>(Entry::OSType::unix);
  if (!isFromUNIX || structure.externalFileAttributes >> 16 == 0) return true;
  return ((mode ^ entry.fileAttributes().posixPermissions) & S_IRWXU) == 0;
}

bool isUnpacked(const Entry& entry, const URL& folder) {
  const std::string path = folder.path() + "/" + entry.path();
  struct stat item {};
  if (lstat(path.c_str(), &item) != 0) return false;
  if (entryType(item.st_mode) != entry.type()) return false;
  if (entry.type() == Entry::EntryType::symlink) return item.st_size == entry.uncompressedSize();
  return hasItsRights(entry, item.st_mode) &&
         (entry.type() == Entry::EntryType::directory || item.st_size == entry.uncompressedSize());
}

}  // namespace

bool UnpackFolder::isComplete() const {
  const auto archive = Archive::open(archive_);
  if (!archive) return true;
  const URL folder = archive_.deletingLastPathComponent();
  for (const Entry& entry : *archive)
    if (isPlain(entry.path()) && !isUnpacked(entry, folder)) return false;
  return true;
}

bool UnpackFolder::clearFor(const URL& installed) const {
  const platform::FileManager files;
  const URL folder = archive_.deletingLastPathComponent();
  std::vector<URL> earlier;
  for (const std::string& name : applicationNames(archive_)) {
    const URL item = folder.appendingPathComponent(name);
    if (files.isDirectory(item) && (files.isSameItem(item, installed) || isContained(installed, item))) return false;
    if (files.isReachableItem(item)) earlier.push_back(item);
  }
  try {
    for (const URL& item : earlier) files.removeItem(item);
  } catch (const platform::CocoaError&) {
    return false;
  }
  return true;
}

std::string UnpackFolder::archiveArgument() const {
  constexpr std::string_view kPattern = "*?[\\";
  std::string path = archive_.deletingLastPathComponent().path();
  if (!path.ends_with('/')) path.push_back('/');
  for (const char c : archive_.lastPathComponent()) {
    if (kPattern.find(c) == std::string_view::npos)
      path.push_back(c);
    else
      path.append(c == '\\' ? "[\\\\]" : std::string{'[', c, ']'});
  }
  return path;
}

}  // namespace veltrik
