#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>
#include <cstdint>
#include <functional>

#include "Backends/Desktop/XServer.h"

namespace desktop {

/// Tells when the window manager has done what was asked of it. It works off requests in their order, so it is asked
/// last for something that changes nothing and that it must answer: the frame extents of a window that is never shown
/// (EWMH, _NET_REQUEST_FRAME_EXTENTS). One that doesn't answer is taken for done after a while. Main thread.
class WindowManagerFence final : public QAbstractNativeEventFilter {
 public:
  using Ticket = std::uint64_t;

  /// `passed` is called from the event loop each time that more tickets have passed.
  WindowManagerFence(XServer& x, std::function<void()> passed);
  ~WindowManagerFence() override;
  WindowManagerFence(const WindowManagerFence&) = delete;
  WindowManagerFence& operator=(const WindowManagerFence&) = delete;

  /// A ticket that passes when all that was asked so far has been done.
  Ticket issue();
  bool hasPassed(Ticket ticket) const { return ticket <= passed_; }

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  void ask();
  void answered();

  XServer& x_;
  std::function<void()> told_;
  xcb_atom_t extents_;
  xcb_window_t window_;
  Ticket issued_ = 0;
  Ticket asked_ = 0;
  Ticket passed_ = 0;
  QTimer quiet_;     ///< many requests in a row are asked about once
  QTimer patience_;  ///< runs while the answer is awaited
};

}  // namespace desktop
