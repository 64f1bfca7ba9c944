#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Backends/Desktop/SessionBus.h"
#include "Platform/Foundation/FileDescriptor.h"

namespace desktop {

/// Hears from the login manager (org.freedesktop.login1, on the system bus) that the machine goes to sleep and wakes,
/// and has it wait with the sleep until that is told, for as long as it is ready to wait. Main thread.
class SystemSleep {
 public:
  /// `bus` is the system's; borrowed, and outlives this object.
  SystemSleep(SessionBus& bus, std::function<void(bool asleep)> changed);

 private:
  void observe();
  void ownerChanged(const std::string& owner);
  void prepares(bool asleep);
  void askForDelay();

  SessionBus& bus_;
  std::function<void(bool)> changed_;
  bool asleep_ = false;
  std::shared_ptr<const platform::FileDescriptor> delay_;  ///< the manager waits while it is open
};

}  // namespace desktop
