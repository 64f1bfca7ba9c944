#pragma once

#include <cstdint>

namespace veltrik {

/// A held modifier key as it is reported to the host. The values are the boundary's own, not those of event modifier
/// flags. Control, Caps Lock and Function are never reported.
enum class KeyModifier : std::uint32_t {
  shift = 0x10000,
  option = 0x20000,
  command = 0x40000,
};

}  // namespace veltrik
