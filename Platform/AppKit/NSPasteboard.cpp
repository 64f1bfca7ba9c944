#include "Platform/AppKit/NSPasteboard.h"

#include <algorithm>
#include <array>
#include <cctype>

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

}  // namespace

NSPasteboard& NSPasteboard::general() {
  return Session::current().service<NSPasteboard>();
}

std::optional<std::string> NSPasteboard::string() const {
  requireMainThread("NSPasteboard::string");
  auto& clipboard = Session::current().backend().clipboard();
  const auto offered = clipboard.types();
  for (const std::string readable : kReadable) {
    const auto found = std::find_if(offered.begin(), offered.end(),
                                    [&](const auto& type) { return lowercaseWithoutBlanks(type) == readable; });
    if (found == offered.end()) continue;
    if (auto text = clipboard.read(*found)) return text;
  }
  return std::nullopt;
}

void NSPasteboard::setString(const std::string& utf8) {
  requireMainThread("NSPasteboard::setString");
  Session::current().backend().clipboard().write({{"text/plain;charset=utf-8", utf8}, {"text/plain", utf8}});
}

}  // namespace platform
