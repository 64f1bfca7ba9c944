#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Progress.h"
#include "Platform/Foundation/StringEncoding.h"
#include "Platform/Foundation/URL.h"
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
  /// Leaves set-user-id, set-group-id and sticky bits off.
  bool maskSpecialPermissions = false;
  platform::Progress* progress = nullptr;
  /// How names are decoded; each entry's own way without it.
  std::optional<platform::StringEncoding> preferredEncoding = std::nullopt;
};

/// Packs a file, a link (itself) or everything in a directory into a new archive at `destination`, names sorted; there
/// is no entry for the source directory itself. What fails ends it, and the archive keeps the entries that were
/// complete. Throws `CocoaError`
/// (`fileReadNoSuchFile`; `fileWriteFileExists` before anything is written), `ArchiveError` (`unwritableArchive`;
/// `invalidEntryPath` when the archive would have to hold itself), and what `Archive::addEntry` throws. Any thread.
void zipItem(const platform::URL& source, const platform::URL& destination, const ZipOptions& options = {});

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
