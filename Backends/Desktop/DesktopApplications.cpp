#include "Backends/Desktop/DesktopApplications.h"

#include <algorithm>

namespace desktop {

bool DesktopApplications::activate(int processIdentifier) {
  const auto windows = server_.stacking();
  const auto frontMost = std::find_if(windows.rbegin(), windows.rend(), [&](xcb_window_t window) {
    return server_.processOf(window) == processIdentifier;
  });
  if (frontMost == windows.rend()) return false;
  server_.activateForUser(*frontMost);
  server_.flush();
  return true;
}

}  // namespace desktop
