#pragma once

#include <optional>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/WindowHost.h"

namespace platform {

/// Screens as values; the first one is the primary one.
class PLATFORM_EXPORT NSScreen {
 public:
  static std::vector<port::ScreenInfo> screens();
  /// The screen that shows most of a frame; nothing when none shows any of it.
  static std::optional<port::ScreenInfo> screenFor(const Rect& frame);
};

}  // namespace platform
