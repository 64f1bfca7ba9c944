#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Port/Bitmap.h"

namespace platform {

/// More pixels than a picture of our own has.
inline constexpr std::uint64_t kMostPixelsOfResource = std::uint64_t{4096} * 4096;

/// Reads a PNG (ISO/IEC 15948) of any kind as pixels of scale 1. Nothing for what isn't one, is cut off or has more
/// than `mostPixels`, which is known before anything is decoded.
PLATFORM_EXPORT std::optional<Bitmap> bitmapFromPNG(DataView bytes, std::uint64_t mostPixels = kMostPixelsOfResource);

/// The picture as a PNG with 8 bits a channel. Nothing for one without pixels.
PLATFORM_EXPORT std::optional<Data> pngFromBitmap(const Bitmap& bitmap);

}  // namespace platform
