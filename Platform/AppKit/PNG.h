#pragma once

#include <optional>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Port/Bitmap.h"

namespace platform {

/// A picture with more pixels than this on a side is none of ours.
inline constexpr int kLargestPictureSide = 4096;

/// Reads a PNG (ISO/IEC 15948) of any kind as pixels of scale 1. Nothing for what isn't one, is cut off or too large.
PLATFORM_EXPORT std::optional<Bitmap> bitmapFromPNG(DataView bytes);

}  // namespace platform
