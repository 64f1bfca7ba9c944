#include "VeltrikAppKit/Archive.h"

#include <algorithm>
#include <limits>

#include "Platform/Foundation/ByteCursor.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "VeltrikAppKit/ArchiveItem.h"
#include "VeltrikAppKit/ArchiveState.h"

namespace veltrik {

namespace {

using EndRecord = Archive::EndOfCentralDirectoryRecord;

/// The end record begins no further from the archive's end than this: its own size and the longest comment, and a
/// little.
constexpr std::uint64_t kLongestDistance = 65999;
/// Where it begins nearly always: no comment, or a short one.
constexpr std::uint64_t kUsualDistance = 512;
constexpr std::size_t kDataWindow = 65536;

const char* streamMode(ArchiveAccessMode mode) {
  return mode == ArchiveAccessMode::read ? "rb" : "rb+";
}

const char* memoryMode(ArchiveAccessMode mode) {
  return mode == ArchiveAccessMode::create ? "wb+" : streamMode(mode);
}

/// How far from the end of `bytes` the last end record signature stands, 22 bytes at least.
std::optional<std::size_t> signatureDistance(platform::DataView bytes) {
  for (std::size_t distance = EndRecord::fixedSize; distance <= bytes.size(); ++distance) {
    platform::ByteCursor cursor(bytes.last(distance));
    if (*cursor.u32le() == EndRecord::signature) return distance;
  }
  return std::nullopt;
}

}  // namespace

EntryDataReader::EntryDataReader(const ArchiveStream& stream) : window(stream, kDataWindow) {}

ArchiveState::ArchiveState(platform::URL location, const ArchiveOptions& options, std::unique_ptr<ArchiveStream> opened)
    : url(std::move(location)),
      accessMode(options.accessMode),
      preferredEncoding(options.preferredEncoding),
      stream(std::move(opened)),
      reader(*stream) {}

bool ArchiveState::findEndRecord() {
  const std::uint64_t size = stream->size();
  for (const std::uint64_t reach : {kUsualDistance, kLongestDistance}) {
    platform::Data bytes(std::min(size, reach));
    bytes.resize(stream->readAt(size - bytes.size(), bytes));
    if (const auto distance = signatureDistance(bytes)) {
      endRecordOffset = size - *distance;
      ReadWindow window(*stream, EndRecord::fixedSize);
      return readRecord(window, endRecordOffset, endRecord);
    }
  }
  return false;
}

std::string ArchiveState::pathOf(const Entry& entry) const {
  return preferredEncoding ? entry.path(*preferredEncoding) : entry.path();
}

ArchiveState::Lookup::Lookup(const ArchiveState& state)
    : state_(state),
      next_(*state.stream),
      earlier_(*state.stream),
      index_(state.endRecord.totalNumberOfEntriesInCentralDirectory),
      position_(state.endRecord.offsetToStartOfCentralDirectory),
      entriesLeft_(state.endRecord.totalNumberOfEntriesInCentralDirectory) {}

std::optional<Entry> ArchiveState::Lookup::find(std::string_view path) {
  std::optional<Entry> result;
  index_.find(path, [&](std::uint64_t position) {
    if (const Entry* entry = readEarlier(position, path)) result = *entry;
    return result.has_value();
  });
  while (!result && entriesLeft_ > 0) {
    const Entry* entry = next_.read(position_);
    if (entry == nullptr) {
      entriesLeft_ = 0;
      break;
    }
    const std::string entryPath = state_.pathOf(*entry);
    index_.insert(entryPath, position_,
                  [&](std::uint64_t position) { return readEarlier(position, entryPath) != nullptr; });
    if (entryPath == path) result = *entry;
    position_ = next_.next();
    --entriesLeft_;
  }
  return result;
}

const Entry* ArchiveState::Lookup::readEarlier(std::uint64_t position, std::string_view path) {
  const Entry* entry = earlier_.read(position);
  return entry != nullptr && state_.pathOf(*entry) == path ? entry : nullptr;
}

void ArchiveState::streamChanged(std::unique_ptr<ArchiveStream> replacement) {
  if (replacement) stream = std::move(replacement);
  reader.window.reset(*stream);
  lookup.reset();
}

Archive::Archive(std::unique_ptr<ArchiveState> state) : state_(std::move(state)) {}
Archive::~Archive() = default;

std::unique_ptr<Archive> Archive::openStream(platform::URL url, const ArchiveOptions& options,
                                             std::unique_ptr<ArchiveStream> stream) {
  if (!stream) return nullptr;
  auto state = std::make_unique<ArchiveState>(std::move(url), options, std::move(stream));
  if (!state->findEndRecord()) return nullptr;
  return std::unique_ptr<Archive>(new Archive(std::move(state)));
}

std::unique_ptr<Archive> Archive::open(const platform::URL& url, ArchiveOptions options) {
  try {
    if (!url.isFileURL()) return nullptr;
    if (options.accessMode == AccessMode::create) {
      platform::FileManager().writeWithoutOverwriting(EndOfCentralDirectoryRecord().data(), url);
    }
    return openStream(url, options, ArchiveStream::openFile(url.path(), streamMode(options.accessMode)));
  } catch (const platform::CocoaError&) {
    return nullptr;
  } catch (const DataError&) {
    return nullptr;
  }
}

std::unique_ptr<Archive> Archive::open(platform::Data data, ArchiveOptions options) {
  try {
    auto stream = ArchiveStream::openMemory(MemoryFile::make(std::move(data)), memoryMode(options.accessMode));
    if (stream && options.accessMode == AccessMode::create) stream->writeAt(0, EndOfCentralDirectoryRecord().data());
    return openStream(*platform::URL::fromString("memory:"), options, std::move(stream));
  } catch (const DataError&) {
    return nullptr;
  }
}

const platform::URL& Archive::url() const {
  return state_->url;
}
Archive::AccessMode Archive::accessMode() const {
  return state_->accessMode;
}
std::optional<platform::StringEncoding> Archive::preferredEncoding() const {
  return state_->preferredEncoding;
}
const EndRecord& Archive::endOfCentralDirectoryRecord() const {
  return state_->endRecord;
}

std::optional<platform::Data> Archive::data() const {
  const MemoryFile* memory = state_->stream->memoryFile();
  return memory != nullptr ? std::optional(memory->data()) : std::nullopt;
}

/// Where an iterator stands.
struct Archive::Iterator::Walk {
  EntryReader reader;
  std::uint64_t position;
  std::size_t entriesLeft;
};

Archive::Iterator::Iterator(std::unique_ptr<Walk> walk) : walk_(std::move(walk)) {
  ++*this;
}
Archive::Iterator::Iterator(Iterator&&) noexcept = default;
Archive::Iterator& Archive::Iterator::operator=(Iterator&&) noexcept = default;
Archive::Iterator::~Iterator() = default;

Archive::Iterator& Archive::Iterator::operator++() {
  entry_ = walk_->entriesLeft > 0 ? walk_->reader.read(walk_->position) : nullptr;
  walk_->entriesLeft = entry_ != nullptr ? walk_->entriesLeft - 1 : 0;
  walk_->position = walk_->reader.next();
  return *this;
}

void Archive::Iterator::skip(std::size_t count) {
  if (count == 0) return;
  while (--count > 0 && walk_->entriesLeft > 0) {
    walk_->entriesLeft = walk_->reader.pass(walk_->position) ? walk_->entriesLeft - 1 : 0;
    walk_->position = walk_->reader.next();
  }
  ++*this;
}

Archive::Iterator Archive::begin() const {
  const EndRecord& record = state_->endRecord;
  return Iterator(std::unique_ptr<Iterator::Walk>(new Iterator::Walk{EntryReader(*state_->stream),
                                                                     record.offsetToStartOfCentralDirectory,
                                                                     record.totalNumberOfEntriesInCentralDirectory}));
}

std::optional<Entry> Archive::operator[](std::string_view path) const {
  if (!state_->lookup) state_->lookup.emplace(*state_);
  return state_->lookup->find(path);
}

std::int64_t Archive::totalUnitCountForReading(const Entry& entry) const {
  return entry.type() == Entry::EntryType::directory ? 1 : entry.uncompressedSize();
}

std::int64_t Archive::totalUnitCountForRemoving(const Entry& entry) const {
  const auto directoryStart = static_cast<std::int64_t>(state_->endRecord.offsetToStartOfCentralDirectory);
  return std::max<std::int64_t>(directoryStart - static_cast<std::int64_t>(entry.localRecordLength()), 0);
}

std::int64_t Archive::totalUnitCountForAddingItem(const platform::URL& url) const {
  try {
    const struct stat status = statusOf(url);
    if (S_ISDIR(status.st_mode)) return 1;
    return status.st_size > std::numeric_limits<std::uint32_t>::max() ? -1 : status.st_size;
  } catch (const platform::CocoaError&) {
    return -1;
  }
}

}  // namespace veltrik
