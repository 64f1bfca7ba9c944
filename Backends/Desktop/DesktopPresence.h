#pragma once

#include <functional>
#include <set>
#include <string>

#include "Backends/Desktop/DisplayPower.h"
#include "Backends/Desktop/IdleMonitor.h"
#include "Backends/Desktop/LoginSession.h"
#include "Backends/Desktop/ScreenSaverServices.h"
#include "Backends/Desktop/SystemSleep.h"
#include "Backends/Desktop/XScreenSaver.h"
#include "Platform/Port/Presence.h"

namespace desktop {

/// The user's idle time from whoever sees all input: the desktop's own monitor on the bus before the X server. The
/// screens are asleep as long as anybody says so: a screen saver on the bus, the X server's or its power saving, the
/// login manager of the machine or of the session, which is locked then.
class DesktopPresence final : public platform::port::Presence {
 public:
  /// `bus` is borrowed and outlives this object.
  explicit DesktopPresence(SessionBus& bus);

  std::optional<std::uint64_t> idleNanoseconds() override;
  void setScreensAsleepChanged(std::function<void(bool asleep)> changed) override { changed_ = std::move(changed); }

 private:
  void heard(const std::string& source, bool asleep);
  void saverHeard(const std::string& source, bool active);

  std::function<void(bool)> changed_;
  std::set<std::string> asleep_;  ///< those who say so
  IdleMonitor compositor_;
  IdleMonitor sessionManager_;
  XScreenSaver x_;
  DisplayPower power_;
  ScreenSaverServices services_;
  SessionBus systemBus_{SessionBus::Kind::system};
  SystemSleep system_;
  LoginSession session_;
};

}  // namespace desktop
