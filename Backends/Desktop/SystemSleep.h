#pragma once

#include <functional>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

/// Hears from the login manager (org.freedesktop.login1, on the system bus) that the machine goes to sleep and wakes.
/// Main thread.
class SystemSleep {
 public:
  explicit SystemSleep(std::function<void(bool asleep)> changed);

 private:
  void observe();

  std::function<void(bool)> changed_;
  SessionBus bus_{SessionBus::Kind::system};
};

}  // namespace desktop
