#include <turbojpeg.h>

#include <memory>

#include "Platform/AppKit/ImageReading.h"
#include "Platform/AppKit/Pictures/Pictures.h"
#include "Platform/Export.h"

namespace platform {

namespace {

struct Ending {
  void operator()(void* decoder) const { tjDestroy(decoder); }
};

std::optional<Bitmap> bitmapFromJPEG(DataView bytes) {
  const std::unique_ptr<void, Ending> decoder(tjInitDecompress());
  const auto* start = reinterpret_cast<const unsigned char*>(bytes.data());
  int width = 0, height = 0, subsampling = 0, colours = 0;
  if (!decoder || tjDecompressHeader3(decoder.get(), start, bytes.size(), &width, &height, &subsampling, &colours) != 0)
    return std::nullopt;
  if (!isReadableSize(width, height)) return std::nullopt;
  Bitmap bitmap{width, height, 1, {}};
  bitmap.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  auto* pixels = reinterpret_cast<unsigned char*>(bitmap.pixels.data());
  // Cameras write much that deserves a warning and shows well; a picture that ends early doesn't.
  const bool whole = bytes.size() >= 2 && textOf(bytes).rfind("\xFF\xD9") != std::string_view::npos;
  const bool failed = tjDecompress2(decoder.get(), start, bytes.size(), pixels, width, 0, height, TJPF_BGRA, 0) != 0 &&
                      tjGetErrorCode(decoder.get()) != TJERR_WARNING;
  if (failed || !whole) return std::nullopt;
  return bitmap;
}

}  // namespace

}  // namespace platform

extern "C" PLATFORM_EXPORT void veltrikReadJPEG(platform::DataView bytes, std::optional<platform::Bitmap>& bitmap) {
  bitmap = platform::bitmapFromJPEG(bytes);
}
