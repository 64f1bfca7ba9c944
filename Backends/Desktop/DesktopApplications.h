#pragma once

#include "Backends/Desktop/XServer.h"
#include "Platform/Port/Applications.h"

namespace desktop {

/// Finds windows by _NET_WM_PID and asks the window manager with _NET_ACTIVE_WINDOW (EWMH).
class DesktopApplications final : public platform::port::Applications {
 public:
  bool activate(int processIdentifier) override;

 private:
  XServer server_;
};

}  // namespace desktop
