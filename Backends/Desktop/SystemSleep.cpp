#include "Backends/Desktop/SystemSleep.h"

#include <QCoreApplication>
#include <utility>

#include "Backends/Desktop/LoginManager.h"

namespace desktop {

namespace {

constexpr const char* kRule =
    "type='signal',sender='org.freedesktop.login1',interface='org.freedesktop.login1.Manager',"
    "member='PrepareForSleep',path='/org/freedesktop/login1'";

}  // namespace

SystemSleep::SystemSleep(SessionBus& bus, std::function<void(bool asleep)> changed)
    : bus_(bus), changed_(std::move(changed)) {
  bus_.onConnection([this] { observe(); });
  bus_.watchOwner(loginmanager::kName, [this](const std::string& owner) { ownerChanged(owner); });
}

void SystemSleep::observe() {
  const auto heard = [](sd_bus_message* message, void* self, sd_bus_error*) {
    auto& sleep = *static_cast<SystemSleep*>(self);
    int asleep = 0;
    if (sd_bus_message_read(message, "b", &asleep) > 0)
      sleep.bus_.deliver([&sleep, asleep] { sleep.prepares(asleep != 0); });
    return 0;
  };
  sd_bus_add_match_async(bus_.connection(), nullptr, kRule, heard, nullptr, this);
}

void SystemSleep::ownerChanged(const std::string& owner) {
  asleep_ = false;
  delay_.reset();
  if (!owner.empty()) return askForDelay();
  // One that has gone won't say that the machine woke.
  changed_(false);
}

void SystemSleep::prepares(bool asleep) {
  asleep_ = asleep;
  // Given up when all have been told, or one of them has thrown.
  const auto delay = std::exchange(delay_, nullptr);
  if (!asleep) askForDelay();
  changed_(asleep);
}

void SystemSleep::askForDelay() {
  const auto question = loginmanager::newCall(bus_, "Inhibit");
  const std::string who = QCoreApplication::applicationName().toStdString();
  if (!question || sd_bus_message_append(question.get(), "ssss", "sleep", who.c_str(),
                                         "The application is told of the sleep first", "delay") < 0)
    return;
  bus_.call(question, loginmanager::kPatience, [this](const SessionBus::Reply& reply) {
    if (!asleep_) delay_ = reply.descriptor;
  });
}

}  // namespace desktop
