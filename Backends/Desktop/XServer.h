#pragma once

#include <xcb/xcb.h>

#include <QRect>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace desktop {

/// What the toolkit doesn't say to the X server and the window manager, in its own connection so that all stays in
/// order. Names are those of the EWMH and ICCCM. Main thread.
class XServer {
 public:
  /// The toolkit's connection must stand.
  XServer();

  xcb_connection_t* connection() const { return connection_; }
  xcb_window_t root() const { return root_; }
  void flush() { xcb_flush(connection_); }
  xcb_atom_t atom(const std::string& name);

  bool hasWindowManager();
  /// Whether the running window manager lists `hint` in _NET_SUPPORTED.
  bool supports(const std::string& hint);
  bool hasCompositor();

  /// Adds or removes a _NET_WM_STATE of a mapped window.
  void changeState(xcb_window_t window, const std::string& state, bool on);
  /// Puts the window directly above or below `sibling`. Only without a window manager: all of those that reparent
  /// refuse it, and what they take instead (_NET_RESTACK_WINDOW) some don't know and some answer by a plain raise.
  void stack(xcb_window_t window, bool above, xcb_window_t sibling);
  /// Asks the window manager to raise the window over `top`, the highest one (ICCCM 4.1.5). Of a raise that names no
  /// sibling some window managers believe that the user is meant to look at the window, and activate it.
  void raiseAbove(xcb_window_t window, xcb_window_t top);
  /// Managed windows from the lowest to the highest, as the window manager tells.
  std::vector<xcb_window_t> stacking();
  bool hasState(xcb_window_t window, const std::string& state);
  /// Whether the window manager has minimised it. One on another desktop is iconic, too, but not hidden.
  bool isMinimised(xcb_window_t window);
  /// Whether the window belongs to one of the layers over that of normal windows.
  bool isKeptAbove(xcb_window_t window);
  /// A window that is never shown, and tells when its properties are written.
  xcb_window_t makeHiddenWindow();
  void destroyWindow(xcb_window_t window);
  /// Has the window manager write the _NET_FRAME_EXTENTS of a window that isn't shown; false where it can't be asked.
  bool requestFrameExtents(xcb_window_t window);
  /// The process that a window says it belongs to; 0 for none.
  int processOf(xcb_window_t window);
  /// Asks for a window to be shown and given the focus, as a pager does for its user: a window manager that keeps
  /// programs from stealing the focus grants it.
  void activateForUser(xcb_window_t window);
  void setTransientFor(xcb_window_t window, xcb_window_t parent);
  void setClass(xcb_window_t window, const std::string& name);
  /// A normal window. The toolkit adds a type to frameless ones that makes a window manager refuse to move or maximise
  /// them.
  void setNormalType(xcb_window_t window);
  /// Which of moving, resizing, minimising, maximising and closing the window manager may offer; no decorations.
  void setFunctions(xcb_window_t window, bool resizable, bool minimisable);

  /// Where the window really is, in pixels of the root window; nothing for a window that is gone.
  std::optional<QRect> geometry(xcb_window_t window);
  /// The window with the focus, grabbed keyboard or not; one that is nobody's for none.
  xcb_window_t inputFocus();
  /// Buttons and modifiers that are down now, as the core protocol's state mask.
  std::uint16_t pointerState();
  /// Whether another program has grabbed the pointer; found out by grabbing it for a moment in the name of `window`.
  bool isPointerTaken(xcb_window_t window);
  /// Whether the hardware key is held, auto-repeat or not.
  bool isDown(std::uint8_t keycode);

 private:
  std::vector<std::uint32_t> property(xcb_window_t window, const std::string& name, xcb_atom_t type);
  void sendToRoot(const void* event);
  void sendMessage(xcb_window_t window, const std::string& message, const std::uint32_t (&data)[5]);

  xcb_connection_t* connection_;
  xcb_window_t root_;
  int screen_ = 0;
  std::map<std::string, xcb_atom_t> atoms_;
};

}  // namespace desktop
