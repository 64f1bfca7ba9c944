#include "Platform/AppKit/ImageReading.h"

#include <string_view>

#include "Platform/AppKit/PNG.h"

namespace platform {

std::optional<Bitmap> bitmapFromImage(DataView bytes) {
  const std::string_view start = textOf(bytes);
  if (start.starts_with("\x89PNG")) return bitmapFromPNG(bytes, kMostPixels);
  if (start.starts_with("\xFF\xD8\xFF")) return bitmapFromJPEG(bytes);
  if (start.starts_with("BM")) return bitmapFromBMP(bytes);
  if (start.starts_with(std::string_view("II*\0", 4)) || start.starts_with(std::string_view("MM\0*", 4)))
    return bitmapFromTIFF(bytes);
  return std::nullopt;
}

}  // namespace platform
