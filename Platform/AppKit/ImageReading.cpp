#include "Platform/AppKit/ImageReading.h"

#include <dlfcn.h>

#include <string>
#include <string_view>

#include "Platform/AppKit/PNG.h"
#include "Platform/AppKit/Pictures/Pictures.h"
#include "Platform/Foundation/Log.h"

namespace platform {

namespace {

std::optional<Bitmap> read(const char* reader, DataView bytes) {
  static void* const library = dlopen(pictures::kLibrary, RTLD_NOW | RTLD_LOCAL);
  auto* const function = library ? reinterpret_cast<pictures::Reader*>(dlsym(library, reader)) : nullptr;
  std::optional<Bitmap> bitmap;
  if (function)
    function(bytes, bitmap);
  else
    NSLog(std::string("A picture can't be read: ") + pictures::kLibrary + " isn't beside the program's libraries");
  return bitmap;
}

}  // namespace

std::optional<Bitmap> bitmapFromImage(DataView bytes) {
  const std::string_view start = textOf(bytes);
  if (start.starts_with("\x89PNG")) return bitmapFromPNG(bytes, kMostPixels);
  if (start.starts_with("\xFF\xD8\xFF")) return read(pictures::kJPEGReader, bytes);
  if (start.starts_with("BM")) return bitmapFromBMP(bytes);
  if (start.starts_with(std::string_view("II*\0", 4)) || start.starts_with(std::string_view("MM\0*", 4)))
    return read(pictures::kTIFFReader, bytes);
  return std::nullopt;
}

}  // namespace platform
