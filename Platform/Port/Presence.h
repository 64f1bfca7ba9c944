#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace platform::port {

/// Whether somebody is at the machine. Main thread.
class Presence {
 public:
  virtual ~Presence() = default;
  /// Nanoseconds since the user's last input anywhere on the desktop; nothing when that can't be read. A service that
  /// doesn't answer costs a few milliseconds, and that ever more seldom.
  virtual std::optional<std::uint64_t> idleNanoseconds() = 0;
  /// `changed` is called with true when the screens went to sleep and with false when they woke, once each however many
  /// services tell of it. Null takes it away.
  virtual void setScreensAsleepChanged(std::function<void(bool asleep)> changed) = 0;
};

}  // namespace platform::port
