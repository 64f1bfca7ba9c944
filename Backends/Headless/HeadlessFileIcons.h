#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Port/FileIcons.h"

namespace headless {

/// An icon theme of plain squares: a test says which types it has, and in which colour.
class HeadlessFileIcons final : public platform::port::FileIcons {
 public:
  /// By MIME type, or by extension where there is no MIME type; 0xAARRGGBB.
  void setTheme(std::map<std::string, std::uint32_t> colors) { colors_ = std::move(colors); }

  std::optional<platform::Bitmap> icon(const platform::port::FileType& type, int side) override {
    const auto found = colors_.find(type.mimeType.empty() ? type.extension : type.mimeType);
    if (found == colors_.end()) return std::nullopt;
    const auto count = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    return platform::Bitmap{side, side, 1, std::vector<std::uint32_t>(count, found->second)};
  }

 private:
  std::map<std::string, std::uint32_t> colors_;
};

}  // namespace headless
