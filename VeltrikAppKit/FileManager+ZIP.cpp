#include "VeltrikAppKit/FileManager+ZIP.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveBatch.h"
#include "VeltrikAppKit/ArchiveExtraction.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::FileManager;
using platform::Progress;
using platform::URL;

/// Whether a path is standardised as it is and so leads to where it says. Nearly all do, and need no URL to tell.
bool isPlain(std::string_view path) {
  if (path.empty() || path.find('\0') != std::string_view::npos) return false;
  if (path.ends_with('/')) path.remove_suffix(1);
  while (true) {
    const std::string_view part = path.substr(0, path.find('/'));
    if (part.empty() || part == "." || part == "..") return false;
    if (part.size() == path.size()) return true;
    path.remove_prefix(part.size() + 1);
  }
}

/// A path's directory and its last part.
std::pair<std::string, std::string> divided(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return {std::string(), path};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

/// A part of the work on its own: a child of the whole, or nothing when nobody watches.
std::shared_ptr<Progress> makeChild(Progress* whole, std::int64_t units) {
  if (whole == nullptr) return nullptr;
  auto child = std::make_shared<Progress>(units);
  whole->addChild(child, units);
  return child;
}

/// Ends the progress: work of no units at all would otherwise look as if it had not begun.
void finish(Progress* progress) {
  if (progress == nullptr) return;
  if (progress->totalUnitCount() == 0) progress->setTotalUnitCount(1);
  progress->setCompletedUnitCount(progress->totalUnitCount());
}

/// The units of each item to add, of which the progress gets the sum; zeros when nobody watches. Asked once an item,
/// since the question costs more than packing a small file does.
template <class ItemAt>
std::vector<std::int64_t> beginProgress(Progress* progress, const Archive& archive, std::size_t count,
                                        const ItemAt& itemAt) {
  std::vector<std::int64_t> units(count);
  if (progress == nullptr) return units;
  for (std::size_t at = 0; at < count; ++at) {
    units[at] = std::max<std::int64_t>(archive.totalUnitCountForAddingItem(itemAt(at)), 0);
  }
  progress->setTotalUnitCount(std::accumulate(units.begin(), units.end(), std::int64_t{0}));
  return units;
}

/// A whole archive on its way into a directory.
class Unpacking {
 public:
  Unpacking(const Archive& archive, const URL& destination, const UnzipOptions& options)
      : archive_(archive),
        destination_(URL::directoryURL(destination.path()).standardized()),
        options_(options),
        root_(destination_.path()) {
    // Read once: what is counted, made and filled is then the same, whatever a later reading would meet.
    std::ranges::copy(archive_, std::back_inserter(entries_));
    const auto is = [](Entry::EntryType type) { return [type](const Entry& entry) { return entry.type() == type; }; };
    const auto others = std::ranges::stable_partition(entries_, is(Entry::EntryType::directory));
    std::ranges::stable_partition(others, is(Entry::EntryType::file));
  }

  void run() {
    if (options_.progress != nullptr) options_.progress->setTotalUnitCount(totalUnitCount());
    if (entries_.empty()) return finish(options_.progress);
    FileManager().createDirectory(destination_, true);
    tree_.emplace(destination_);
    try {
      unpackAll();
    } catch (...) {
      try {
        applyDirectoryAttributes();
      } catch (const std::exception&) {
        // The first failure is the one to tell.
      }
      throw;
    }
    applyDirectoryAttributes();
    finish(options_.progress);
  }

 private:
  struct MadeDirectory {
    std::string path;
    platform::FileAttributes attributes;
  };

  std::int64_t totalUnitCount() const {
    std::int64_t total = 0;
    for (const Entry& entry : entries_) total += archive_.totalUnitCountForReading(entry);
    return total;
  }

  std::string pathOf(const Entry& entry) const {
    return options_.preferredEncoding ? entry.path(*options_.preferredEncoding) : entry.path();
  }

  /// The entry's path below the destination, without "." and ".."; throws when it leads outside.
  std::string relativePath(const std::string& entryPath) const {
    if (isPlain(entryPath)) return entryPath.substr(0, entryPath.size() - (entryPath.ends_with('/') ? 1 : 0));
    const URL location = destination_.appendingPathComponent(entryPath);
    if (!isContained(location, destination_) || entryPath.find('\0') != std::string::npos) {
      throw CocoaError(CocoaError::Code::fileReadInvalidFileName, location.path(), "it leads outside the destination");
    }
    const std::string path = location.standardized().path();
    return path.size() > root_.size() ? path.substr(root_.size() + (root_ == "/" ? 0 : 1)) : std::string();
  }

  ItemPlace placeOf(const std::string& path) {
    const auto [parent, name] = divided(path);
    return {tree_->directory(parent, DirectoryTree::Missing::make), name.empty() ? "." : name, root_ + "/" + path};
  }

  void unpackAll() {
    for (const Entry& entry : entries_) unpack(entry);
  }

  void unpack(const Entry& entry) {
    const std::string entryPath = pathOf(entry);
    withContext(entryPath, archive_.url(), [&] {
      const std::string path = relativePath(entryPath);
      const auto child = makeChild(options_.progress, archive_.totalUnitCountForReading(entry));
      const ExtractOptions options = {.skipCRC32 = options_.skipCRC32,
                                      .maskSpecialPermissions = options_.maskSpecialPermissions,
                                      .progress = child.get()};
      const std::uint32_t checksum = ArchiveExtraction(archive_, entry, options).to([&] { return placeOf(path); });
      if (entry.type() == Entry::EntryType::directory) made_.push_back({path, attributesOf(entry, options)});
      if (options_.extracted) options_.extracted(entry, checksum);
    });
  }

  /// Last of all, since what is put into a directory changes its date and may need rights that it will not have; what
  /// lies deepest first, for the same reason.
  void applyDirectoryAttributes() {
    std::ranges::stable_sort(made_, std::ranges::greater(), &MadeDirectory::path);
    for (const auto& directory : made_) setDirectoryAttributes(placeOf(directory.path), directory.attributes);
  }

  const Archive& archive_;
  URL destination_;
  const UnzipOptions& options_;
  std::string root_;
  std::vector<Entry> entries_;  ///< directories, then files, then links
  std::optional<DirectoryTree> tree_;
  std::vector<MadeDirectory> made_;
};

/// A file system item on its way into a new archive.
class Packing {
 public:
  Packing(const URL& source, const ZipOptions& options) : source_(source), options_(options) {}

  void run(Archive& archive) const {
    const bool isDirectory = entryType(source_) == Entry::EntryType::directory;
    const bool keepsName = !isDirectory || options_.shouldKeepParent;
    const URL base = keepsName ? source_.deletingLastPathComponent() : source_;
    const std::string prefix = !isDirectory ? "" : keepsName ? source_.lastPathComponent() + "/" : "";
    const std::vector<std::string> paths =
        isDirectory ? FileManager().subpathsOfDirectory(source_.path()) : std::vector{source_.lastPathComponent()};
    const std::vector<std::int64_t> units =
        beginProgress(options_.progress, archive, paths.size(),
                      [&](std::size_t at) { return base.appendingPathComponent(prefix + paths[at]); });
    DirectoryTree tree(base);
    ArchiveBatch batch(archive);
    try {
      for (std::size_t at = 0; at < paths.size(); ++at) add(batch, tree, archive, base, prefix + paths[at], units[at]);
    } catch (...) {
      batch.commit();
      throw;
    }
    batch.commit();
    finish(options_.progress);
  }

 private:
  void add(ArchiveBatch& batch, DirectoryTree& tree, const Archive& archive, const URL& base, const std::string& path,
           std::int64_t units) const {
    withContext(path, archive.url(), [&] {
      const auto child = makeChild(options_.progress, units);
      const auto [parent, name] = divided(path);
      const ItemPlace place = {tree.directory(parent, DirectoryTree::Missing::fail), name, base.path() + "/" + path};
      batch.addItem(path, place, {.compressionMethod = options_.compressionMethod, .progress = child.get()});
    });
  }

  const URL& source_;
  const ZipOptions& options_;
};

}  // namespace

