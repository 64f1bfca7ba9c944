#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveItem.h"
#include "VeltrikAppKit/ArchiveState.h"
#include "VeltrikAppKit/ArchiveTail.h"

namespace veltrik {

/// Adds entries to an archive and writes its central directory once, at the end. Without `commit` the archive stays as
/// it was.
class ArchiveBatch {
 public:
  /// Throws `ArchiveError` `unwritableArchive` when the archive is open for reading, or its directory is not what its
  /// end record says.
  explicit ArchiveBatch(Archive& archive);
  ~ArchiveBatch();
  ArchiveBatch(const ArchiveBatch&) = delete;
  ArchiveBatch& operator=(const ArchiveBatch&) = delete;

  /// Room for the structures of entries with names of so many bytes in all, so that those are not moved as they grow.
  void reserve(std::size_t count, std::size_t nameBytes);
  /// As `Archive::addEntry` says. After a failure the entries added before are still there.
  void add(std::string_view path, const NewEntry& entry, const ByteProvider& provider, const AddOptions& options);
  /// Adds the item at a place; `item` says what it is.
  void addItem(std::string_view path, const ItemPlace& place, const AddOptions& options);
  /// A file's record but for its place in the archive.
  struct PreparedFile {
    NewEntry entry;
    CompressionMethod method = CompressionMethod::none;
    std::uint32_t crc = 0;
    platform::Data data;
  };
  /// Reads a file of up to `largest` bytes, and compresses it where that is wanted. Nothing for what is no such file;
  /// throws when it can't be read. `compressor` is the calling thread's own. Any thread.
  std::optional<PreparedFile> prepare(const ItemPlace& place, std::uint64_t largest, CompressionMethod method,
                                      DeflateStream& compressor) const;
  /// Adds such a file as `addItem` with blocks of the default size would.
  void addPrepared(std::string_view path, const PreparedFile& file);
  /// Writes the new directory. Throws when it can't; then the archive is as it was before the batch.
  void commit();

 private:
  struct Written {
    std::uint32_t crc = 0;
    std::uint64_t size = 0;
  };
  void undo() noexcept;
  void appendStructure(const Entry::LocalFileHeader& header, const NewEntry& entry, std::uint64_t offset);
  void requireRoom(std::string_view path, const NewEntry& entry, CompressionMethod method) const;
  void requireOffset(std::uint64_t offset) const;
  /// Runs `write`; when it throws, what it wrote is taken back.
  template <class Write>
  void rewindingOnFailure(const Write& write);
  void writeRecord(std::string_view path, const NewEntry& entry, CompressionMethod method, const ByteProvider& provider,
                   const AddOptions& options);
  Written writeData(const NewEntry& entry, CompressionMethod method, const ByteProvider& provider,
                    const AddOptions& options);
  Written writeStored(const NewEntry& entry, const ByteProvider& provider, const AddOptions& options);
  Written writeDeflated(const NewEntry& entry, const ByteProvider& provider, const AddOptions& options);
  Written writeLink(const NewEntry& entry, const ByteProvider& provider);
  void addFile(std::string_view path, int file, const NewEntry& entry, const AddOptions& options);
  void addLink(std::string_view path, const ItemPlace& place, const AddOptions& options);

  ArchiveState& state_;
  TailWriter writer_;
  Archive::EndOfCentralDirectoryRecord endRecord_;  ///< as it will be
  platform::Data newStructures_;
  std::optional<std::pair<dev_t, ino_t>> archiveFile_;
  bool isOver_ = false;
};

}  // namespace veltrik
