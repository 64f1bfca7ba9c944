#include "Platform/AppKit/NSWindowController.h"

#include "Platform/AppKit/NSWindow.h"

namespace platform {

void NSWindowController::setWindowFrameAutosaveName(const std::string& name) {
  name_ = name;
  if (const auto window = window_.lock()) window->setFrameAutosaveName(name);
}

}  // namespace platform
