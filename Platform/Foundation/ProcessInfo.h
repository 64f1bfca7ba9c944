#pragma once

#include "Platform/Export.h"

namespace platform {

/// The major version of the system whose behaviour the platform shows: 11, unless a test asks for an older one.
PLATFORM_EXPORT int operatingSystemVersion();
PLATFORM_EXPORT void setOperatingSystemVersionForTesting(int major);

}  // namespace platform
