#pragma once

#include <deque>
#include <functional>
#include <string>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

/// The desktop's screen saver, under whichever of its names it stands on the bus: asked when it appears, then heard.
/// One that answers with an error is left alone until it says something itself. Main thread.
class ScreenSaverServices {
 public:
  /// Hears a service's name and whether it says that the screens are blanked; false as well when it goes away.
  using Listener = std::function<void(const std::string& service, bool active)>;

  /// `bus` is borrowed and outlives this object.
  ScreenSaverServices(SessionBus& bus, Listener listener);

 private:
  struct Service {
    ScreenSaverServices& all;
    std::string name;
    std::string path;
    std::string owner;
  };

  void observe(Service& service);
  void ownerChanged(Service& service, const std::string& owner);
  void said(const Service& service, const std::string& sender, bool active);

  SessionBus& bus_;
  Listener listener_;
  std::deque<Service> services_;  // a deque: the bus library keeps their addresses
};

}  // namespace desktop
