#include "VeltrikAppKit/Packing.h"

#include <sys/stat.h>

#include <limits>
#include <memory>

#include "VeltrikAppKit/TreeProgress.h"
#include "VeltrikAppKit/WorkAhead.h"

namespace veltrik {

namespace {

using platform::DirectoryItem;
using platform::URL;

/// Larger files are packed in their turn, so that the memory that is held stays small.
constexpr std::uint64_t kLargestAhead = 1 << 17;

/// As `Archive::totalUnitCountForAddingItem` has it; 0 for what is too large to be added.
std::int64_t unitsOf(const DirectoryItem& item) {
  if (S_ISDIR(item.mode)) return 1;
  return item.size > std::numeric_limits<std::uint32_t>::max() ? 0 : item.size;
}

}  // namespace

/// Reads and compresses files ahead of their turn, on one thread.
class Packing::Lane {
 public:
  Lane(const Packing& work, const ArchiveBatch& batch) : work_(work), batch_(batch), tree_(work.base_) {}

  std::optional<ArchiveBatch::PreparedFile> prepare(const DirectoryItem& item) {
    if (!S_ISREG(item.mode)) return std::nullopt;
    return batch_.prepare(work_.placeOf(item, tree_), kLargestAhead, work_.options_.compressionMethod, compressor_);
  }

 private:
  const Packing& work_;
  const ArchiveBatch& batch_;
  DirectoryTree tree_;
  DeflateStream compressor_{DeflateDirection::compress};
};

Packing::Packing(const URL& source, const ZipOptions& options) : options_(options), base_(source) {
  const platform::FileManager files;
  const struct stat status = statusOf(source);
  const bool isDirectory = S_ISDIR(status.st_mode);
  if (isDirectory) {
    items_ = files.itemsBelowDirectory(source.path());
  } else {
    items_ = {{source.lastPathComponent(), status.st_mode, status.st_size}};
  }
  if (!isDirectory || options.shouldKeepParent) base_ = source.deletingLastPathComponent();
  if (isDirectory && options.shouldKeepParent) {
    for (DirectoryItem& item : items_) item.path.insert(0, source.lastPathComponent() + "/");
  }
  basePath_ = base_.path();
  if (!basePath_.ends_with('/')) basePath_.push_back('/');
}

void Packing::run(Archive& archive) const {
  beginProgress();
  ArchiveBatch batch(archive);
  std::size_t nameBytes = 0;
  for (const DirectoryItem& item : items_) nameBytes += item.path.size() + (S_ISDIR(item.mode) ? 1 : 0);
  batch.reserve(items_.size(), nameBytes);
  DirectoryTree tree(base_);
  WorkAhead<ArchiveBatch::PreparedFile> ahead(items_.size(), [&] {
    const auto lane = std::make_shared<Lane>(*this, batch);
    return [this, lane](std::size_t at) { return lane->prepare(items_[at]); };
  });
  try {
    for (std::size_t at = 0; at < items_.size(); ++at) {
      withContext(items_[at].path, archive.url(), [&] { add(batch, items_[at], tree, ahead.take(at)); });
    }
  } catch (...) {
    batch.commit();
    throw;
  }
  batch.commit();
  finish(options_.progress);
}

void Packing::beginProgress() const {
  if (options_.progress == nullptr) return;
  std::int64_t total = 0;
  for (const DirectoryItem& item : items_) total += unitsOf(item);
  options_.progress->setTotalUnitCount(total);
}

void Packing::add(ArchiveBatch& batch, const DirectoryItem& item, DirectoryTree& tree,
                  const std::optional<ArchiveBatch::PreparedFile>& ready) const {
  platform::Progress* progress = options_.progress;
  if (ready && (progress == nullptr || !progress->isCancelled())) {
    batch.addPrepared(item.path, *ready);
    if (progress != nullptr) progress->addCompletedUnitCount(unitsOf(item));
    return;
  }
  const auto child = makeChild(progress, unitsOf(item));
  batch.addItem(item.path, placeOf(item, tree),
                {.compressionMethod = options_.compressionMethod, .progress = child.get()});
}

ItemPlace Packing::placeOf(const DirectoryItem& item, DirectoryTree& tree) const {
  const auto [parent, name] = divided(item.path);
  return {tree.directory(parent, DirectoryTree::Missing::fail), std::string(name), basePath_ + item.path};
}

}  // namespace veltrik
