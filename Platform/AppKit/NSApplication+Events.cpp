#include <algorithm>
#include <limits>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/ScopedDepth.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

void NSApplication::postEvent(EventPointer event, bool atStart) {
  if (!event) return;
  if (queue_.empty()) Session::current().backend().loop().wake();
  if (atStart)
    queue_.push_front(std::move(event));
  else
    queue_.push_back(std::move(event));
}

EventPointer NSApplication::nextEvent(std::uint64_t mask, double deadline) {
  return takeEvent(mask, deadline, [] { return false; });
}

EventPointer NSApplication::takeEvent(std::uint64_t mask, double deadline, const std::function<bool()>& abandoned) {
  const ScopedDepth tracking(trackingDepth_);
  RunLoop& loop = RunLoop::main();
  for (;;) {
    if (abandoned()) return nullptr;
    if (auto event = takeQueued(mask)) return currentEvent_ = event;
    if (loop.now() >= deadline || stopped_) return nullptr;
    loop.turn(deadline < std::numeric_limits<double>::max() ? deadline : std::numeric_limits<double>::infinity());
  }
}

EventPointer NSApplication::takeQueued(std::uint64_t mask) {
  const auto found = std::find_if(queue_.begin(), queue_.end(),
                                  [&](const EventPointer& event) { return mask & eventMask(event->type); });
  if (found == queue_.end()) return nullptr;
  EventPointer taken = std::move(*found);
  queue_.erase(found);
  return taken;
}

void NSApplication::discardEvents(const std::function<bool(const NSEvent&)>& matches) {
  std::erase_if(queue_, [&](const EventPointer& event) { return matches(*event); });
}

bool NSApplication::turn() {
  const bool dispatched = dispatchQueued();
  const bool resigned = resignActiveIfDue();
  const bool laidOut = layoutWindows();
  return dispatched || resigned || laidOut;
}

bool NSApplication::dispatchQueued() {
  bool dispatched = false;
  // What the handlers post waits for the next turn, so that a handler that always posts doesn't hold up the loop.
  for (std::size_t count = queue_.size(); count > 0 && !queue_.empty() && trackingDepth_ == 0; --count) {
    const EventPointer event = std::move(queue_.front());
    queue_.pop_front();
    dispatched = true;
    sendEvent(event);
  }
  if (dispatched && !queue_.empty()) Session::current().backend().loop().wake();
  return dispatched;
}

EventMonitorToken NSApplication::addLocalMonitor(std::uint64_t mask, EventMonitor handler) {
  requireMainThread("NSApplication::addLocalMonitor");
  monitors_.push_back(std::make_unique<Monitor>(Monitor{++lastMonitor_, mask, std::move(handler)}));
  return lastMonitor_;
}

void NSApplication::removeMonitor(EventMonitorToken token) {
  const auto found =
      std::find_if(monitors_.begin(), monitors_.end(), [&](const auto& monitor) { return monitor->token == token; });
  if (found == monitors_.end()) return;
  // While monitors run, the entry stays where it is: it may be the one that is running.
  if (monitorDepth_ > 0)
    (*found)->removed = true;
  else
    monitors_.erase(found);
}

EventPointer NSApplication::runMonitors(EventPointer event) {
  struct Sweep {
    NSApplication& application;
    explicit Sweep(NSApplication& app) : application(app) { ++application.monitorDepth_; }
    ~Sweep() {
      if (--application.monitorDepth_ == 0)
        std::erase_if(application.monitors_, [](const auto& monitor) { return monitor->removed; });
    }
  } sweep(*this);
  const std::size_t count = monitors_.size();
  for (std::size_t i = 0; event && i < count; ++i) {
    Monitor& monitor = *monitors_[i];
    if (!monitor.removed && (monitor.mask & eventMask(event->type))) event = monitor.handler(event);
  }
  return event;
}

void NSApplication::sendEvent(const EventPointer& event) {
  requireMainThread("NSApplication::sendEvent");
  if (!event) return;
  currentEvent_ = event;
  if (refuseInput(event)) return;
  if (const EventPointer left = runMonitors(event)) dispatch(left);
}

void NSApplication::dispatch(const EventPointer& event) {
  const auto window = event->isKey() ? keyWindow() : windowWithNumber(event->windowNumber);
  if (!window) return;
  constexpr std::uint64_t kShortcutModifiers = ModifierFlag::kCommand | ModifierFlag::kControl;
  if (event->type == EventType::keyDown && (event->modifierFlags & kShortcutModifiers) &&
      window->performKeyEquivalent(event))
    return;
  window->sendEvent(event);
}

}  // namespace platform
