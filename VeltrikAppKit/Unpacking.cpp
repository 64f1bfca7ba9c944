#include "VeltrikAppKit/Unpacking.h"

#include <algorithm>
#include <memory>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/ArchiveExtraction.h"
#include "VeltrikAppKit/ArchiveState.h"
#include "VeltrikAppKit/TreeProgress.h"
#include "VeltrikAppKit/WorkAhead.h"

namespace veltrik {

using platform::CocoaError;
using platform::DataView;
using platform::URL;

namespace {

/// Larger files are unpacked in their turn, so that they can be watched and stopped on the way.
constexpr std::int64_t kLargestAhead = 1 << 20;
/// Read and written at a time where nobody watches.
constexpr std::uint32_t kAheadStep = 1 << 17;

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

}  // namespace

/// Writes files ahead of their turn, on one thread.
class Unpacking::Lane {
 public:
  explicit Lane(const Unpacking& work)
      : work_(work),
        options_(work.extractOptions()),
        tree_(work.destination_),
        entryReader_(ArchiveExtraction::entryReader(work.archive_)),
        dataReader_(ArchiveExtraction::dataReader(work.archive_)) {
    options_.bufferSize = kAheadStep;
  }

  /// Nothing for what is no small file in a directory that exists, and for one of another size than it says.
  std::optional<NamelessFile> prepare(const Place& at) {
    if (at.type != Entry::EntryType::file) return std::nullopt;
    const Entry* found = entryReader_.read(at.position);
    if (found == nullptr || found->uncompressedSize() > kLargestAhead) return std::nullopt;
    const Entry& entry = *found;
    const std::string path = work_.pathOf(entry);
    if (!isPlain(path)) return std::nullopt;
    const platform::FileAttributes attributes = attributesOf(entry, options_);
    const ItemPlace place = {tree_.directory(divided(path).first, DirectoryTree::Missing::fail), {}, path};
    NamelessFile made{.entry = entry, .file = openNameless(place.directory, attributes.posixPermissions & 0777)};
    if (!made.file) return std::nullopt;
    const auto size = static_cast<std::uint64_t>(entry.uncompressedSize());
    std::uint64_t written = 0;
    const auto write = [&](DataView block) {
      written += block.size();
      if (written > size) throw CompressionError(CompressionError::Case::corruptedData, "more data than it says");
      writeAll(made.file.get(), block);
    };
    made.checksum = ArchiveExtraction(work_.archive_, entry, options_).toConsumer(write, dataReader_);
    if (written != size) return std::nullopt;
    setAttributes(made.file.get(), place, attributes);
    return made;
  }

