#include "Platform/AppKit/NSEvent.h"

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

std::shared_ptr<NSWindow> NSEvent::window() const {
  return NSApplication::shared().windowWithNumber(windowNumber);
}

Point NSEvent::mouseLocation() {
  return Session::current().backend().windows().pointerLocation();
}

}  // namespace platform
