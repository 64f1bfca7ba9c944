#pragma once

#include <array>
#include <cstdint>

#include "Platform/Foundation/Data.h"

namespace veltrik {

/// The table of the reflected CRC-32 of IEEE 802.3 that ZIP uses (polynomial 0xEDB88320).
extern const std::array<std::uint32_t, 256> crcTable;

/// `checksum`, 0 to begin with, brought up to date with `bytes`; so a buffer may be fed in pieces. Any thread.
std::uint32_t crc32(platform::DataView bytes, std::uint32_t checksum = 0);

/// The same result by `crcTable`, a byte at a time: what `crc32` does where the processor offers nothing better.
std::uint32_t crc32ByTable(platform::DataView bytes, std::uint32_t checksum = 0);

}  // namespace veltrik
