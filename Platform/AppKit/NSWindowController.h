#pragma once

#include <memory>
#include <string>

#include "Platform/Export.h"

namespace platform {

class NSWindow;

/// Keeps a window's frame under a name across runs. Main thread.
class PLATFORM_EXPORT NSWindowController {
 public:
  explicit NSWindowController(std::weak_ptr<NSWindow> window) : window_(std::move(window)) {}
  std::shared_ptr<NSWindow> window() const { return window_.lock(); }
  /// Restores the frame saved under the name, if any, and saves it there at each change.
  void setWindowFrameAutosaveName(const std::string& name);
  const std::string& windowFrameAutosaveName() const { return name_; }

 private:
  std::weak_ptr<NSWindow> window_;
  std::string name_;
};

}  // namespace platform
