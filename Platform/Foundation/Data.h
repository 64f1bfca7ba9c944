#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace platform {

/// A growing run of bytes that owns them.
using Data = std::vector<std::byte>;

/// A run of bytes that somebody else owns; valid as long as the owner leaves them alone.
using DataView = std::span<const std::byte>;

/// The bytes of a text as they stand, without a terminating zero; valid as long as the text.
inline DataView bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text.data(), text.size()));
}

/// The bytes read as text, unchecked; valid as long as the bytes.
inline std::string_view textOf(DataView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A copy of `bytes` that owns them.
inline Data copyOf(DataView bytes) {
  return {bytes.begin(), bytes.end()};
}

/// Puts `bytes` behind what `data` holds.
inline void append(Data& data, DataView bytes) {
  data.insert(data.end(), bytes.begin(), bytes.end());
}

}  // namespace platform
