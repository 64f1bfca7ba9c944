#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Port/Bitmap.h"

namespace platform {

/// A picture from elsewhere with more pixels than this is refused before any of it is decoded.
inline constexpr std::uint64_t kMostPixels = 64'000'000;

/// Reads a picture as other programs offer it, by what its first bytes say it is: PNG, JPEG (ITU T.81), TIFF 6.0 or a
/// Windows bitmap. Pixels of scale 1. Nothing for anything else, what is damaged, and what has too many pixels.
PLATFORM_EXPORT std::optional<Bitmap> bitmapFromImage(DataView bytes);

std::optional<Bitmap> bitmapFromBMP(DataView bytes);

/// Whether both are positive and their product is within the limit.
inline bool isReadableSize(std::int64_t width, std::int64_t height) {
  return width > 0 && height > 0 && static_cast<std::uint64_t>(width) <= kMostPixels &&
         static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) <= kMostPixels;
}

}  // namespace platform
