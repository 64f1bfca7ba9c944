#include "Platform/Foundation/RunLoop.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Platform/Foundation/DispatchQueues.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

// Between so many blocks the machine's own input gets its chance.
constexpr int kBlocksInATurn = 64;

}  // namespace

RunLoop& RunLoop::main() {
  return Session::current().service<RunLoop>();
}

RunLoop::RunLoop()
    : driver_(Session::current().backend().loop()),
      mainQueue_(std::make_unique<MainQueue>(driver_)),
      globalQueue_(std::make_unique<GlobalQueue>(driver_)) {
  driver_.setSink(this);
}

RunLoop::~RunLoop() {
  driver_.setSink(nullptr);
}

DispatchQueue& RunLoop::mainQueue() {
  return *mainQueue_;
}
DispatchQueue& RunLoop::globalQueue() {
  return *globalQueue_;
}
double RunLoop::now() const {
  return driver_.now();
}

double RunLoop::wallClock() const {
  return driver_.wallClock();
}

bool RunLoop::runUntil(const std::function<bool()>& done, double deadline) {
  requireMainThread("RunLoop::runUntil");
  while (!done()) {
    if (now() >= deadline) return false;
    turn(deadline);
  }
  return true;
}

void RunLoop::turn(double deadline) {
  requireMainThread("RunLoop::turn");
  if (runDueReporting()) return;
  driver_.wait(std::min(deadline, nextDue()));
  service();
}

void RunLoop::runDue() {
  requireMainThread("RunLoop::runDue");
  service();
}

void RunLoop::addSource(std::function<bool()> source) {
  requireMainThread("RunLoop::addSource");
  sources_.push_back(std::move(source));
}

void RunLoop::schedule(const std::shared_ptr<Timer>& timer) {
  requireMainThread("RunLoop::schedule");
  timers_.push_back(timer);
}

double RunLoop::service() {
  // What was found due may have made more: that is for the next turn, which is wanted at once.
  return runDueReporting() ? now() : nextDue();
}

bool RunLoop::expectsWake() const {
  return globalQueue_->isBusy();
}

bool RunLoop::runDueReporting() {
  bool did = mainQueue_->run(kBlocksInATurn);
  did |= fireTimers();
  for (std::size_t i = 0; i < sources_.size(); ++i) did |= sources_[i]();
  return did;
}

bool RunLoop::fireTimers() {
  std::erase_if(timers_, [](const auto& timer) { return !timer->isValid(); });
  const double time = now();
  std::vector<std::shared_ptr<Timer>> due;
  std::ranges::copy_if(timers_, std::back_inserter(due), [time](const auto& timer) { return timer->isDueAt(time); });
  std::ranges::stable_sort(due, {}, [](const auto& timer) { return timer->fireTime_; });
  for (const auto& timer : due)
    if (timer->isDueAt(time)) timer->fire(*this);
  return !due.empty();
}

double RunLoop::nextDue() const {
  if (!mainQueue_->isEmpty()) return now();
  double next = std::numeric_limits<double>::infinity();
  for (const auto& timer : timers_)
    if (timer->isValid() && !timer->firing_) next = std::min(next, timer->fireTime_);
  return next;
}

void RunLoop::shutDown() {
  globalQueue_->shutDown();
  // Whatever is destroyed here may schedule anew; sources stay in place, since one may be running.
  do {
    mainQueue_->clear();
    for (const auto& timer : std::exchange(timers_, {})) timer->invalidate();
  } while (!mainQueue_->isEmpty() || !timers_.empty());
  sources_.clear();
}

}  // namespace platform
