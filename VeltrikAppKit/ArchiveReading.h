#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveStream.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {

/// A stretch of an archive's bytes, kept so that places close to each other cost one read. Memory is bounded by the
/// capacity or what is asked for at once, never by what the archive says.
class ReadWindow {
 public:
  ReadWindow(const ArchiveStream& stream, std::size_t capacity) : stream_(&stream), capacity_(capacity) {}

  /// The bytes at `offset`, fewer than `count` at the archive's end only. Valid until the next call. Throws
  /// `DataError`.
  platform::DataView bytes(std::uint64_t offset, std::size_t count) {
    const bool isInside = offset >= start_ && offset - start_ <= size_ && count <= size_ - (offset - start_);
    if (!isInside) load(offset, count);
    const auto at = static_cast<std::size_t>(offset - start_);
    return platform::DataView(buffer_).subspan(at, std::min(count, size_ - at));
  }
  /// Forgets what was read, as after a change; `stream` may be another one.
  void reset(const ArchiveStream& stream);

 private:
  /// Makes the window begin at `offset`.
  void load(std::uint64_t offset, std::size_t count);

  const ArchiveStream* stream_;
  std::size_t capacity_;
  platform::Data buffer_;
  std::uint64_t start_ = 0;
  std::size_t size_ = 0;
};

/// Makes `record`, of any type, the one at `offset`; false when it does not parse or can't be read.
template <class Record>
bool readRecord(ReadWindow& window, std::uint64_t offset, Record& record) {
  try {
    // The variable part may move the window and with it the fixed part's bytes, so those are parsed first.
    return record.read(window.bytes(offset, Record::fixedSize),
                       [&](std::size_t count) { return window.bytes(offset + Record::fixedSize, count); });
  } catch (const DataError&) {
    return false;
  }
}

/// Reads entries by their place in the central directory.
class EntryReader {
 public:
  explicit EntryReader(const ArchiveStream& stream);

  /// The entry whose structure stands at this place; null when a record is damaged or the entry is of a kind that is
  /// refused. Valid until the next call: one entry after the other takes the same memory.
  const Entry* read(std::uint64_t directoryPosition);
  /// Reads no more than where the structure at this place ends; false when it is damaged.
  bool pass(std::uint64_t directoryPosition);
  /// Where the structure behind the last one stands.
  std::uint64_t next() const { return next_; }

 private:
  ReadWindow directory_;
  ReadWindow records_;
  Entry entry_;
  std::uint64_t next_ = 0;
};

/// Calls `visit` with each entry and its place in the central directory, in order; stops where the entries end or
/// `visit` returns false.
template <class Visit>
void forEachEntry(EntryReader& reader, const Archive::EndOfCentralDirectoryRecord& end, const Visit& visit) {
  std::uint64_t position = end.offsetToStartOfCentralDirectory;
  for (unsigned left = end.totalNumberOfEntriesInCentralDirectory; left > 0; --left) {
    const Entry* entry = reader.read(position);
    if (entry == nullptr || !visit(*entry, position)) return;
    position = reader.next();
  }
}

/// Finds entries by path in constant time: hashes and places only, so that a large archive's names are not held twice.
class PathIndex {
 public:
  explicit PathIndex(std::size_t entryCount);

  /// `isSamePath` tells whether the entry at a place has this path too; such an entry stays the one that is found, so
  /// that many entries of one name cost no more than others.
  template <class IsSamePath>
  void insert(std::string_view path, std::uint64_t directoryPosition, const IsSamePath& isSamePath) {
    bool isTaken = false;
    find(path, [&](std::uint64_t position) { return isTaken = isSamePath(position); });
    if (!isTaken) insertNew(path, directoryPosition);
  }
  /// Calls `matches` with the place of each candidate, in order of insertion, until it returns true.
  template <class Matches>
  void find(std::string_view path, const Matches& matches) const {
    const std::uint64_t hash = hashOf(path);
    for (std::size_t at = hash & mask_; slots_[at].isUsed; at = (at + 1) & mask_) {
      if (slots_[at].hash == hash && matches(slots_[at].position)) return;
    }
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint64_t position : 63 = 0;
    std::uint64_t isUsed : 1 = 0;
  };
  void insertNew(std::string_view path, std::uint64_t directoryPosition);
  static std::uint64_t hashOf(std::string_view path) { return std::hash<std::string_view>()(path); }

  std::vector<Slot> slots_;
  std::size_t mask_;
};

}  // namespace veltrik
