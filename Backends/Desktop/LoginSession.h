#pragma once

#include <functional>
#include <string>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

/// Hears from the login manager (org.freedesktop.login1, on the system bus) whether the user's session is locked: what
/// it notes of it, and that it asks for locking and unlocking. Main thread.
class LoginSession {
 public:
  /// `bus` is borrowed and outlives this object. `changed` may hear the same again.
  LoginSession(SessionBus& bus, std::function<void(bool locked)> changed);

 private:
  void observe();
  void ownerChanged(const std::string& owner);
  void found(const std::string& path);
  /// A handler of the bus library for signals of any session.
  static int heard(sd_bus_message* message, void* self, sd_bus_error* error);

  SessionBus& bus_;
  std::function<void(bool)> changed_;
  std::string path_;  ///< of our session; empty while it isn't known
};

}  // namespace desktop
