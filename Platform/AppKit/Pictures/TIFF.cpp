#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "Platform/AppKit/ImageReading.h"
#include "Platform/AppKit/Pictures/Pictures.h"
#include "Platform/Export.h"

namespace platform {

namespace {

/// A file in memory, as the library reads it.
struct Source {
  DataView bytes;
  std::uint64_t at = 0;

  static tmsize_t read(thandle_t handle, void* into, tmsize_t count) {
    auto& source = *static_cast<Source*>(handle);
    if (count <= 0 || source.at >= source.bytes.size()) return 0;
    const auto taken = std::min<std::uint64_t>(static_cast<std::uint64_t>(count), source.bytes.size() - source.at);
    std::memcpy(into, source.bytes.data() + source.at, taken);
    source.at += taken;
    return static_cast<tmsize_t>(taken);
  }
  static tmsize_t write(thandle_t, void*, tmsize_t) { return 0; }
  static toff_t seek(thandle_t handle, toff_t offset, int from) {
    auto& source = *static_cast<Source*>(handle);
    if (from == SEEK_CUR) offset += source.at;
    if (from == SEEK_END) offset += source.bytes.size();
    return source.at = offset;
  }
  static int close(thandle_t) { return 0; }
  static toff_t size(thandle_t handle) { return static_cast<Source*>(handle)->bytes.size(); }
};

struct Closing {
  void operator()(TIFF* file) const { TIFFClose(file); }
};

/// Damage is answered by no picture; nobody wants to read of it.
int beSilent(TIFF*, void*, const char*, const char*, va_list) {
  return 1;
}

std::unique_ptr<TIFF, Closing> open(Source& source) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options, beSilent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options, beSilent, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(kMostPixels * 4));
  std::unique_ptr<TIFF, Closing> file(TIFFClientOpenExt("picture", "rm", &source, Source::read, Source::write,
                                                        Source::seek, Source::close, Source::size, nullptr, nullptr,
                                                        options));
  TIFFOpenOptionsFree(options);
  return file;
}

/// From the library's order (red lowest) to ours.
std::uint32_t swapped(std::uint32_t pixel) {
  return (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF);
}

std::optional<Bitmap> bitmapFromTIFF(DataView bytes) {
  Source source{bytes};
  const auto file = open(source);
  std::uint32_t width = 0, height = 0;
  if (!file || !TIFFGetField(file.get(), TIFFTAG_IMAGEWIDTH, &width) ||
      !TIFFGetField(file.get(), TIFFTAG_IMAGELENGTH, &height) || !isReadableSize(width, height))
    return std::nullopt;
  Bitmap bitmap{static_cast<int>(width), static_cast<int>(height), 1, {}};
  bitmap.pixels.resize(std::size_t{width} * height);
  constexpr int kStopOnError = 1;
  if (!TIFFReadRGBAImageOriented(file.get(), width, height, bitmap.pixels.data(), ORIENTATION_TOPLEFT, kStopOnError))
    return std::nullopt;
  std::ranges::transform(bitmap.pixels, bitmap.pixels.begin(), swapped);
  return bitmap;
}

}  // namespace

}  // namespace platform

extern "C" PLATFORM_EXPORT void veltrikReadTIFF(platform::DataView bytes, std::optional<platform::Bitmap>& bitmap) {
  bitmap = platform::bitmapFromTIFF(bytes);
}
