#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Progress.h"
#include "Platform/Foundation/StringEncoding.h"
#include "Platform/Foundation/URL.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {

struct ZipOptions {
  /// Puts the name of the source directory in front of every entry's path.
  bool shouldKeepParent = true;
  CompressionMethod compressionMethod = CompressionMethod::none;
  /// Gets the total (bytes, and 1 for each directory); cancelling it ends the operation.
  platform::Progress* progress = nullptr;
};

struct UnzipOptions {
  bool skipCRC32 = false;
  /// Leaves set-user-id and set-group-id bits off.
  bool maskSpecialPermissions = false;
  platform::Progress* progress = nullptr;
  /// How names are decoded; each entry's own way without it.
  std::optional<platform::StringEncoding> preferredEncoding = std::nullopt;
  /// Told about each entry once it is unpacked, with the checksum of its data (0 with `skipCRC32`), for who wants to
  /// compare it with the entry's. What it throws ends the operation.
  std::function<void(const Entry& entry, std::uint32_t checksum)> extracted = nullptr;
};

/// A file, directory or link to be added: what stands at `base` + `path`, under the name `path`.
struct ItemToAdd {
  std::string path;
  platform::URL base;
};

/// Packs a file, a link (itself) or everything in a directory into a new archive at `destination`, names sorted; there
/// is no entry for the source directory itself. What fails ends it, and the archive keeps the entries that were
/// complete. Throws `CocoaError`
/// (`fileReadNoSuchFile`; `fileWriteFileExists` before anything is written), `ArchiveError` (`unwritableArchive`;
/// `invalidEntryPath` when the archive would have to hold itself), and what `Archive::addEntry` throws. Any thread.
void zipItem(const platform::URL& source, const platform::URL& destination, const ZipOptions& options = {});

/// Adds items in order, as `Archive::addEntry` does: all of them, or, when anything goes wrong, none. The progress gets
/// the total of all.
void addItems(Archive& archive, std::span<const ItemToAdd> items, const AddOptions& options = {});

/// Unpacks every entry into a directory: directories first, then files, then links. Never writes outside `destination`,
/// be it by the entries' names (`fileReadInvalidFileName`) or by links on disk below it, and never over something that
/// exists. What fails ends it; what was written before stays. Checksums are not compared. When it returns, the progress
/// is finished. Throws `CocoaError` (`fileReadNoSuchFile`…), `ArchiveError` (`unreadableArchive`), and what
/// `Archive::extract` throws. Any thread.
void unzipItem(const platform::URL& source, const platform::URL& destination, const UnzipOptions& options = {});

/// Whether `url` lies in `directory`, by their texts once both are standardised.
bool isContained(const platform::URL& url, const platform::URL& directory);

// What the file system says about an item; a final link is not followed. All throw `CocoaError` `fileReadNoSuchFile`
// for none.
Entry::EntryType entryType(const platform::URL& item);
/// Throws `fileReadTooLarge` for 4 GiB and more, which the format can't hold.
std::uint32_t fileSize(const platform::URL& item);
Date modificationDate(const platform::URL& item);

}  // namespace veltrik
