#include "Backends/Desktop/ScreenSaverServices.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace desktop {

namespace {

constexpr std::chrono::seconds kPatience{5};

struct Place {
  std::string_view name;
  std::string_view path;
};
/// The interface has the service's name on all of them.
constexpr Place kPlaces[] = {
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
    {"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
    {"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
    {"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
    {"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"},
};

}  // namespace

ScreenSaverServices::ScreenSaverServices(SessionBus& bus, Listener listener)
    : bus_(bus), listener_(std::move(listener)) {
  for (const Place& place : kPlaces) {
    Service& service = services_.emplace_back(*this, std::string(place.name), std::string(place.path), std::string());
    bus_.onConnection([this, &service] { observe(service); });
    bus_.watchOwner(service.name, [this, &service](const std::string& owner) { ownerChanged(service, owner); });
  }
}

void ScreenSaverServices::observe(Service& service) {
  const std::string rule = "type='signal',interface='" + service.name + "',member='ActiveChanged'";
  const auto changed = [](sd_bus_message* message, void* which, sd_bus_error*) {
    auto& heard = *static_cast<Service*>(which);
    const char* const sender = sd_bus_message_get_sender(message);
    int active = 0;
    if (sender && sd_bus_message_read(message, "b", &active) > 0)
      heard.all.bus_.deliver(
          [&heard, from = std::string(sender), active] { heard.all.said(heard, from, active != 0); });
    return 0;
  };
  sd_bus_add_match_async(bus_.connection(), nullptr, rule.c_str(), changed, nullptr, &service);
}

void ScreenSaverServices::ownerChanged(Service& service, const std::string& owner) {
  service.owner = owner;
  // Whatever the one before said, nobody will take it back.
  listener_(service.name, false);
  if (owner.empty()) return;
  const auto question = bus_.newCall(owner.c_str(), service.path.c_str(), service.name.c_str(), "GetActive");
  bus_.call(question, kPatience, [this, &service, owner](const SessionBus::Reply& reply) {
    if (reply.succeeded) said(service, owner, reply.number != 0);
  });
}

void ScreenSaverServices::said(const Service& service, const std::string& sender, bool active) {
  if (sender == service.owner) listener_(service.name, active);
}

}  // namespace desktop
