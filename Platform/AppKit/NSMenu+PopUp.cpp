#include "Platform/AppKit/Attempts.h"
#include "Platform/AppKit/MenuTracking.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

bool NSMenu::popUp(Point location, const NSView* view) {
  requireMainThread("NSMenu::popUp");
  const auto alive = weak_from_this().lock();
  std::shared_ptr<NSMenuItem> chosen;
  // The application runs meanwhile: whatever is thrown there, the menu has closed and its delegate hears of it.
  Attempts attempt;
  attempt([&] {
    if (!view) {
      chosen = MenuTracking::shared().track(*this, location, nullptr);
    } else if (const NSWindow* window = view->window(); window && window->isVisible()) {
      const Point onScreen = window->convertPointToScreen(view->convertTo(location, nullptr));
      chosen = MenuTracking::shared().track(*this, onScreen, window);
    }
  });
  attempt([&] {
    if (const auto told = delegate()) told->menuDidClose(*this);
  });
  attempt.finish();
  return chosen && chosen->perform();
}

}  // namespace platform
