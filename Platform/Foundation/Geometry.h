#pragma once

#include <string>

#include "Platform/Export.h"
#include "Platform/Port/Geometry.h"

namespace platform {

/// "{{x, y}, {width, height}}", numbers as short as they read back exactly.
PLATFORM_EXPORT std::string NSStringFromRect(const Rect& rect);
/// "{width, height}"
PLATFORM_EXPORT std::string NSStringFromSize(const Size& size);

}  // namespace platform
