#pragma once

#include <memory>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Export.h"

namespace platform {

/// A window beside the application's real ones: it can be key, never main. Main thread.
class PLATFORM_EXPORT NSPanel : public NSWindow {
 public:
  static std::shared_ptr<NSPanel> make(const Rect& contentRect, unsigned styleMask);
  bool isPanel() const override { return true; }
  bool canBecomeMain() const override { return false; }

 protected:
  using NSWindow::NSWindow;
};

}  // namespace platform
