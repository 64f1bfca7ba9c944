#include "Platform/AppKit/PNG.h"

#include <png.h>

#include <cstdint>
#include <cstring>

namespace platform {

namespace {

class Reader {
 public:
  Reader() {
    std::memset(&image_, 0, sizeof image_);
    image_.version = PNG_IMAGE_VERSION;
  }
  ~Reader() { png_image_free(&image_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  bool begin(DataView bytes) {
    return png_image_begin_read_from_memory(&image_, bytes.data(), bytes.size()) != 0 &&
           image_.width <= kLargestPictureSide && image_.height <= kLargestPictureSide;
  }
  std::optional<Bitmap> finish() {
    image_.format = PNG_FORMAT_BGRA;
    Bitmap bitmap{static_cast<int>(image_.width), static_cast<int>(image_.height), 1, {}};
    bitmap.pixels.resize(std::size_t{image_.width} * image_.height);
    if (!png_image_finish_read(&image_, nullptr, bitmap.pixels.data(), 0, nullptr)) return std::nullopt;
    return bitmap;
  }

 private:
  png_image image_;
};

std::uint32_t premultiplied(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  const auto channel = [=](int shift) { return (((pixel >> shift) & 0xFF) * alpha + 127) / 255 << shift; };
  return alpha << 24 | channel(16) | channel(8) | channel(0);
}

}  // namespace

std::optional<Bitmap> bitmapFromPNG(DataView bytes) {
  Reader reader;
  if (!reader.begin(bytes)) return std::nullopt;
  auto bitmap = reader.finish();
  if (!bitmap) return std::nullopt;
  for (std::uint32_t& pixel : bitmap->pixels) pixel = premultiplied(pixel);
  return bitmap;
}

}  // namespace platform
