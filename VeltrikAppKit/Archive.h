#pragma once

#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Progress.h"
#include "Platform/Foundation/StringEncoding.h"
#include "Platform/Foundation/URL.h"
#include "VeltrikAppKit/ArchiveError.h"
#include "VeltrikAppKit/Data+Compression.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {

class ArchiveStream;
struct ArchiveState;

/// Bytes that are read or written at a time unless a caller asks for other steps.
inline constexpr std::uint32_t defaultReadChunkSize = 16384;
inline constexpr std::uint32_t defaultWriteChunkSize = defaultReadChunkSize;

enum class ArchiveAccessMode : unsigned {
  create,  ///< a new archive; then as `update`
  read,
  update,
};

struct ArchiveOptions {
  ArchiveAccessMode accessMode = ArchiveAccessMode::read;
  /// How names are decoded when entries are looked up by path; each entry's own way without it.
  std::optional<platform::StringEncoding> preferredEncoding = std::nullopt;
};

struct ExtractOptions {
  /// Bytes in a block, of compressed and of plain data; 0 means the default.
  std::uint32_t bufferSize = defaultReadChunkSize;
  /// Spares the computation of the checksum; the result is 0 then.
  bool skipCRC32 = false;
  /// Leaves the set-user-id and set-group-id bits of what is written to disk off.
  bool maskSpecialPermissions = false;
  /// Gets the total and counts bytes (1 for a directory); cancelling it ends the operation at the next block.
  platform::Progress* progress = nullptr;
};

struct AddOptions {
  /// For files; directories and links are always stored as they are.
  CompressionMethod compressionMethod = CompressionMethod::none;
  std::uint32_t bufferSize = defaultWriteChunkSize;
  platform::Progress* progress = nullptr;
};

/// An entry to be added whose data come from a provider.
struct NewEntry {
  Entry::EntryType type = Entry::EntryType::file;
  /// Bytes that the provider will give: a file's contents or a link's target.
  std::uint32_t uncompressedSize = 0;
  Date modificationDate{};
  /// Mode bits; the default for the type without them.
  std::optional<std::uint16_t> permissions = std::nullopt;
};

struct RemoveOptions {
  std::uint32_t bufferSize = defaultWriteChunkSize;
  platform::Progress* progress = nullptr;
};

/// A ZIP archive (APPNOTE.TXT; 32-bit, one disk, no encryption) in a file or in memory, and a range of its entries in
/// the order of its central directory:
///
///     if (const auto archive = Archive::open(url)) {
///       for (const Entry& entry : *archive) std::puts(entry.path().c_str());
///     }
///
/// Nothing that an archive says is trusted: what it claims never decides how much memory is taken. One thread at a
/// time; what an operation throws names entry, path and cause. Entries are values and stay valid after a change, but an
/// entry of before a removal may stand elsewhere now: look it up again.
class Archive {
 public:
  using AccessMode = ArchiveAccessMode;
  using ArchiveError = veltrik::ArchiveError;
  struct EndOfCentralDirectoryRecord;
  class Iterator;

  /// Opens the archive in a file, or makes one there, which fails when there is something already. Null when it can't
  /// be opened or is no archive.
  static std::unique_ptr<Archive> open(const platform::URL& url, ArchiveOptions options = {});
  /// An archive in memory: that of the given bytes, or a new one in front of them. Null when they are no archive.
  static std::unique_ptr<Archive> open(platform::Data data, ArchiveOptions options = {});
  ~Archive();
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;

  /// "memory:" for an archive in memory.
  const platform::URL& url() const;
  AccessMode accessMode() const;
  std::optional<platform::StringEncoding> preferredEncoding() const;
  const EndOfCentralDirectoryRecord& endOfCentralDirectoryRecord() const;
  /// The bytes of an archive in memory as they are now; nothing for one in a file.
  std::optional<platform::Data> data() const;

  /// Reads the entries lazily, one at a time; ends before the first one that is encrypted, needs ZIP64 or can't be
  /// read. The archive must not be changed meanwhile.
  Iterator begin() const;
  std::default_sentinel_t end() const { return {}; }

  /// The first entry with exactly this path, if any. Reads the central directory on until it is found; what was read is
  /// remembered for later look-ups, which take the same time in an archive of any size.
  std::optional<Entry> operator[](std::string_view path) const;