void zipItem(const URL& source, const URL& destination, const ZipOptions& options) {
  const FileManager files;
  if (!files.isReachableItem(source)) throw CocoaError::reading(ENOENT, source.path());
  if (files.isReachableItem(destination)) throw CocoaError::writing(EEXIST, destination.path());
  const auto archive = Archive::open(destination, {.accessMode = ArchiveAccessMode::create});
  if (!archive) {
    ArchiveError error(ArchiveError::Case::unwritableArchive, "the archive can't be made");
    error.addContext({}, destination.path());
    throw error;
  }
  Packing(source, options).run(*archive);
}

void addItems(Archive& archive, std::span<const ItemToAdd> items, const AddOptions& options) {
  const std::vector<std::int64_t> units = beginProgress(options.progress, archive, items.size(), [&](std::size_t at) {
    return items[at].base.appendingPathComponent(items[at].path);
  });
  ArchiveBatch batch(archive);
  for (std::size_t at = 0; at < items.size(); ++at) {
    const auto& [path, base] = items[at];
    withContext(path, archive.url(), [&, &path = path, &base = base] {
      const URL item = base.appendingPathComponent(path);
      const auto child = makeChild(options.progress, units[at]);
      batch.addItem(
          path, {AT_FDCWD, item.path(), item.path()},
          {.compressionMethod = options.compressionMethod, .bufferSize = options.bufferSize, .progress = child.get()});
    });
  }
  withContext({}, archive.url(), [&] { batch.commit(); });
}

void unzipItem(const URL& source, const URL& destination, const UnzipOptions& options) {
  if (!FileManager().isReachableItem(source)) throw CocoaError::reading(ENOENT, source.path());
  const auto archive = Archive::open(source, {.preferredEncoding = options.preferredEncoding});
  if (!archive) {
    ArchiveError error(ArchiveError::Case::unreadableArchive, "it is no ZIP archive, or can't be read");
    error.addContext({}, source.path());
    throw error;
  }
  Unpacking(*archive, destination, options).run();
}

bool isContained(const URL& url, const URL& directory) {
  const URL parent = URL::directoryURL(directory.path()).standardized();
  return url.standardized().absoluteString().starts_with(parent.absoluteString());
}

Entry::EntryType entryType(const URL& item) {
  return entryType(statusOf(item).st_mode);
}

std::uint32_t fileSize(const URL& item) {
  const struct stat status = statusOf(item);
  if (status.st_size > std::numeric_limits<std::uint32_t>::max()) throw CocoaError::reading(EFBIG, item.path());
  return static_cast<std::uint32_t>(status.st_size);
}

Date modificationDate(const URL& item) {
  const struct stat status = statusOf(item);
  const auto sinceEpoch =
      std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
  return Date(std::chrono::duration_cast<Date::duration>(sinceEpoch));
}

}  // namespace veltrik
