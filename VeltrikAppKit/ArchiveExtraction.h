#pragma once

#include <cstdint>
#include <functional>

#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveItem.h"

namespace veltrik {

struct EntryDataReader;
class EntryReader;

/// One entry on its way out of its archive. Arguments are borrowed.
class ArchiveExtraction {
 public:
  ArchiveExtraction(const Archive& archive, const Entry& entry, const ExtractOptions& options)
      : archive_(archive), entry_(entry), options_(options) {}

  /// Opens, and makes if need be, the directory that the item goes to.
  using PlaceOpener = std::function<ItemPlace()>;

  /// As `Archive::extract` says; returns the checksum.
  std::uint32_t toConsumer(const ByteConsumer& consumer) const;
  /// The same with a reader that is the calling thread's own.
  std::uint32_t toConsumer(const ByteConsumer& consumer, EntryDataReader& reader) const;
  /// Further readers of the entries and their data of an archive in a file, for another thread.
  static EntryReader entryReader(const Archive& archive);
  static EntryDataReader dataReader(const Archive& archive);
  /// Makes the item. A directory's attributes are left to the caller, who may have more to put into it.
  std::uint32_t to(const PlaceOpener& open) const;

 private:
  class Source;
  std::uint32_t toFile(int file) const;

  const Archive& archive_;
  const Entry& entry_;
  const ExtractOptions& options_;
};

/// What is applied to the item on disk.
platform::FileAttributes attributesOf(const Entry& entry, const ExtractOptions& options);

}  // namespace veltrik
