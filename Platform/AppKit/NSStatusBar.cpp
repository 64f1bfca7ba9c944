#include "Platform/AppKit/NSStatusBar.h"

#include "Platform/Foundation/Session.h"

namespace platform {

NSStatusBar& NSStatusBar::system() {
  return Session::current().service<NSStatusBar>();
}

std::shared_ptr<NSStatusItem> NSStatusBar::statusItem(double length) {
  return NSStatusItem::make(length);
}

}  // namespace platform
