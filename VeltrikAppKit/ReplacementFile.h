#pragma once

#include <string>

#include "Platform/Foundation/FileDescriptor.h"
#include "VeltrikAppKit/ArchiveItem.h"

namespace veltrik {

/// A new file that is to take another one's place, made beside it. Where the file system knows files without a name it
/// has none until then, so a process that is killed leaves nothing. Elsewhere, and for a moment at the end, it has one
/// by which the next replacement of the same file finds what was left, and clears it away.
class ReplacementFile {
 public:
  /// `path` leads to the file itself, not to a link. Throws `CocoaError` when nothing can be made beside it.
  explicit ReplacementFile(const std::string& path);
  /// Removes the new file unless it took the place.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  /// The new file, for reading and writing; once.
  platform::FileDescriptor release() { return std::move(file_); }
  /// Puts the new file, open as `file`, in the place of the old one in one step. Throws `CocoaError`.
  void takePlace(int file);

 private:
  /// Takes a name that nothing has.
  void chooseName();

  platform::FileDescriptor directory_;
  ItemPlace place_;  ///< of the new file
  bool hasName_ = false;
  std::string target_;
  platform::FileDescriptor file_;
};

}  // namespace veltrik
