#include "Platform/AppKit/PNG.h"

#include <png.h>

#include <algorithm>
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

  bool begin(DataView bytes, std::uint64_t mostPixels) {
    return png_image_begin_read_from_memory(&image_, bytes.data(), bytes.size()) != 0 &&
           std::uint64_t{image_.width} * image_.height <= mostPixels;
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

/// PNG colours are not premultiplied.
std::uint8_t straight(std::uint32_t channel, std::uint32_t alpha) {
  return static_cast<std::uint8_t>(alpha == 0 ? 0 : std::min(255U, (channel * 255 + alpha / 2) / alpha));
}

std::vector<std::uint8_t> straightRGBA(const Bitmap& bitmap) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(bitmap.pixels.size() * 4);
  for (const std::uint32_t pixel : bitmap.pixels) {
    const std::uint32_t alpha = pixel >> 24;
    for (const int shift : {16, 8, 0}) bytes.push_back(straight((pixel >> shift) & 0xFF, alpha));
    bytes.push_back(static_cast<std::uint8_t>(alpha));
  }
  return bytes;
}

}  // namespace

std::optional<Bitmap> bitmapFromPNG(DataView bytes, std::uint64_t mostPixels) {
  Reader reader;
  if (!reader.begin(bytes, mostPixels)) return std::nullopt;
  auto bitmap = reader.finish();
  if (!bitmap) return std::nullopt;
  for (std::uint32_t& pixel : bitmap->pixels) pixel = premultiplied(pixel);
  return bitmap;
}

std::optional<Data> pngFromBitmap(const Bitmap& bitmap) {
  if (bitmap.width <= 0 || bitmap.height <= 0) return std::nullopt;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(bitmap.width);
  image.height = static_cast<png_uint_32>(bitmap.height);
  image.format = PNG_FORMAT_RGBA;
  const auto bytes = straightRGBA(bitmap);
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  Data png(size);
  if (!png_image_write_to_memory(&image, png.data(), &size, 0, bytes.data(), 0, nullptr)) return std::nullopt;
  png.resize(size);
  return png;
}

}  // namespace platform
