#include "Backends/Desktop/DesktopPresence.h"

#include <utility>

namespace desktop {

namespace {

constexpr IdleMonitor::Place kCompositor{"org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
                                         "org.gnome.Mutter.IdleMonitor", "GetIdletime", true};
/// Asked last: some of those who own the name count in seconds, but not the one that runs without an X server.
constexpr IdleMonitor::Place kSessionManager{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                             "org.freedesktop.ScreenSaver", "GetSessionIdleTime", false};
constexpr const char* kMachine = "machine";
constexpr const char* kSession = "session";
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;

}  // namespace

DesktopPresence::DesktopPresence(SessionBus& bus)
    : compositor_(bus, kCompositor),
      sessionManager_(bus, kSessionManager),
      x_([this](bool active) { saverHeard("X", active); }),
      power_([this](bool off) { heard("power", off); }),
      services_(bus, [this](const std::string& service, bool active) { saverHeard(service, active); }),
      system_(systemBus_, [this](bool asleep) { heard(kMachine, asleep); }),
      session_(systemBus_, [this](bool locked) { heard(kSession, locked); }) {}

std::optional<std::uint64_t> DesktopPresence::idleNanoseconds() {
  auto milliseconds = compositor_.idleMilliseconds();
  if (!milliseconds) milliseconds = x_.idleMilliseconds();
  if (!milliseconds) milliseconds = sessionManager_.idleMilliseconds();
  if (!milliseconds) return std::nullopt;
  return *milliseconds * kNanosecondsPerMillisecond;
}

void DesktopPresence::saverHeard(const std::string& source, bool active) {
  const bool was = asleep_.contains(source);
  heard(source, active);
  // Some lock the session when the login manager asks for it, and tell nobody but by this that it is unlocked.
  if (was && !active) heard(kSession, false);
}

void DesktopPresence::heard(const std::string& source, bool asleep) {
  const bool before = !asleep_.empty();
  if (asleep)
    asleep_.insert(source);
  else
    asleep_.erase(source);
  const bool now = !asleep_.empty();
  if (now == before || !changed_) return;
  const auto changed = changed_;  // it may be replaced from inside
  changed(now);
}

}  // namespace desktop
