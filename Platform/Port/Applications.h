#pragma once

namespace platform::port {

/// The windows of other processes, as the window manager knows them. Main thread.
class Applications {
 public:
  virtual ~Applications() = default;
  /// Brings the process's front-most window to the front with the focus. False when it has no window.
  virtual bool activate(int processIdentifier) = 0;
};

}  // namespace platform::port
