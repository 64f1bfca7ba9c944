#include "Programs/SampleHost/PngFile.h"

#include <png.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace samplehost {

namespace {

/// PNG colours are not premultiplied.
std::uint8_t straight(std::uint32_t channel, std::uint32_t alpha) {
  return static_cast<std::uint8_t>(alpha == 0 ? 0 : (channel * 255 + alpha / 2) / alpha);
}

std::vector<std::uint8_t> straightRgba(const platform::Bitmap& bitmap) {
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

void writePng(const platform::Bitmap& bitmap, const std::filesystem::path& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(bitmap.width);
  image.height = static_cast<png_uint_32>(bitmap.height);
  image.format = PNG_FORMAT_RGBA;
  const auto bytes = straightRgba(bitmap);
  if (!png_image_write_to_file(&image, file.c_str(), 0, bytes.data(), 0, nullptr))
    throw std::runtime_error(file.string() + ": " + image.message);
}

}  // namespace samplehost
