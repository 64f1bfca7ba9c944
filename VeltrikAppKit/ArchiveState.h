#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveReading.h"
#include "VeltrikAppKit/ArchiveStream.h"
#include "VeltrikAppKit/DeflateStream.h"

namespace veltrik {

/// Reads entries' data: with a stretch of the archive's bytes and an engine, which entries share. One thread's own.
struct EntryDataReader {
  explicit EntryDataReader(const ArchiveStream& stream);

  ReadWindow window;
  DeflateStream decompressor{DeflateDirection::decompress};
};

/// What an open archive holds. Engines and buffers live as long as the archive, so that entries share them.
struct ArchiveState {
  ArchiveState(platform::URL location, const ArchiveOptions& options, std::unique_ptr<ArchiveStream> opened);

  /// Finds the end record; false when there is none.
  bool findEndRecord();
  /// How an entry's path is compared: in the preferred encoding, if there is one.
  std::string pathOf(const Entry& entry) const;
  /// Makes `replacement` the archive's stream, or just forgets what was read of the old bytes.
  void streamChanged(std::unique_ptr<ArchiveStream> replacement = nullptr);

  platform::URL url;
  ArchiveAccessMode accessMode;
  std::optional<platform::StringEncoding> preferredEncoding;
  std::unique_ptr<ArchiveStream> stream;
  Archive::EndOfCentralDirectoryRecord endRecord;
  std::uint64_t endRecordOffset = 0;

  EntryDataReader reader;
  DeflateStream compressor{DeflateDirection::compress};

  /// The archive's bytes from its central directory on, kept between additions.
  std::optional<platform::Data> tail;
  /// Finds entries by path. Reads on only until the one that is asked for, and remembers what it passed.
  class Lookup {
   public:
    explicit Lookup(const ArchiveState& state);
    std::optional<Entry> find(std::string_view path);

   private:
    /// The entry at this place if it has this path, else null.
    const Entry* readEarlier(std::uint64_t position, std::string_view path);

    const ArchiveState& state_;
    EntryReader next_;
    EntryReader earlier_;  ///< another one, so that neither loses its place
    PathIndex index_;      ///< of what stands in front of `position_`
    std::uint64_t position_;
    unsigned entriesLeft_;
  };
  std::optional<Lookup> lookup;
};

/// Runs `work`, and lets what it throws say which entry and archive it was about.
template <class Work>
auto withContext(std::string_view entry, const platform::URL& archive, const Work& work) {
  try {
    return work();
  } catch (ZIPError& error) {
    error.addContext(entry, archive.isFileURL() ? archive.path() : archive.absoluteString());
    throw;
  } catch (platform::CocoaError& error) {
    error.setEntry(entry);
    throw;
  }
}

/// The bytes at a time that an option asks for.
inline std::size_t chunkSize(std::uint32_t bufferSize) {
  return bufferSize == 0 ? defaultReadChunkSize : bufferSize;
}

inline void throwIfCancelled(const platform::Progress* progress) {
  if (progress != nullptr && progress->isCancelled()) throw ArchiveError(ArchiveError::Case::cancelledOperation);
}

}  // namespace veltrik
