#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Port/Clipboard.h"

namespace platform {

class NSImage;

/// Kinds of things on a pasteboard.
namespace PasteboardType {
inline constexpr const char* kURL = "public.url";
inline constexpr const char* kFileURL = "public.file-url";
}  // namespace PasteboardType

/// What can be pasted, or is dragged. What it holds comes from other applications, so reading may take a moment, and
/// finds nothing in what is not well formed. Main thread.
class PLATFORM_EXPORT NSPasteboard {
 public:
  /// The desktop's clipboard.
  static NSPasteboard& general();
  NSPasteboard() = default;
  /// That of something dragged; borrowed.
  explicit NSPasteboard(const port::Contents& contents) : dragged_(&contents) {}

  /// UTF-8; nothing when no text is on it. Any encoding other than UTF-8 the clipboard declares is not read.
  std::optional<std::string> string() const;
  /// Only of the general pasteboard.
  void setString(const std::string& utf8);
  /// Whether one of the types is on it. A picture, or what may be one, counts as a URL: whoever takes it can make a
  /// file of it, and browsers tell its address in ways of their own.
  bool offersAny(const std::set<std::string>& types) const;
  /// Locations, in their order: of files that were copied in a file manager, or others. Lists as file managers write
  /// them (RFC 2483, and their own), names that nobody encoded included.
  std::vector<URL> readURLs() const;
  /// The first picture; null when there is none that can be read.
  std::shared_ptr<NSImage> readImage() const;

 private:
  const port::Contents& contents() const;

  const port::Contents* dragged_ = nullptr;
};

}  // namespace platform
