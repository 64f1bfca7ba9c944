#pragma once

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
  platform::DataView bytes(std::uint64_t offset, std::size_t count);
  /// Forgets what was read, as after a change; `stream` may be another one.
  void reset(const ArchiveStream& stream);

 private:
  const ArchiveStream* stream_;
  std::size_t capacity_;
  platform::Data buffer_;
  std::uint64_t start_ = 0;
  std::size_t size_ = 0;
};

/// A record of any type, or nothing when it does not parse or can't be read.
template <class Record>
std::optional<Record> readRecord(ReadWindow& window, std::uint64_t offset) {
  try {
    // The variable part may move the window and with it the fixed part's bytes, so those are parsed first.
    return Record::parse(window.bytes(offset, Record::fixedSize),
                         [&](std::size_t count) { return window.bytes(offset + Record::fixedSize, count); });
  } catch (const DataError&) {
    return std::nullopt;
  }
}

/// Reads entries by their place in the central directory.
class EntryReader {
 public:
  explicit EntryReader(const ArchiveStream& stream);

  struct Found {
    Entry entry;
    std::uint64_t next;  ///< where the next structure stands
  };
  /// Nothing when a record is damaged or the entry is of a kind that is refused.
  std::optional<Found> read(std::uint64_t directoryPosition);

 private:
  ReadWindow directory_;
  ReadWindow records_;
};

/// Calls `visit` with each entry and its place in the central directory, in order; stops where the entries end or
/// `visit` returns false.
template <class Visit>
void forEachEntry(EntryReader& reader, const Archive::EndOfCentralDirectoryRecord& end, const Visit& visit) {
  std::uint64_t position = end.offsetToStartOfCentralDirectory;
  for (unsigned left = end.totalNumberOfEntriesInCentralDirectory; left > 0; --left) {
    const auto found = reader.read(position);
    if (!found || !visit(found->entry, position)) return;
    position = found->next;
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
