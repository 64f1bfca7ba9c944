#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace desktop {

struct BusMessageFree {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageFree>;

}  // namespace desktop
