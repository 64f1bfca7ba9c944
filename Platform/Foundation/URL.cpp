#include "Platform/Foundation/URL.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace platform {

namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// What may stand in a path as it is: unreserved characters, sub-delimiters, ":", "@" and the separator.
bool standsInPath(char c) {
  return isLetter(c) || isDigit(c) || std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

bool standsInURL(char c) {
  return standsInPath(c) || std::string_view("%?#[]").find(c) != std::string_view::npos;
}

bool isASCII(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

void appendEncoded(std::string& text, char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
}

std::string encoded(std::string_view path) {
  std::string text;
  text.reserve(path.size());
  for (const char c : path) {
    if (standsInPath(c)) {
      text.push_back(c);
    } else {
      appendEncoded(text, c);
    }
  }
  return text;
}

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string decoded(std::string_view text) {
  std::string path;
  path.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isTriplet =
        text[at] == '%' && at + 2 < text.size() && hexValue(text[at + 1]) >= 0 && hexValue(text[at + 2]) >= 0;
    if (isTriplet) {
      path.push_back(static_cast<char>(hexValue(text[at + 1]) * 16 + hexValue(text[at + 2])));
      at += 2;
    } else {
      path.push_back(text[at]);
    }
  }
  return path;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

/// The path's last part, still encoded; without its trailing "/".
std::string_view lastPart(std::string_view path) {
  path = withoutTrailingSlashes(path);
  if (path == "/") return path;
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

/// Where the extension's dot stands in a last part, or `npos`.
std::size_t extensionDot(std::string_view part) {
  const auto dot = part.rfind('.');
  const bool isExtension = dot != std::string_view::npos && dot != 0 && dot + 1 != part.size();
  return isExtension ? dot : std::string_view::npos;
}

}  // namespace

/// The text's three parts: scheme and authority; path; query and fragment.
struct URL::Parts {
  std::string_view front, path, back;
};

URL::Parts URL::parts() const {
  const std::string_view text = text_;
  std::size_t pathStart = text.find(':') + 1;
  if (text.substr(pathStart).starts_with("//"))
    pathStart = std::min(text.find_first_of("/?#", pathStart + 2), text.size());
  const std::size_t pathEnd = std::min(text.find_first_of("?#", pathStart), text.size());
  return {text.substr(0, pathStart), text.substr(pathStart, pathEnd - pathStart), text.substr(pathEnd)};
}

URL URL::withEncodedPath(std::string_view path) const {
  const Parts all = parts();
  return URL(std::string(all.front).append(path).append(all.back));
}

URL URL::fileURL(std::string_view path) {
  if (path.starts_with('/')) return URL("file://" + encoded(path));
  const std::string folder = std::filesystem::current_path().string();
  return directoryURL(folder).appendingPathComponent(path);
}

URL URL::directoryURL(std::string_view path) {
  URL url = fileURL(path);
  if (!url.hasDirectoryPath()) url.text_.push_back('/');
  return url;
}

std::optional<URL> URL::fromString(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0 || !isLetter(text[0])) return std::nullopt;
  std::string result;
  for (const char c : text.substr(0, colon)) {
    if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
    result.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
  }
  for (const char c : text.substr(colon)) {
    if (isASCII(c) && !standsInURL(c)) return std::nullopt;
    if (isASCII(c)) {
      result.push_back(c);
    } else {
      appendEncoded(result, c);
    }
  }
  return URL(std::move(result));
}

std::string_view URL::scheme() const {
  return std::string_view(text_).substr(0, text_.find(':'));
}

std::string URL::path() const {
  return decoded(withoutTrailingSlashes(parts().path));
}

std::string URL::lastPathComponent() const {
  return decoded(lastPart(parts().path));
}

std::string URL::pathExtension() const {
  const std::string part = lastPathComponent();
  const auto dot = extensionDot(part);
  return dot == std::string::npos ? std::string() : part.substr(dot + 1);
}

URL URL::appendingPathComponent(std::string_view component) const {
  std::string path(parts().path);
  if (!path.ends_with('/')) path.push_back('/');
  while (component.starts_with('/')) component.remove_prefix(1);
  return withEncodedPath(path + encoded(component));
}

URL URL::appendingPathExtension(std::string_view extension) const {
  const std::string_view path = parts().path;
  const std::string_view stem = withoutTrailingSlashes(path);
  return withEncodedPath(std::string(stem) + "." + encoded(extension) + (stem.size() < path.size() ? "/" : ""));
}

URL URL::deletingLastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(parts().path);
  const auto slash = path.rfind('/');
  return withEncodedPath(slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1));
}

URL URL::deletingPathExtension() const {
  const std::string_view path = parts().path;
  const std::string_view stem = withoutTrailingSlashes(path);
  const std::string_view part = lastPart(path);
  const auto dot = extensionDot(part);
  if (dot == std::string_view::npos) return *this;
  return withEncodedPath(std::string(stem.substr(0, stem.size() - part.size() + dot)) +
                         (stem.size() < path.size() ? "/" : ""));
}

URL URL::standardized() const {
  std::string_view rest = parts().path;
  if (!rest.starts_with('/')) return *this;
  std::vector<std::string_view> kept;
  bool isDirectory = true;
  while (!rest.empty()) {
    rest.remove_prefix(1);
    const std::string_view part = rest.substr(0, rest.find('/'));
    rest.remove_prefix(part.size());
    const std::string name = decoded(part);
    isDirectory = name.empty() || name == "." || name == "..";
    if (name == ".." && !kept.empty()) kept.pop_back();
    if (!isDirectory) kept.push_back(part);
  }
  std::string path;
  for (const std::string_view part : kept) path.append("/").append(part);
  if (isDirectory) path.push_back('/');
  return withEncodedPath(path);
}

}  // namespace platform
