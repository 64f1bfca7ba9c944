#pragma once

#include <string>
#include <utility>

#include "Platform/AppKit/NSView.h"

namespace platform {

/// A view that the user operates: a button, a field. Main thread.
class PLATFORM_EXPORT NSControl : public NSView {
 public:
  using NSView::NSView;

  int tag() const override { return tag_; }
  void setTag(int tag) { tag_ = tag; }

  /// The command (a selector name, "clear:") that using the control sends; empty for none.
  const std::string& action() const { return action_; }
  void setAction(std::string selector) { action_ = std::move(selector); }
  /// Sends the action. It has no fixed target: the first of the control's own next responders that knows the command
  /// carries it out, else the first one from the key window's focus on. False when nobody does.
  bool sendAction();

 private:
  int tag_ = -1;
  std::string action_;
};

}  // namespace platform
