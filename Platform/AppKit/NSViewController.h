#pragma once

#include <memory>
#include <utility>

#include "Platform/AppKit/NSView.h"
#include "Platform/Export.h"

namespace platform {

/// What stands behind a window's content view. Main thread.
class PLATFORM_EXPORT NSViewController {
 public:
  explicit NSViewController(std::shared_ptr<NSView> view) : view_(std::move(view)) {}
  virtual ~NSViewController() = default;
  std::shared_ptr<NSView> view() const { return view_; }

 private:
  std::shared_ptr<NSView> view_;
};

}  // namespace platform
