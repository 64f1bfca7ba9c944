#pragma once

#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// The user's folder for what can be had again, as the session's machine names it. Any thread.
PLATFORM_EXPORT URL cachesDirectory();

}  // namespace platform
