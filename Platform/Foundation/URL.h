#pragma once

#include <compare>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace platform {

/// A location as percent-encoded text (RFC 3986), chiefly that of a file. A directory's text ends with "/". A value;
/// looks at no file system. File names are bytes, so a name that is not UTF-8 survives the way to a URL and back.
class PLATFORM_EXPORT URL {
 public:
  /// The file URL of a path; a relative path is taken from the working directory. A path that ends with "/" is that of
  /// a directory.
  static URL fileURL(std::string_view path);
  static URL directoryURL(std::string_view path);
  /// Any URL's text; nothing when it has no scheme or holds a character that a URL may not hold.
  static std::optional<URL> fromString(std::string_view text);

  const std::string& absoluteString() const { return text_; }
  /// "file", "https", …, in lower case.
  std::string_view scheme() const;
  bool isFileURL() const { return scheme() == "file"; }
  bool hasDirectoryPath() const { return text_.ends_with('/'); }

  /// The path without percent-encoding and without a trailing "/" (but for the root), as the file system takes it. For
  /// another URL the part between authority and query.
  std::string path() const;
  /// The path's last part without percent-encoding: "b.txt" of "/a/b.txt", "/" of the root, "" of no path.
  std::string lastPathComponent() const;
  /// What follows the last "." of the last part; empty when there is none, or nothing before or after it.
  std::string pathExtension() const;

  /// With `component`, which may hold "/" itself, put behind the path; a component that ends with "/" makes a
  /// directory.
  URL appendingPathComponent(std::string_view component) const;
  URL appendingPathExtension(std::string_view extension) const;
  /// The directory that holds this location; the root's own is the root.
  URL deletingLastPathComponent() const;
  URL deletingPathExtension() const;
  /// Without "." and ".." parts, by the text alone (RFC 3986, 5.2.4): no link is followed. A path that ended in one of
  /// them is that of a directory.
  URL standardized() const;

  friend bool operator==(const URL&, const URL&) = default;
  friend std::strong_ordering operator<=>(const URL&, const URL&) = default;

 private:
  explicit URL(std::string text) : text_(std::move(text)) {}
  struct Parts;
  Parts parts() const;
  URL withEncodedPath(std::string_view path) const;

  std::string text_;
};

}  // namespace platform

template <>
struct std::hash<platform::URL> {
  std::size_t operator()(const platform::URL& url) const noexcept {
    return std::hash<std::string>()(url.absoluteString());
  }
};
