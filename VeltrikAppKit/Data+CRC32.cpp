#include "VeltrikAppKit/Data+CRC32.h"

#ifdef HAVE_ISAL
#include <isa-l/crc.h>
#endif

namespace veltrik {

namespace {

constexpr std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t index = 0; index < table.size(); ++index) {
    std::uint32_t entry = index;
    for (int bit = 0; bit < 8; ++bit) entry = (entry >> 1) ^ ((entry & 1) != 0 ? 0xEDB88320U : 0);
    table[index] = entry;
  }
  return table;
}

}  // namespace

constinit const std::array<std::uint32_t, 256> crcTable = makeTable();

std::uint32_t crc32ByTable(platform::DataView bytes, std::uint32_t checksum) {
  std::uint32_t sum = ~checksum;
  for (const std::byte byte : bytes) sum = crcTable[(sum ^ std::to_integer<std::uint32_t>(byte)) & 0xFF] ^ (sum >> 8);
  return ~sum;
}

std::uint32_t crc32(platform::DataView bytes, std::uint32_t checksum) {
#ifdef HAVE_ISAL
  return crc32_gzip_refl(checksum, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
#else
  return crc32ByTable(bytes, checksum);
#endif
}

}  // namespace veltrik
