#pragma once

#include <chrono>

#include "Backends/Desktop/SessionBus.h"

/// The login manager (org.freedesktop.login1), on the system bus.
namespace desktop::loginmanager {

inline constexpr const char* kName = "org.freedesktop.login1";
/// How long its answers are waited for.
inline constexpr std::chrono::seconds kPatience{5};

/// A call of a method of its own; null without a connection.
inline BusMessage newCall(const SessionBus& bus, const char* member) {
  return bus.newCall(kName, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", member);
}

}  // namespace desktop::loginmanager
