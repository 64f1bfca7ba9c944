#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/FileDescriptor.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveItem.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {

/// A whole archive on its way into a directory, as `unzipItem` says. Smaller files are written ahead of their turn, but
/// get their names only when it comes: what fails leaves no later ones. Arguments are borrowed.
class Unpacking {
 public:
  Unpacking(const Archive& archive, const platform::URL& destination, const UnzipOptions& options);
  void run();

 private:
  struct MadeDirectory {
    std::string path;
    platform::FileAttributes attributes;
  };
  /// A complete file that has no name yet.
  struct NamelessFile {
    platform::FileDescriptor file;
    std::uint32_t checksum = 0;
  };
  class Lane;

  std::int64_t totalUnitCount() const;
  std::string pathOf(const Entry& entry) const;
  /// The entry's path below the destination, without "." and ".."; throws when it leads outside.
  std::string relativePath(const std::string& entryPath) const;
  ItemPlace placeOf(const std::string& path);
  ExtractOptions extractOptions() const;
  void unpackAll();
  void unpack(const Entry& entry, std::optional<NamelessFile> ready);
  /// Gives the file its name; false when that is for `extract` to do, or to fail.
  bool publish(const Entry& entry, const std::string& path, NamelessFile& ready);
  std::uint32_t extract(const Entry& entry, const std::string& path);
  void applyDirectoryAttributes();

  const Archive& archive_;
  platform::URL destination_;
  const UnzipOptions& options_;
  std::string root_;
  std::vector<Entry> entries_;  ///< directories, then files, then links
  std::optional<DirectoryTree> tree_;
  std::vector<MadeDirectory> made_;
};

}  // namespace veltrik
