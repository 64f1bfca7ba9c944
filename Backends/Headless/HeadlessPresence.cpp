#include "Backends/Headless/HeadlessPresence.h"

#include <cmath>

namespace headless {

std::optional<std::uint64_t> HeadlessPresence::idleNanoseconds() {
  if (faults_.idleTimeUnreadable) return std::nullopt;
  return static_cast<std::uint64_t>(std::llround((loop_.now() - lastInput_) * 1e9));
}

void HeadlessPresence::setScreensAsleep(bool asleep) {
  loop_.deliver([this, asleep] {
    if (std::exchange(asleep_, asleep) == asleep || !changed_) return;
    const auto changed = changed_;  // it may be replaced from inside
    changed(asleep);
  });
}

}  // namespace headless
