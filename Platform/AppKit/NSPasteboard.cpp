#include "Platform/AppKit/NSPasteboard.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "Platform/AppKit/ImageReading.h"
#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/URLList.h"
#include "Platform/Foundation/Session.h"

namespace platform {
namespace {

std::string lowercaseWithoutBlanks(const std::string& text) {
  std::string result;
  for (const unsigned char unit : text)
    if (!std::isspace(unit)) result.push_back(static_cast<char>(std::tolower(unit)));
  return result;
}

// In the order of preference. A bare text/plain comes from programs of today and is UTF-8.
constexpr std::array<const char*, 3> kReadable = {"text/plain;charset=utf-8", "utf8_string", "text/plain"};
constexpr std::array<const char*, 3> kLists = {"text/uri-list", "x-special/gnome-copied-files",
                                               "x-special/mate-copied-files"};
/// A file manager's list in the guise of text starts with this line.
constexpr std::string_view kListInText = "x-special/nautilus-clipboard\n";
/// From the one that keeps most of the picture. A picture dragged out of Chromium comes as mere bytes.
constexpr std::array<const char*, 10> kPictures = {
    "image/png",          "image/tiff",     "image/bmp",  "image/x-bmp", "image/x-ms-bmp",
    "image/x-win-bitmap", "image/x-MS-bmp", "image/jpeg", "image/jpg",   "application/octet-stream"};

bool holds(const auto& known, const std::string& type) {
  return std::ranges::find(known, type) != known.end();
}

}  // namespace

NSPasteboard& NSPasteboard::general() {
  return Session::current().service<NSPasteboard>();
}

std::optional<std::string> NSPasteboard::string() const {
  requireMainThread("NSPasteboard::string");
  const auto offered = contents().types();
  for (const std::string readable : kReadable) {
    const auto found = std::find_if(offered.begin(), offered.end(),
                                    [&](const auto& type) { return lowercaseWithoutBlanks(type) == readable; });
    if (found == offered.end()) continue;
    if (auto text = contents().read(*found)) return text;
  }
  return std::nullopt;
}

void NSPasteboard::setString(const std::string& utf8) {
  requireMainThread("NSPasteboard::setString");
  Session::current().backend().clipboard().write({{"text/plain;charset=utf-8", utf8}, {"text/plain", utf8}});
}

bool NSPasteboard::offersAny(const std::set<std::string>& types) const {
  if (!types.contains(PasteboardType::kURL) && !types.contains(PasteboardType::kFileURL)) return false;
  return std::ranges::any_of(contents().types(),
                             [](const auto& type) { return holds(kLists, type) || holds(kPictures, type); });
}

std::vector<URL> NSPasteboard::readURLs() const {
  requireMainThread("NSPasteboard::readURLs");
  const auto offered = contents().types();
  for (const std::string type : kLists) {
    if (!holds(offered, type)) continue;
    if (const auto list = contents().read(type))
      if (auto urls = urlsFromList(*list); !urls.empty()) return urls;
  }
  const auto text = string();
  return text && text->starts_with(kListInText) ? urlsFromList(text->substr(kListInText.size())) : std::vector<URL>();
}

std::shared_ptr<NSImage> NSPasteboard::readImage() const {
  requireMainThread("NSPasteboard::readImage");
  const auto offered = contents().types();
  for (const std::string type : kPictures) {
    if (!holds(offered, type)) continue;
    const auto bytes = contents().read(type);
    if (auto bitmap = bytes ? bitmapFromImage(bytesOf(*bytes)) : std::nullopt) {
      const Size size{static_cast<double>(bitmap->width), static_cast<double>(bitmap->height)};
      return std::make_shared<NSImage>(size, std::vector{std::move(*bitmap)});
    }
  }
  return nullptr;
}

const port::Contents& NSPasteboard::contents() const {
  return dragged_ ? *dragged_ : Session::current().backend().clipboard();
}

}  // namespace platform
