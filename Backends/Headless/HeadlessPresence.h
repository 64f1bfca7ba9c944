#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Platform/Port/Presence.h"

namespace headless {

/// A user who was there last when a test said so, and screens that sleep when it says so.
class HeadlessPresence final : public platform::port::Presence {
 public:
  HeadlessPresence(HeadlessLoop& loop, const Faults& faults) : loop_(loop), faults_(faults) {}

  std::optional<std::uint64_t> idleNanoseconds() override;
  void setScreensAsleepChanged(std::function<void(bool asleep)> changed) override { changed_ = std::move(changed); }

  /// The user does something, here or in another application.
  void userActs() { lastInput_ = loop_.now(); }
  /// Told at the loop's next turn, if it is a change.
  void setScreensAsleep(bool asleep);

 private:
  HeadlessLoop& loop_;
  const Faults& faults_;
  double lastInput_ = 0;
  bool asleep_ = false;
  std::function<void(bool)> changed_;
};

}  // namespace headless
