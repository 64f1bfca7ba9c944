#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Foundation/Data.h"

namespace platform {

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
    Number value = 0;
    for (std::size_t at = sizeof(Number); at-- > 0;) {
      value = static_cast<Number>((value << 8) | std::to_integer<Number>((*taken)[at]));
    }
    return value;
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
