#include <limits>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/ScopedDepth.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

constexpr std::uint64_t kDragMask = eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp);

}  // namespace

// Nobody releases the button over a window that is gone from the screen.
std::function<bool()> NSWindow::hasLeftScreen() const {
  return [this, wasVisible = visible_] { return closed_ || (wasVisible && !visible_); };
}

void NSWindow::trackEvents(std::uint64_t mask, double deadline,
                           const std::function<void(const EventPointer&, bool& stop)>& handler) {
  const auto alive = self();
  NSApplication& application = NSApplication::shared();
  const auto left = hasLeftScreen();
  for (bool stop = false; !stop;) {
    const EventPointer event = application.takeEvent(mask, deadline, left);
    const std::uint64_t drags = dragsEnded_;
    handler(event, stop);
    if (!event) return;
    if (stop || drags == dragsEnded_) continue;
    // The press went into a drag; its release is the monitors' and not this loop's.
    handler(nullptr, stop);
    return;
  }
}

void NSWindow::performDrag(const EventPointer& event) {
  requireMainThread("NSWindow::performDrag");
  const auto alive = self();
  const bool fromPress =
      event && (event->type == EventType::leftMouseDown || event->type == EventType::leftMouseDragged);
  if (closed_ || !movable_ || isSheet() || !fromPress) return;
  const auto left = hasLeftScreen();
  tell(&NSWindowDelegate::windowWillMove);
  if (left() || !movable_) return;
  // The machine moves a window without its children.
  const bool movedByMachine = children_.empty() && surface_ && surface_->beginMove();
  moveByModel(event, movedByMachine, left);
}

void NSWindow::moveByModel(const EventPointer& event, bool movedByMachine, const std::function<bool()>& left) {
  struct ByMachine {
    bool& flag;
    ByMachine(bool& moved, bool is) : flag(moved) { flag = is; }
    ~ByMachine() { flag = false; }
  } byMachine(movedByMachine_, movedByMachine);
  NSApplication& application = NSApplication::shared();
  const auto onScreen = [&](const NSEvent& each) {
    return each.locationOnScreen.value_or(convertPointToScreen(each.locationInWindow));
  };
  const Point grip = onScreen(*event) - frame_.origin();
  EventPointer release;
  {
    std::optional<ScopedDepth> change;
    if (!movedByMachine) change.emplace(userChangesFrame_);
    while (!release) {
      const EventPointer next = application.takeEvent(kDragMask, std::numeric_limits<double>::infinity(), left);
      if (!next) break;
      if (!movedByMachine) setFrameOrigin(onScreen(*next) - grip);
      if (next->type == EventType::leftMouseUp) release = next;
    }
  }
  if (!closed_) autosaveFrame();
  ++dragsEnded_;
  if (release) application.postEvent(release, true);
}

}  // namespace platform
