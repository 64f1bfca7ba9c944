#include <algorithm>

#include "Platform/AppKit/Attempts.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

/// How long a report of another surface's activation counts as older than our own request.
constexpr double kStaleReports = 0.5;
/// How long the machine may take to confirm an activation before it counts as refused.
constexpr double kRefusal = 2;

}  // namespace

void NSApplication::activate(bool /*ignoringOtherApps*/) {
  requireMainThread("NSApplication::activate");
  const auto candidate =
      std::find_if(ordered_.begin(), ordered_.end(), [](const NSWindow* each) { return each->canBecomeKey(); });
  if (key_)
    focus(*key_);
  else if (candidate != ordered_.end())
    focus(**candidate);
  else
    becomeActive();
}

void NSApplication::focus(NSWindow& wanted) {
  if (!wanted.visible_) return;
  NSWindow& window = inputTarget(wanted);
  if (!window.visible_ || !window.canBecomeKey()) return;
  if (active_ && key_ == &window && (activeSurface_ == &window || pendingSurface_ == &window)) return;
  const bool wasActive = std::exchange(active_, true);
  requestActivation(window);
  changeFocus(&window, mainFor(window));
  if (!wasActive && active_) NotificationCenter::defaultCenter().post({kApplicationDidBecomeActive, this, {}});
}

/// The main window while `key` is key: a sheet leaves that to the window it hangs from.
NSWindow* NSApplication::mainFor(NSWindow& key) const {
  NSWindow* window = &key;
  while (window->sheetParent_) window = window->sheetParent_;
  return window->canBecomeMain() ? window : main_;
}

void NSApplication::focusMain(NSWindow& window) {
  if (window.visible_ && window.canBecomeMain()) changeFocus(key_, &window);
}

void NSApplication::passFocusOn() {
  const auto next = [&](NSWindow* present, bool (NSWindow::*canBecome)() const) -> NSWindow* {
    if (present && present->visible_) return present;
    if (!active_) return nullptr;
    // A panel or a sheet that goes leaves the keyboard to the main window.
    if (main_ && main_->visible_ && (main_->*canBecome)()) return &inputTarget(*main_);
    const auto heir =
        std::find_if(ordered_.begin(), ordered_.end(), [&](NSWindow* each) { return (each->*canBecome)(); });
    return heir == ordered_.end() ? nullptr : &inputTarget(**heir);
  };
  NSWindow* key = next(key_, &NSWindow::canBecomeKey);
  NSWindow* main = next(main_, &NSWindow::canBecomeMain);
  if (key == key_ && main == main_) return;
  if (key && key != key_) requestActivation(*key);
  changeFocus(key, main);
}

// Every step tells delegates, who may change the focus themselves: the newest change wins, an overtaken one stops. What
// they throw stops nothing: the keyboard would be nobody's.
void NSApplication::changeFocus(NSWindow* key, NSWindow* main) {
  const std::uint64_t turn = ++focusTurn_;
  const auto newKey = key ? key->self() : nullptr;
  const auto newMain = main ? main->self() : nullptr;
  const auto isNewest = [&] { return turn == focusTurn_; };
  Attempts attempt;
  if (key_ && key_ != key) {
    const auto old = key_->self();
    key_ = nullptr;
    attempt([&] { old->keyChanged(false); });
  }
  if (isNewest() && main_ && main_ != main) {
    const auto old = main_->self();
    main_ = nullptr;
    attempt([&] { old->tell(&NSWindowDelegate::windowDidResignMain); });
  }
  if (isNewest() && newKey && key_ != key && newKey->visible_) {
    key_ = key;
    attempt([&] { newKey->keyChanged(true); });
  }
  if (isNewest() && newMain && main_ != main && newMain->visible_) {
    main_ = main;
    attempt([&] { newMain->tell(&NSWindowDelegate::windowDidBecomeMain); });
  }
  attempt.finish();
}

void NSApplication::requestActivation(NSWindow& window) {
  resignDue_ = false;
  if (!window.surface_) return;
  pendingSurface_ = &window;
  pendingSince_ = RunLoop::main().now();
  if (refusalTimer_) refusalTimer_->invalidate();
  refusalTimer_ = Timer::scheduledTimer(kRefusal, false, [this](Timer&) {
    if (!pendingSurface_) return;
    pendingSurface_ = nullptr;
    if (!activeSurface_) resignActive();
  });
  window.surface_->activate();
}

bool NSApplication::activationPending() const {
  return pendingSurface_ && RunLoop::main().now() - pendingSince_ < kStaleReports;
}

void NSApplication::surfaceActivated(NSWindow& window, bool active) {
  if (!active) {
    if (activeSurface_ != &window) return;
    activeSurface_ = nullptr;
    // Another of our surfaces may be activated next; judged when the machine has told all.
    resignDue_ = true;
    return;
  }
  resignDue_ = false;
  activeSurface_ = &window;
  if (pendingSurface_ != &window && activationPending()) return;
  pendingSurface_ = nullptr;
  if (refusalTimer_) refusalTimer_->invalidate();
  if (!window.visible_ || !window.canBecomeKey()) return;
  if (&inputTarget(window) != &window) {
    placeFamily(window, WindowOrdering::above, nullptr);
    return focus(window);
  }
  if (key_ == &window) return;
  window.activatedByMachineAt_ = RunLoop::main().now();
  placeFamily(window, WindowOrdering::above, nullptr);
  const bool wasActive = std::exchange(active_, true);
  changeFocus(&window, mainFor(window));
  if (!wasActive && active_) NotificationCenter::defaultCenter().post({kApplicationDidBecomeActive, this, {}});
}

void NSApplication::becomeActive() {
  if (std::exchange(active_, true)) return;
  NotificationCenter::defaultCenter().post({kApplicationDidBecomeActive, this, {}});
}

void NSApplication::resignActive() {
  if (!std::exchange(active_, false)) return;
  changeFocus(nullptr, nullptr);
  if (!active_) NotificationCenter::defaultCenter().post({kApplicationDidResignActive, this, {}});
}

bool NSApplication::resignActiveIfDue() {
  if (!resignDue_ || activationPending()) return false;
  resignDue_ = false;
  if (!activeSurface_) resignActive();
  return true;
}

}  // namespace platform
