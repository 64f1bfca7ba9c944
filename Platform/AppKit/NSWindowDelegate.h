#pragma once

#include "Platform/Export.h"
#include "Platform/Port/Geometry.h"

namespace platform {

class NSWindow;

/// What a window tells its delegate. The delegate may close the window, drop itself or call back in from any member.
class PLATFORM_EXPORT NSWindowDelegate {
 public:
  virtual ~NSWindowDelegate() = default;
  virtual bool windowShouldClose(NSWindow& /*window*/) { return true; }
  virtual void windowWillClose(NSWindow& /*window*/) {}
  virtual void windowDidBecomeMain(NSWindow& /*window*/) {}
  virtual void windowDidResignMain(NSWindow& /*window*/) {}
  virtual void windowDidBecomeKey(NSWindow& /*window*/) {}
  virtual void windowDidResignKey(NSWindow& /*window*/) {}
  virtual Size windowWillResizeToSize(NSWindow& /*window*/, Size size) { return size; }
  virtual void windowDidResize(NSWindow& /*window*/) {}
  /// The user starts to move the window, or the window manager has begun to.
  virtual void windowWillMove(NSWindow& /*window*/) {}
  virtual void windowDidMove(NSWindow& /*window*/) {}
  virtual void windowDidMiniaturize(NSWindow& /*window*/) {}
  virtual void windowDidDeminiaturize(NSWindow& /*window*/) {}
  /// `rect`: where the sheet would hang, in the window's coordinates; height 0 at its top edge.
  virtual Rect windowWillPositionSheetUsingRect(NSWindow& /*window*/, NSWindow& /*sheet*/, Rect rect) { return rect; }
};

}  // namespace platform
