#include "Platform/AppKit/NSAnimation.h"

#include <algorithm>

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Timer.h"

namespace platform {

namespace {

constexpr double kStep = 1.0 / 60;

double eased(double fraction) {
  return fraction * fraction * (3 - 2 * fraction);
}

}  // namespace

NSAnimation::NSAnimation(double duration, std::function<void(double)> step) {
  const double start = RunLoop::main().now();
  timer_ = Timer::scheduledTimer(kStep, true, [=, step = std::move(step)](Timer& timer) {
    const double passed = RunLoop::main().now() - start;
    // A hair of rounding must not cost another step.
    const bool over = passed > duration - kStep / 100;
    if (over) timer.invalidate();
    step(over ? 1 : eased(passed / duration));
  });
}

NSAnimation::~NSAnimation() {
  timer_->invalidate();
}

}  // namespace platform
