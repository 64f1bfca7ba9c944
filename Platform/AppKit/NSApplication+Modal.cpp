#include <algorithm>
#include <limits>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

/// One `runModal` under way: known to the application until it is left, whatever way.
class NSApplication::ModalSession {
 public:
  ModalSession(NSApplication& application, std::shared_ptr<NSWindow> shown)
      : window(std::move(shown)),
        level_(window->level()),
        application_(application),
        trackingDepth_(std::exchange(application.trackingDepth_, 0)) {
    application.modalSessions_.push_back(this);
  }
  ~ModalSession() {
    std::erase(application_.modalSessions_, this);
    // A loop that takes events itself may have led here; inside the session events are dispatched again.
    application_.trackingDepth_ = trackingDepth_;
    if (window->isClosed()) return;
    window->setLevel(level_);
    window->updateSurface();
    if (window->surface_ && !window->parent_) window->surface_->setParent(nullptr);
  }
  ModalSession(const ModalSession&) = delete;
  ModalSession& operator=(const ModalSession&) = delete;

  bool isOver() const { return ended || application_.stopped_ || !(window->isVisible() || window->isMiniaturized()); }

  const std::shared_ptr<NSWindow> window;
  bool ended = false;
  int response = ModalResponse::kAbort;

 private:
  const int level_;
  NSApplication& application_;
  const int trackingDepth_;
};

int NSApplication::runModal(const std::shared_ptr<NSWindow>& window) {
  requireMainThread("NSApplication::runModal");
  const bool runs = std::any_of(modalSessions_.begin(), modalSessions_.end(),
                                [&](const ModalSession* each) { return each->window == window; });
  if (!window || window->isClosed() || window->isSheet() || runs) return ModalResponse::kAbort;
  ModalSession session(*this, window);
  if (!window->isVisible()) window->center();
  window->makeKeyAndOrderFront(nullptr);
  if (window->isVisible()) window->setLevel(std::max(window->level(), ordered_.front()->effectiveLevel()));
  window->belongToMainWindow();
  RunLoop::main().runUntil([&] { return session.isOver(); }, std::numeric_limits<double>::infinity());
  return session.response;
}

void NSApplication::stopModal(int response) {
  requireMainThread("NSApplication::stopModal");
  if (modalSessions_.empty()) return;
  ModalSession& session = *modalSessions_.back();
  if (std::exchange(session.ended, true)) return;
  session.response = response;
  Session::current().backend().loop().wake();
}

void NSApplication::abortModal() {
  stopModal(ModalResponse::kAbort);
}

std::shared_ptr<NSWindow> NSApplication::modalWindow() const {
  return modalSessions_.empty() ? nullptr : modalSessions_.back()->window;
}

NSWindow& NSApplication::inputTarget(NSWindow& window) const {
  NSWindow* target = &window;
  const auto modal = modalWindow();
  if (modal && modal->isVisible() && modal.get() != target && !modal->isAncestorOf(*target)) target = modal.get();
  // A sheet that was hidden for itself doesn't lock its window up.
  while (const auto sheet = target->attachedSheet()) {
    if (!sheet->isVisible()) break;
    target = sheet.get();
  }
  return *target;
}

void NSApplication::bringForward(NSWindow& target) {
  const auto alive = target.self();
  target.orderFront();
  focus(target);
}

/// A blocked window can still be moved and resized by its frame.
bool NSApplication::refuseInput(const EventPointer& event) {
  constexpr std::uint64_t kPresses =
      eventMask(EventType::leftMouseDown) | eventMask(EventType::rightMouseDown) | eventMask(EventType::otherMouseDown);
  constexpr std::uint64_t kRefused = kPresses | eventMask(EventType::scrollWheel) | eventMask(EventType::mouseMoved);
  const std::uint64_t kind = eventMask(event->type);
  const auto window = kind & kRefused ? windowWithNumber(event->windowNumber) : nullptr;
  if (!window) return false;
  NSWindow& target = inputTarget(*window);
  if (&target == window.get()) return false;
  if (event->type != EventType::scrollWheel && window->viewAt(event->locationInWindow).get() == &window->themeFrame())
    return false;
  if (kind & kPresses) bringForward(target);
  if (event->type == EventType::mouseMoved) window->hoverLeft(event);
  return true;
}

/// Whatever else comes to the front or is lifted to a higher level, the innermost modal window stays before it.
void NSApplication::keepModalInFront(NSWindow& placed) {
  const auto modal = modalWindow();
  if (!modal || !modal->isVisible() || &placed.familyRoot() == &modal->familyRoot()) return;
  if (const int level = placed.effectiveLevel(); level > modal->effectiveLevel())
    modal->setLevel(level);
  else
    placeFamily(*modal, WindowOrdering::above, nullptr);
}

}  // namespace platform
