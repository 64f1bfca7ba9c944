#pragma once

#include <memory>
#include <string_view>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Export.h"

namespace platform {

/// One who can have the keyboard focus and gets events; what it doesn't handle goes to its next responder.
class PLATFORM_EXPORT NSResponder : public std::enable_shared_from_this<NSResponder> {
 public:
  NSResponder() = default;
  NSResponder(const NSResponder&) = delete;
  NSResponder& operator=(const NSResponder&) = delete;
  virtual ~NSResponder() = default;

  /// Null at the chain's end. Borrowed; ask again after any call that may change the tree.
  virtual NSResponder* nextResponder() { return nullptr; }

  virtual bool acceptsFirstResponder() { return false; }
  /// Asked by `NSWindow::makeFirstResponder`; false refuses the focus.
  virtual bool becomeFirstResponder() { return true; }
  /// False keeps the focus.
  virtual bool resignFirstResponder() { return true; }

  virtual void mouseDown(const EventPointer& event);
  virtual void mouseUp(const EventPointer& event);
  virtual void mouseDragged(const EventPointer& event);
  virtual void mouseMoved(const EventPointer& event);
  virtual void mouseEntered(const EventPointer& event);
  virtual void mouseExited(const EventPointer& event);
  virtual void rightMouseDown(const EventPointer& event);
  virtual void rightMouseUp(const EventPointer& event);
  virtual void otherMouseDown(const EventPointer& event);
  virtual void scrollWheel(const EventPointer& event);
  virtual void keyDown(const EventPointer& event);
  virtual void keyUp(const EventPointer& event);
  /// True when the event was a shortcut that was carried out.
  virtual bool performKeyEquivalent(const EventPointer& event);
  /// An editing command by selector name ("moveLeft:", "insertNewline:"). True when it was carried out here.
  virtual bool doCommand(std::string_view selector);
};

}  // namespace platform
