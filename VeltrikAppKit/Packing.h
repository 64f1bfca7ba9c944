#pragma once

#include <string>
#include <vector>

#include "Platform/Foundation/FileManager.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveBatch.h"
#include "VeltrikAppKit/ArchiveItem.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {

/// A file system item on its way into a new archive, as `zipItem` says. Small files are read and compressed ahead of
/// their turn. Arguments are borrowed.
class Packing {
 public:
  Packing(const platform::URL& source, const ZipOptions& options);
  void run(Archive& archive) const;

 private:
  class Lane;

  /// The progress gets the sum of all units.
  void beginProgress() const;
  void add(ArchiveBatch& batch, const platform::DirectoryItem& item, DirectoryTree& tree,
           const std::optional<ArchiveBatch::PreparedFile>& ready) const;
  ItemPlace placeOf(const platform::DirectoryItem& item, DirectoryTree& tree) const;

  const ZipOptions& options_;
  platform::URL base_;    ///< paths are relative to it
  std::string basePath_;  ///< with a "/" at the end
  std::vector<platform::DirectoryItem> items_;
};

}  // namespace veltrik