  /// Hands the entry's plain data to `consumer` in order and returns their CRC-32, which is *not* compared with
  /// `Entry::checksum()`. A directory yields one empty block, a link its target in one block. Throws `ArchiveError`
  /// (`invalidCompressionMethod`, `cancelledOperation`), `CompressionError`, `DataError`, and what the consumer throws.
  std::uint32_t extract(const Entry& entry, const ByteConsumer& consumer, const ExtractOptions& options = {}) const;
  /// Makes the file, directory or link at `destination`, with parents, permissions and modification time. A file or
  /// link never replaces anything; nothing is written through a link that stands at `destination`. A file appears under
  /// its name when it is complete, or with what there is of it when extraction fails. Throws `CocoaError` besides the
  /// above.
  std::uint32_t extract(const Entry& entry, const platform::URL& destination, const ExtractOptions& options = {}) const;

  /// Adds an entry behind the others, where the central directory was, and writes that anew. The provider is asked for
  /// the bytes of a file in order, for those of a link at once, and once for nothing for a directory. When anything
  /// goes wrong the archive is as before, byte for byte. Refuses, before anything is written, what the format can't
  /// hold: a name of over 65,535 bytes or not UTF-8
  /// (`invalidEntryPath`), a 65,536th entry (`unwritableArchive`), an offset of 4 GiB or more
  /// (`invalidStartOfCentralDirectoryOffset`).
  void addEntry(std::string_view path, const NewEntry& entry, const ByteProvider& provider,
                const AddOptions& options = {});
  /// Adds the file, directory or link (itself, not its target) that stands at `base` + `path`, under the name `path`.
  /// Throws `CocoaError` besides the above; `fileReadTooLarge` for 4 GiB and more. The archive itself is refused
  /// (`invalidEntryPath`).
  void addEntry(std::string_view path, const platform::URL& base, const AddOptions& options = {});

  /// Takes an entry out: the rest is written beside the archive, which is then replaced in one step. The archive is as
  /// before when anything goes wrong. Throws `invalidEntryPath` when the entry is not (or no longer) in it,
  /// `unwritableArchive` when there are entries that can't be read, which would be lost.
  void remove(const Entry& entry, const RemoveOptions& options = {});
  /// Takes several entries out at once: all of them or none.
  void remove(std::span<const Entry> entries, const RemoveOptions& options = {});

  /// Units of progress: 1 for a directory, else bytes.
  std::int64_t totalUnitCountForReading(const Entry& entry) const;
  /// The bytes that stay; 0 when the entry's size makes no sense.
  std::int64_t totalUnitCountForRemoving(const Entry& entry) const;
  /// -1 when there is no such item.
  std::int64_t totalUnitCountForAddingItem(const platform::URL& url) const;

 private:
  friend class ArchiveBatch;
  friend class ArchiveExtraction;
  friend class ArchiveRemoval;

  explicit Archive(std::unique_ptr<ArchiveState> state);
  static std::unique_ptr<Archive> openStream(platform::URL url, const ArchiveOptions& options,
                                             std::unique_ptr<ArchiveStream> stream);

  std::unique_ptr<ArchiveState> state_;
};

/// The archive's last record: where the central directory stands and how much it holds.
struct Archive::EndOfCentralDirectoryRecord {
  static constexpr std::uint32_t signature = 0x06054b50;
  static constexpr std::size_t fixedSize = 22;

  std::uint16_t numberOfDisk = 0;
  std::uint16_t numberOfDiskStart = 0;
  std::uint16_t totalNumberOfEntriesOnDisk = 0;
  std::uint16_t totalNumberOfEntriesInCentralDirectory = 0;
  std::uint32_t sizeOfCentralDirectory = 0;
  std::uint32_t offsetToStartOfCentralDirectory = 0;
  std::uint16_t zipFileCommentLength = 0;
  platform::Data zipFileCommentData;

  static std::optional<EndOfCentralDirectoryRecord> parse(platform::DataView fixed, const RecordProvider& provider);
  bool read(platform::DataView fixed, const RecordProvider& provider);
  platform::Data data() const;
};

/// Walks the entries once, from front to back; moves, but can't be copied.
class Archive::Iterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = Entry;
  using difference_type = std::ptrdiff_t;

  Iterator(Iterator&&) noexcept;
  Iterator& operator=(Iterator&&) noexcept;
  ~Iterator();

  /// Valid until the iterator goes on, which uses the entry's memory again.
  const Entry& operator*() const { return *entry_; }
  const Entry* operator->() const { return entry_; }
  Iterator& operator++();
  void operator++(int) { ++*this; }
  /// Goes on by `count` entries, as `++` that often would, but reads the places only of those it passes over: they may
  /// be of a kind that ends an iteration.
  void skip(std::size_t count);
  friend bool operator==(const Iterator& iterator, std::default_sentinel_t) { return iterator.entry_ == nullptr; }

 private:
  friend class Archive;
  struct Walk;
  explicit Iterator(std::unique_ptr<Walk> walk);

  std::unique_ptr<Walk> walk_;
  const Entry* entry_ = nullptr;
};

}  // namespace veltrik
