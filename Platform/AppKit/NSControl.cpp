#include "Platform/AppKit/NSControl.h"

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

bool NSControl::sendAction() {
  if (action_.empty()) return false;
  const auto alive = shared_from_this();
  const std::string selector = action_;  // whoever carries it out may set another one
  if (doCommand(selector)) return true;
  const auto key = NSApplication::shared().keyWindow();
  return key && key->firstResponder()->doCommand(selector);
}

}  // namespace platform
