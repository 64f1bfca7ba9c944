#include "Backends/Desktop/SystemSleep.h"

#include <utility>

namespace desktop {

namespace {

constexpr const char* kManager = "org.freedesktop.login1";
constexpr const char* kRule =
    "type='signal',interface='org.freedesktop.login1.Manager',member='PrepareForSleep',path='/org/freedesktop/login1'";

}  // namespace

SystemSleep::SystemSleep(SessionBus& bus, std::function<void(bool asleep)> changed)
    : bus_(bus), changed_(std::move(changed)) {
  bus_.onConnection([this] { observe(); });
  // One that has gone won't say that the machine woke.
  bus_.watchOwner(kManager, [this](const std::string& owner) {
    if (owner.empty()) changed_(false);
  });
}

void SystemSleep::observe() {
  const auto prepares = [](sd_bus_message* message, void* self, sd_bus_error*) {
    auto& heard = *static_cast<SystemSleep*>(self);
    int asleep = 0;
    if (sd_bus_message_read(message, "b", &asleep) > 0)
      heard.bus_.deliver([&heard, asleep] { heard.changed_(asleep != 0); });
    return 0;
  };
  sd_bus_add_match_async(bus_.connection(), nullptr, kRule, prepares, nullptr, this);
}

}  // namespace desktop
