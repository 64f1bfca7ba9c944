#include "Platform/Foundation/Timer.h"

#include <algorithm>
#include <cmath>

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

constexpr double kShortestRepeat = 0.0001;

}  // namespace

std::shared_ptr<Timer> Timer::scheduledTimer(double interval, bool repeats, Block block) {
  requireMainThread("Timer::scheduledTimer");
  interval = std::max(interval, repeats ? kShortestRepeat : 0.0);
  RunLoop& loop = RunLoop::main();
  std::shared_ptr<Timer> timer(new Timer(interval, repeats, loop.now() + interval, std::move(block)));
  loop.schedule(timer);
  return timer;
}

Timer::Timer(double interval, bool repeats, double fireTime, Block block)
    : interval_(interval),
      repeats_(repeats),
      fireTime_(fireTime),
      block_(std::make_shared<const Block>(std::move(block))) {}

void Timer::fire(const RunLoop& loop) {
  // Held for the call: the block may invalidate its own timer.
  const auto block = block_;
  if (!repeats_) invalidate();
  struct Firing {
    Timer& timer;
    const RunLoop& loop;
    ~Firing() {
      timer.firing_ = false;
      if (timer.repeats_) timer.moveOn(loop.now());  // past what it missed while the block ran
    }
  } const firing{*this, loop};
  firing_ = true;
  if (*block) (*block)(*this);
}

void Timer::moveOn(double now) {
  fireTime_ += interval_ * (std::floor((now - fireTime_) / interval_) + 1);
  if (fireTime_ <= now) fireTime_ = now + interval_;  // the sum was lost to rounding
}

}  // namespace platform
