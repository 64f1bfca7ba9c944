#include "VeltrikAppKit/FileManager+ZIP.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveBatch.h"
#include "VeltrikAppKit/Packing.h"
#include "VeltrikAppKit/TreeProgress.h"
#include "VeltrikAppKit/Unpacking.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::FileManager;
using platform::Progress;
using platform::URL;

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
