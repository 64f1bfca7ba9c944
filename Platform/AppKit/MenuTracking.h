#pragma once

#include <memory>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/Geometry.h"

namespace platform {

class NSMenu;
class NSMenuItem;
class NSWindow;

/// Where the top left corner of a menu goes that was asked for at `wanted`: right of and below it, on the other side
/// where there is no room, and inside the work area of the screen that holds `wanted` in any case; one that is larger
/// shows its top left. Screen points, bottom-left origin.
PLATFORM_EXPORT Point menuOrigin(Point wanted, Size size);

/// The application's menus that are on the screen. Main thread.
class MenuTracking {
 public:
  static MenuTracking& shared();

  /// Shows the menu until it is closed; the chosen item, or null. `window` is the one that the menu belongs to, null
  /// for none. Menus that are open already close.
  std::shared_ptr<NSMenuItem> track(const NSMenu& menu, Point onScreen, const NSWindow* window);
  /// The window has left the screen: so do its menus.
  void windowLeft(const NSWindow& window);
  void closeAll();

 private:
  std::vector<const NSWindow*> open_;  ///< the windows of the open menus, the newest last
};

}  // namespace platform
