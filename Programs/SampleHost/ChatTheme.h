#pragma once

#include <cstdint>

#include "Platform/Port/Text.h"

namespace samplehost::theme {

/// 0xRRGGBB
constexpr platform::Color rgb(std::uint32_t hex) {
  return {((hex >> 16) & 0xFF) / 255.0, ((hex >> 8) & 0xFF) / 255.0, (hex & 0xFF) / 255.0, 1};
}

inline constexpr platform::Color kWindow = rgb(0xF4F5F8);
inline constexpr platform::Color kPanel = rgb(0xFFFFFF);
inline constexpr platform::Color kHairline = rgb(0xE2E5EB);
inline constexpr platform::Color kText = rgb(0x1C2230);
inline constexpr platform::Color kSecondaryText = rgb(0x626B7C);
inline constexpr platform::Color kAccent = rgb(0x3F5BD9);
inline constexpr platform::Color kOnAccent = rgb(0xFFFFFF);
inline constexpr platform::Color kField = rgb(0xF4F5F8);
inline constexpr platform::Color kFieldBorder = rgb(0xCDD2DC);

inline constexpr platform::Color kAvatars[] = {rgb(0xB4522C), rgb(0x1E7A63), rgb(0x8A4FBF), rgb(0x2F6DB0)};

inline constexpr platform::Font kTitleFont{13, true};
inline constexpr platform::Font kNameFont{13, true};
inline constexpr platform::Font kMessageFont{13, false};
inline constexpr platform::Font kSmallFont{11, false};

}  // namespace samplehost::theme
