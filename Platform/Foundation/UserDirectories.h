#pragma once

#include <optional>

#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// The user's folder for what can be had again, as the session's machine names it. Any thread.
PLATFORM_EXPORT URL cachesDirectory();
/// Where the user's downloads go, made when it is missing; nothing when it can't be. Any thread.
PLATFORM_EXPORT std::optional<URL> downloadsDirectory();

}  // namespace platform
