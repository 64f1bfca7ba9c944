#pragma once

#include <optional>
#include <string>

#include "Platform/Port/Bitmap.h"

namespace platform::port {

/// What is known of a file's type: its MIME type, or else the end of its name without the dot. Either may be empty.
struct FileType {
  std::string mimeType;
  std::string extension;
  friend bool operator==(const FileType&, const FileType&) = default;
};

/// The pictures of file types in the desktop's icon theme. Main thread.
class FileIcons {
 public:
  virtual ~FileIcons() = default;
  /// `side` by `side` pixels of scale 1; nothing when the theme has no picture for it or its relatives.
  virtual std::optional<Bitmap> icon(const FileType& type, int side) = 0;
};

}  // namespace platform::port
