#include <bit>
#include <cstdlib>
#include <vector>

#include "Platform/AppKit/ImageReading.h"
#include "Platform/Foundation/ByteCursor.h"

namespace platform {

namespace {

constexpr std::uint32_t kNoCompression = 0, kBitFields = 3, kAlphaBitFields = 6;

/// A channel's bits in a pixel.
struct Channel {
  std::uint32_t mask = 0;

  std::uint32_t of(std::uint32_t pixel, std::uint32_t whenNone) const {
    if (mask == 0) return whenNone;
    const std::uint32_t most = mask >> std::countr_zero(mask);
    return static_cast<std::uint32_t>(std::uint64_t{(pixel & mask) >> std::countr_zero(mask)} * 255 / most);
  }
};

/// What stands before the pixels.
struct Header {
  std::int64_t width = 0, height = 0;
  bool topDown = false;
  int bits = 0;
  Channel red, green, blue, alpha;
  std::vector<std::uint32_t> palette;  ///< opaque
  DataView rows;

  std::size_t stride() const {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 31) / 32 * 4;
  }
};

void setUsualChannels(Header& header) {
  const bool small = header.bits == 16;
  header.red = {small ? 0x7C00U : 0xFF0000U};
  header.green = {small ? 0x03E0U : 0xFF00U};
  header.blue = {small ? 0x1FU : 0xFFU};
}

bool readChannels(ByteCursor& cursor, Header& header, bool withAlpha) {
  for (Channel* channel : {&header.red, &header.green, &header.blue}) {
    const auto mask = cursor.u32le();
    if (!mask) return false;
    channel->mask = *mask;
  }
  const auto alpha = withAlpha ? cursor.u32le() : std::optional<std::uint32_t>(0);
  header.alpha.mask = alpha.value_or(0);
  return alpha.has_value();
}

bool readPalette(ByteCursor cursor, std::uint32_t count, Header& header) {
  if (header.bits > 8) return true;
  const std::uint32_t most = 1U << header.bits;
  if (count == 0) count = most;
  if (count > most) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto color = cursor.u32le();
    if (!color) return false;
    header.palette.push_back(*color | 0xFF000000);
  }
  return true;
}

std::optional<Header> readHeader(DataView bytes) {
  ByteCursor file(bytes);
  if (!file.take(10)) return std::nullopt;
  const auto pixels = file.u32le();
  ByteCursor cursor(file);
  const auto size = cursor.u32le();
  const auto width = cursor.u32le(), height = cursor.u32le();
  const auto planes = cursor.u16le(), bits = cursor.u16le();
  const auto compression = cursor.u32le();
  if (!size || *size < 40 || !compression || !cursor.take(12)) return std::nullopt;
  const auto colors = cursor.u32le();
  if (!colors || !cursor.take(4) || *planes != 1) return std::nullopt;

  Header header;
  header.width = static_cast<std::int32_t>(*width);
  header.topDown = static_cast<std::int32_t>(*height) < 0;
  header.height = std::abs(static_cast<std::int64_t>(static_cast<std::int32_t>(*height)));
  header.bits = *bits;
  constexpr std::uint32_t kWithAlpha = 56;  // from this header on
  if (*compression == kBitFields || *compression == kAlphaBitFields) {
    if (!readChannels(cursor, header, *size >= kWithAlpha || *compression == kAlphaBitFields)) return std::nullopt;
  } else if (*compression == kNoCompression) {
    setUsualChannels(header);
  } else {
    return std::nullopt;
  }
  // The channels of the oldest header stand behind it.
  const std::size_t before = *size == 40 ? bytes.size() - 14 - cursor.left() : *size;
  if (!file.take(before) || !readPalette(file, *colors, header) || *pixels > bytes.size()) return std::nullopt;
  header.rows = bytes.subspan(*pixels);
  return header;
}

std::uint32_t sample(const std::byte* row, std::int64_t x, int bits) {
  const std::int64_t bit = x * bits;
  const std::byte* at = row + bit / 8;
  if (bits < 8) return (std::to_integer<std::uint32_t>(*at) >> (8 - bits - bit % 8)) & ((1U << bits) - 1);
  std::uint32_t value = 0;
  for (int i = 0; i < bits / 8; ++i) value |= std::to_integer<std::uint32_t>(at[i]) << (8 * i);
  return value;
}

/// 0xAARRGGBB, premultiplied.
std::uint32_t colorOf(const Header& header, std::uint32_t value) {
  if (header.bits <= 8) return value < header.palette.size() ? header.palette[value] : 0xFF000000;
  const std::uint32_t alpha = header.alpha.of(value, 255);
  const auto channel = [&](const Channel& each) { return (each.of(value, 0) * alpha + 127) / 255; };
  return alpha << 24 | channel(header.red) << 16 | channel(header.green) << 8 | channel(header.blue);
}

bool isKnownDepth(int bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

}  // namespace

std::optional<Bitmap> bitmapFromBMP(DataView bytes) {
  const auto header = readHeader(bytes);
  if (!header || !isKnownDepth(header->bits) || !isReadableSize(header->width, header->height)) return std::nullopt;
  const std::size_t stride = header->stride();
  if (header->rows.size() / stride < static_cast<std::size_t>(header->height)) return std::nullopt;
  Bitmap bitmap{static_cast<int>(header->width), static_cast<int>(header->height), 1, {}};
  bitmap.pixels.reserve(static_cast<std::size_t>(header->width) * static_cast<std::size_t>(header->height));
  for (std::int64_t y = 0; y < header->height; ++y) {
    const std::int64_t stored = header->topDown ? y : header->height - 1 - y;
    const std::byte* row = header->rows.data() + static_cast<std::size_t>(stored) * stride;
    for (std::int64_t x = 0; x < header->width; ++x)
      bitmap.pixels.push_back(colorOf(*header, sample(row, x, header->bits)));
  }
  return bitmap;
}

}  // namespace platform
