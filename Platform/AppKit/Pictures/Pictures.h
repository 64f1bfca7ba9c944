#pragma once

#include <optional>

#include "Platform/Foundation/Data.h"
#include "Platform/Port/Bitmap.h"

/// The formats whose libraries bring libraries of their own: seven of them, which few runs of a program need. So a
/// library of ours that is loaded with the first such picture reads them.
namespace platform::pictures {

inline constexpr const char* kLibrary = "libVeltrikPictures.so";

/// Leaves the bitmap empty for what is damaged and what has too many pixels.
using Reader = void(DataView bytes, std::optional<Bitmap>& bitmap);

inline constexpr const char* kJPEGReader = "veltrikReadJPEG";
inline constexpr const char* kTIFFReader = "veltrikReadTIFF";

}  // namespace platform::pictures
