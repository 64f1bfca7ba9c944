#pragma once

#include <endian.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>

#include "Platform/Foundation/Data.h"

namespace platform {

/// The number whose bytes stand at `at`, least significant first.
template <class Number>
Number loadLittleEndian(const std::byte* at) {
  static_assert(std::is_same_v<Number, std::uint16_t> || std::is_same_v<Number, std::uint32_t>);
  Number value = 0;
  std::memcpy(&value, at, sizeof value);
  if constexpr (sizeof value == sizeof(std::uint16_t))
    return le16toh(value);
  else
    return le32toh(value);
}

/// Reads little-endian numbers and runs of bytes from untrusted bytes, front to back. A read that does not fit yields
/// nothing and leaves the cursor where it was.
class ByteCursor {
 public:
  explicit ByteCursor(DataView bytes) : bytes_(bytes) {}

  std::size_t left() const { return bytes_.size(); }

  std::optional<DataView> take(std::size_t count) {
    if (count > bytes_.size()) return std::nullopt;
    const DataView taken = bytes_.first(count);
    bytes_ = bytes_.subspan(count);
    return taken;
  }

  std::optional<std::uint16_t> u16le() { return number<std::uint16_t>(); }
  std::optional<std::uint32_t> u32le() { return number<std::uint32_t>(); }

 private:
  template <class Number>
  std::optional<Number> number() {
    const auto taken = take(sizeof(Number));
    if (!taken) return std::nullopt;
    return loadLittleEndian<Number>(taken->data());
  }

  DataView bytes_;
};

/// Appends `value` to `data`, least significant byte first.
template <class Number>
void appendLittleEndian(Data& data, Number value) {
  for (std::size_t at = 0; at < sizeof(Number); ++at) {
    data.push_back(static_cast<std::byte>((value >> (8 * at)) & 0xFF));
  }
}

}  // namespace platform
