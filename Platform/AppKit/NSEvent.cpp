#include "Platform/AppKit/NSEvent.h"

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

std::shared_ptr<NSWindow> NSEvent::window() const {
  return NSApplication::shared().windowWithNumber(windowNumber);
}

}  // namespace platform
