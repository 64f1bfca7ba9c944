#pragma once

#include <functional>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

/// Hears from the login manager (org.freedesktop.login1, on the system bus) that the machine goes to sleep and wakes.
/// Main thread.
class SystemSleep {
 public:
  /// `bus` is the system's; borrowed, and outlives this object.
  SystemSleep(SessionBus& bus, std::function<void(bool asleep)> changed);

 private:
  void observe();

  SessionBus& bus_;
  std::function<void(bool)> changed_;
};

}  // namespace desktop
