#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Backends/Desktop/SessionBus.h"

namespace desktop {

/// The idle clock of the desktop's own compositor on the bus. It is asked and waited for a few milliseconds; one that
/// doesn't answer by then isn't asked again for some seconds, for more and more the longer it stays silent. Main
/// thread.
class IdleMonitor {
 public:
  /// Where a service tells milliseconds. Texts are borrowed for good.
  struct Place {
    const char* name;
    const char* path;
    const char* interface;
    const char* member;
    bool isWide;  ///< a 64-bit number
  };

  /// `bus` is borrowed and outlives this object.
  IdleMonitor(SessionBus& bus, const Place& place);

  /// Nothing while nobody owns the name, or its owner doesn't answer.
  std::optional<std::uint64_t> idleMilliseconds();

 private:
  struct Closer {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };

  std::optional<std::uint64_t> ask();

  const Place& place_;
  std::string owner_;
  /// A connection without anything to observe, so that nothing else comes while it waits.
  std::unique_ptr<sd_bus, Closer> own_;
  std::chrono::steady_clock::time_point quietUntil_;
  std::chrono::seconds quiet_;
};

}  // namespace desktop
