#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Export.h"

namespace platform {

/// Nanoseconds since the user's last input anywhere on the desktop; nothing when it can't be read, without a session
/// and off the main thread.
PLATFORM_EXPORT std::optional<std::uint64_t> systemIdleNanoseconds();

}  // namespace platform
