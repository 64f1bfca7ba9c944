#pragma once

#include <memory>

#include "Platform/AppKit/NSStatusItem.h"
#include "Platform/Export.h"

namespace platform {

/// As wide as it is high.
inline constexpr double kSquareStatusItemLength = -2;

/// The desktop's status bar. Main thread.
class PLATFORM_EXPORT NSStatusBar {
 public:
  static NSStatusBar& system();
  /// A new item without an image or a menu. Also where the desktop has no status bar, or none yet.
  std::shared_ptr<NSStatusItem> statusItem(double length);
};

}  // namespace platform
