#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>

#include "Backends/Desktop/XServer.h"

namespace desktop {

/// What the window manager tells of our windows where the toolkit doesn't listen, or mishears.
class WindowManagerEvents final : public QAbstractNativeEventFilter {
 public:
  using StateChanged = std::function<void(xcb_window_t window)>;

  /// `stateChanged` is called from the event loop after a window's _NET_WM_STATE was written.
  WindowManagerEvents(XServer& x, StateChanged stateChanged);
  ~WindowManagerEvents() override;
  WindowManagerEvents(const WindowManagerEvents&) = delete;
  WindowManagerEvents& operator=(const WindowManagerEvents&) = delete;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  xcb_atom_t activeWindow_;
  xcb_atom_t state_;
  StateChanged stateChanged_;
  QObject context_;
};

}  // namespace desktop