 private:
  const Unpacking& work_;
  ExtractOptions options_;
  DirectoryTree tree_;
  EntryReader entryReader_;
  EntryDataReader dataReader_;
};

Unpacking::Unpacking(const Archive& archive, const URL& destination, const UnzipOptions& options)
    : archive_(archive),
      destination_(URL::directoryURL(destination.path()).standardized()),
      options_(options),
      root_(destination_.path()),
      reader_(ArchiveExtraction::entryReader(archive)) {
  forEachEntry(reader_, archive.endOfCentralDirectoryRecord(), [this](const Entry& entry, std::uint64_t position) {
    entries_.push_back({position, entry.type()});
    totalUnitCount_ += archive_.totalUnitCountForReading(entry);
    return true;
  });
  const auto is = [](Entry::EntryType type) { return [type](const Place& entry) { return entry.type == type; }; };
  const auto others = std::ranges::stable_partition(entries_, is(Entry::EntryType::directory));
  std::ranges::stable_partition(others, is(Entry::EntryType::file));
}

void Unpacking::run() {
  if (options_.progress != nullptr) options_.progress->setTotalUnitCount(totalUnitCount_);
  if (entries_.empty()) return finish(options_.progress);
  platform::FileManager().createDirectory(destination_, true);
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

std::string Unpacking::pathOf(const Entry& entry) const {
  return options_.preferredEncoding ? entry.path(*options_.preferredEncoding) : entry.path();
}

std::string Unpacking::relativePath(const std::string& entryPath) const {
  if (isPlain(entryPath)) return entryPath.substr(0, entryPath.size() - (entryPath.ends_with('/') ? 1 : 0));
  const URL location = destination_.appendingPathComponent(entryPath);
  if (!isContained(location, destination_) || entryPath.find('\0') != std::string::npos) {
    throw CocoaError(CocoaError::Code::fileReadInvalidFileName, location.path(), "it leads outside the destination");
  }
  const std::string path = location.standardized().path();
  return path.size() > root_.size() ? path.substr(root_.size() + (root_ == "/" ? 0 : 1)) : std::string();
}

ItemPlace Unpacking::placeOf(const std::string& path) {
  const auto [parent, name] = divided(path);
  return {tree_->directory(parent, DirectoryTree::Missing::make), std::string(name.empty() ? "." : name),
          root_ + "/" + path};
}

ExtractOptions Unpacking::extractOptions() const {
  return {.skipCRC32 = options_.skipCRC32, .maskSpecialPermissions = options_.maskSpecialPermissions};
}

void Unpacking::unpackAll() {
  WorkAhead<NamelessFile> ahead(entries_.size(), [this] {
    const auto lane = std::make_shared<Lane>(*this);
    return [this, lane](std::size_t at) { return lane->prepare(entries_[at]); };
  });
  for (std::size_t at = 0; at < entries_.size(); ++at) {
    if (auto ready = ahead.take(at)) {
      unpack(ready->entry, &*ready);
    } else if (const Entry* entry = reader_.read(entries_[at].position)) {
      unpack(*entry, nullptr);
    } else {
      // It was read when the entries were counted, but reading may fail at any time.
      withContext({}, archive_.url(),
                  [] { throw DataError(DataError::Case::unreadableFile, "an entry can't be read any more"); });
    }
  }
}

void Unpacking::unpack(const Entry& entry, NamelessFile* ready) {
  const std::string entryPath = pathOf(entry);
  withContext(entryPath, archive_.url(), [&] {
    const std::string path = relativePath(entryPath);
    const bool isReady = ready != nullptr && publish(entry, path, *ready);
    const std::uint32_t checksum = isReady ? ready->checksum : extract(entry, path);
    if (entry.type() == Entry::EntryType::directory) made_.push_back({path, attributesOf(entry, extractOptions())});
    if (options_.extracted) options_.extracted(entry, checksum);
  });
}

bool Unpacking::publish(const Entry& entry, const std::string& path, NamelessFile& ready) {
  if (options_.progress != nullptr && options_.progress->isCancelled()) return false;
  const ItemPlace place = placeOf(path);
  if (!giveName(ready.file.get(), place)) return false;
  if (!ready.file.close()) throw CocoaError::writing(errno, place.path);
  if (options_.progress != nullptr) {
    options_.progress->addCompletedUnitCount(archive_.totalUnitCountForReading(entry));
  }
  return true;
}

std::uint32_t Unpacking::extract(const Entry& entry, const std::string& path) {
  const auto child = makeChild(options_.progress, archive_.totalUnitCountForReading(entry));
  ExtractOptions options = extractOptions();
  options.progress = child.get();
  return ArchiveExtraction(archive_, entry, options).to([&] { return placeOf(path); });
}

void Unpacking::applyDirectoryAttributes() {
  // Last of all, since what is put into a directory changes its date and may need rights that it will not have; what
  // lies deepest first, for the same reason.
  std::ranges::stable_sort(made_, std::ranges::greater(), &MadeDirectory::path);
  for (const auto& directory : made_) setDirectoryAttributes(placeOf(directory.path), directory.attributes);
}

}  // namespace veltrik
