#include "Platform/AppKit/URLList.h"

#include <fmt/format.h>

#include <string>

namespace platform {

namespace {

std::string_view trimmed(std::string_view line) {
  // Some programs send the terminating zero along.
  constexpr std::string_view kBlank{" \t\r\0", 4};
  const auto first = line.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(kBlank) - first + 1);
}

bool isHexadecimal(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isTriplet(std::string_view text) {
  return text.size() >= 3 && text[0] == '%' && isHexadecimal(text[1]) && isHexadecimal(text[2]);
}

/// With everything encoded that a URL can't hold, `more` included.
std::string encoded(std::string_view text, std::string_view more) {
  constexpr std::string_view kNever = " \"<>\\^`{|}";
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const bool stray = c == '%' && !isTriplet(text.substr(at));
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (stray || control || kNever.find(c) != kNever.npos || more.find(c) != more.npos)
      result += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    else
      result += c;
  }
  return result;
}

std::optional<URL> urlFromLine(std::string_view line) {
  if (!line.starts_with("file:")) return URL::fromString(encoded(line, ""));
  // A file has no query and no fragment, so these characters are its name's.
  const auto url = URL::fromString(encoded(line, "?#[]"));
  if (!url || url->path().empty() || url->path().front() != '/') return std::nullopt;
  const std::string path = url->path();
  return url->hasDirectoryPath() ? URL::directoryURL(path) : URL::fileURL(path);
}

}  // namespace

std::vector<URL> urlsFromList(std::string_view text) {
  std::vector<URL> urls;
  while (!text.empty()) {
    const auto end = text.find('\n');
    const std::string_view line = trimmed(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (line.empty() || line.front() == '#') continue;
    if (auto url = urlFromLine(line)) urls.push_back(std::move(*url));
  }
  return urls;
}

}  // namespace platform
