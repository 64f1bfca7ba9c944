#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Canvas.h"
#include "Platform/Port/Clipboard.h"
#include "Platform/Port/Geometry.h"

namespace platform::port {

enum class PointerAction { leftDown, leftUp, rightDown, rightUp, otherDown, otherUp, moved, exited };

/// `location` in screen points, bottom-left origin; `modifiers` as event modifier flags; `time` as `LoopDriver::now`.
/// A move with a button held is `moved` too: the application knows which buttons are down.
struct PointerInput {
  PointerAction action = PointerAction::moved;
  Point location;
  std::uint64_t modifiers = 0;
  double time = 0;
};

/// Deltas in points; positive scrolls towards the start of the content.
struct WheelInput {
  Point location;
  double deltaX = 0;
  double deltaY = 0;
  std::uint64_t modifiers = 0;
  double time = 0;
};

/// `keyCode` is the virtual key code, mapped from the hardware code; texts are UTF-8.
struct KeyInput {
  bool down = true;
  std::uint16_t keyCode = 0;
  std::uint64_t modifiers = 0;
  std::string characters;
  std::string charactersIgnoringModifiers;
  bool repeated = false;
  double time = 0;
};

/// `inputMethod`: the back end offers the key to the input method, and `keyAfterInputMethod` follows when that leaves
/// it.
enum class KeyDisposition { handled, inputMethod };

/// What an input method asks of the focused text. Offsets and lengths are UTF-16 units.
struct TextInputState {
  Rect caret;  ///< screen points
  std::u16string surroundingText;
  std::size_t cursor = 0;
  std::size_t anchor = 0;
};

/// What a surface reports; implemented by the window. Main thread. The window may destroy the surface inside any call.
class SurfaceSink {
 public:
  virtual ~SurfaceSink() = default;
  virtual void surfacePaint(Canvas& canvas, const Rect& dirtyFromTopLeft) = 0;
  /// The user or the window manager gave the surface another frame; screen points.
  virtual void surfaceFrameChanged(const Rect& frame) = 0;
  virtual void surfaceActivated(bool active) = 0;
  /// The user or the window manager did it, or this is what became of all requests so far.
  virtual void surfaceMinimised(bool minimised) = 0;
  virtual void surfaceZoomed(bool zoomed) = 0;
  /// The user had the surface put above normal windows, or back among them.
  virtual void surfaceKeptAbove(bool above) = 0;
  virtual void surfaceCloseRequested() = 0;
  virtual void surfacePointer(const PointerInput& input) = 0;
  virtual void surfaceWheel(const WheelInput& input) = 0;
  virtual KeyDisposition surfaceKey(const KeyInput& input) = 0;
  virtual void surfaceKeyAfterInputMethod(const KeyInput& input) = 0;
  /// The preedit text now; empty when the composition ended without a commit. `caret` is its caret inside `text`.
  virtual void surfaceMarkedText(const std::u16string& text, std::size_t caret) = 0;
  virtual void surfaceCommittedText(const std::u16string& text) = 0;
  /// The input method removes `length` units that start `offset` units after the caret (negative: before).
  virtual void surfaceDeleteSurrounding(std::ptrdiff_t offset, std::size_t length) = 0;
  /// Nothing when no text has the focus.
  virtual std::optional<TextInputState> surfaceTextInput() = 0;
  /// Something is dragged over the surface, at `location` in screen points; borrowed for the call. Whether a copy of it
  /// would be taken there.
  virtual bool surfaceDragMoved(const Contents& contents, Point location) = 0;
  virtual void surfaceDragExited() = 0;
  /// It was dropped; whether a copy of it was taken.
  virtual bool surfaceDropped(const Contents& contents, Point location) = 0;
};

/// All of a surface that is state; the back end compares with what it showed before.
struct SurfaceState {
  Rect frame;  ///< screen points
  bool visible = false;
  int level = 0;  ///< 0 normal, 3 and more above normal windows
  double alpha = 1;
  std::string title;
  bool transparent = false;  ///< pixels may be see-through
  double cornerRadius = 0;   ///< points; the surface is cut to it where pixels can't be see-through
  double revealed = 1;       ///< the part that is shown, from the top edge; what is painted there slides along
  bool resizable = true;
  bool minimisable = true;
  bool skipsTaskbar = false;
  bool modal = false;  ///< takes the input of the surface it belongs to, or of all others
};

enum class Cursor { arrow, text, resizeHorizontal, resizeVertical, resizeRising, resizeFalling };

/// One window on the machine. Destroying it takes it off the screen.
class Surface {
 public:
  virtual ~Surface() = default;
  virtual void apply(const SurfaceState& state) = 0;
  /// Puts the surface directly above (or below) `sibling`, or above (below) all when null.
  virtual void restack(bool above, Surface* sibling) = 0;
  /// The surface that this one belongs to and stays above of; null for none.
  virtual void setParent(Surface* parent) = 0;
  virtual void activate() = 0;
  virtual void setMinimised(bool minimised) = 0;
  virtual void setZoomed(bool zoomed) = 0;
  /// Lets the machine move the surface with the pointer whose left button is down. False when it can't; otherwise
  /// frames are reported as the machine tells them, and a `leftUp` when the move has ended.
  virtual bool beginMove() = 0;
  /// `fromTopLeft` in surface points; painted at the next turn of the loop.
  virtual void invalidate(const Rect& fromTopLeft) = 0;
  virtual void setCursor(Cursor cursor) = 0;
  /// The text focus, the caret or the selection changed: ask `surfaceTextInput` again. `endComposition` makes the input
  /// method forget its preedit; nothing of it is committed any more.
  virtual void textInputChanged(bool endComposition) = 0;
  /// What the surface shows now. Nothing where a machine can't tell.
  virtual std::optional<Bitmap> snapshot() = 0;
  /// The machine's own number of the window (an X11 window id), 0 where there is none.
  virtual std::uint64_t nativeHandle() const = 0;
};

/// Screen points; `visibleFrame` leaves out docks and panels. The first screen is the primary one, its origin (0, 0).
struct ScreenInfo {
  Rect frame;
  Rect visibleFrame;
  double scale = 1;
  friend bool operator==(const ScreenInfo&, const ScreenInfo&) = default;
};

/// The window system.
class WindowHost {
 public:
  virtual ~WindowHost() = default;
  /// `sink` is borrowed and outlives the surface.
  virtual std::unique_ptr<Surface> makeSurface(SurfaceSink& sink, const SurfaceState& state) = 0;
  virtual std::vector<ScreenInfo> screens() const = 0;
  /// Called after screens came, went or changed. Null takes it away.
  virtual void setScreensChanged(std::function<void()> changed) = 0;
  virtual Point pointerLocation() const = 0;
};

}  // namespace platform::port
