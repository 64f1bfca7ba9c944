#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/FileDescriptor.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/ArchiveItem.h"
#include "VeltrikAppKit/ArchiveReading.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {

/// A whole archive on its way into a directory, as `unzipItem` says. Smaller files are written ahead of their turn, but
/// get their names only when it comes: what fails leaves no later ones. Arguments are borrowed.
class Unpacking {
 public:
  Unpacking(const Archive& archive, const platform::URL& destination, const UnzipOptions& options);
  void run();

 private:
  /// Where an entry's structure stands. The entry is read again when its turn comes, since all of them together take
  /// more memory than the rest of the work.
  struct Place {
    std::uint64_t position = 0;
    Entry::EntryType type = Entry::EntryType::file;
  };
  struct MadeDirectory {
    std::string path;
    platform::FileAttributes attributes;
  };
  /// A complete file that has no name yet.
  struct NamelessFile {
    Entry entry;
    platform::FileDescriptor file;
    std::uint32_t checksum = 0;
  };
  class Lane;

  std::string pathOf(const Entry& entry) const;
  /// The entry's path below the destination, without "." and ".."; throws when it leads outside.
  std::string relativePath(const std::string& entryPath) const;
  ItemPlace placeOf(const std::string& path);
  ExtractOptions extractOptions() const;
  void unpackAll();
  /// `ready`, if there is one, needs only its name.
  void unpack(const Entry& entry, NamelessFile* ready);
  /// Gives the file its name; false when that is for `extract` to do, or to fail.
  bool publish(const Entry& entry, const std::string& path, NamelessFile& ready);
  std::uint32_t extract(const Entry& entry, const std::string& path);
  void applyDirectoryAttributes();

  const Archive& archive_;
  platform::URL destination_;
  const UnzipOptions& options_;
  std::string root_;
  EntryReader reader_;
  std::vector<Place> entries_;  ///< directories, then files, then links
  std::int64_t totalUnitCount_ = 0;
  std::optional<DirectoryTree> tree_;
  std::vector<MadeDirectory> made_;
};

}  // namespace veltrik
