#include <algorithm>
#include <limits>

#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/TextRanges.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {
namespace {

constexpr double kBlinkInterval = 0.5;
constexpr double kAutoscrollInterval = 0.05;

}  // namespace

bool NSTextView::isFirstResponder() const {
  return window() != nullptr && window()->firstResponder().get() == static_cast<const NSResponder*>(this);
}

bool NSTextView::acceptsFirstResponder() {
  return (editable_ || selectable_) && !isHiddenOrHasHiddenAncestor();
}

bool NSTextView::becomeFirstResponder() {
  focused_ = true;
  editingBegan_ = false;
  restartCaret();
  setNeedsDisplay();
  return true;
}

bool NSTextView::resignFirstResponder() {
  const auto keepAlive = weak_from_this().lock();
  focused_ = false;
  endComposition();
  stopCaret();
  setNeedsDisplay();
  return true;
}

void NSTextView::windowKeyChanged(bool key) {
  const auto keepAlive = weak_from_this().lock();
  if (key) {
    restartCaret();
  } else {
    endComposition();
    stopCaret();
  }
  setNeedsDisplay();
}

void NSTextView::viewDidMoveToWindow() {
  if (window() == nullptr) {
    focused_ = false;
    endComposition();
    stopCaret();
  }
  setNeedsLayout();
}

void NSTextView::restartCaret() {
  stopCaret();
  if (!focused_ || !editable_ || window() == nullptr || !window()->isKeyWindow()) return;
  caretOn_ = true;
  // The timer dies with the view: stopCaret in the destructor.
  caretTimer_ = Timer::scheduledTimer(kBlinkInterval, true, [this](Timer&) {
    caretOn_ = !caretOn_;
    setNeedsDisplay();
  });
}

void NSTextView::stopCaret() {
  if (caretTimer_) caretTimer_->invalidate();
  caretTimer_ = nullptr;
}

void NSTextView::keyDown(const EventPointer& event) {
  interpretKeyEvent(event);
}

port::Cursor NSTextView::cursorAt(Point /*inView*/) const {
  return selectable_ || editable_ ? port::Cursor::text : port::Cursor::arrow;
}

NSRange NSTextView::selectionUnit(std::uint64_t at, int clicks) const {
  if (clicks <= 1) return {at, 0};
  return clicks == 2 ? wordAround(storage_.string(), at) : paragraphAround(storage_.string(), at);
}

void NSTextView::mouseDown(const EventPointer& event) {
  const auto keepAlive = weak_from_this().lock();
  if (!selectable_ && !editable_) return NSText::mouseDown(event);
  endComposition();
  const Caret at = caretAt(convertFrom(event->locationInWindow, nullptr));
  const bool extends = (event->modifierFlags & ModifierFlag::kShift) != 0;
  const NSRange origin = extends ? NSRange{anchor_, 0} : selectionUnit(at.offset, event->clickCount);
  extendByUnit(origin, at, event->clickCount);
  trackSelection(origin, event->clickCount);
}

void NSTextView::extendByUnit(NSRange origin, Caret to, int clicks) {
  origin = clampedRange(storage_.string(), origin);
  const NSRange unit = selectionUnit(to.offset, clicks);
  if (unit.location < origin.location) {
    select(origin.end(), {unit.location, false});
  } else {
    const std::uint64_t end = std::max(origin.end(), unit.end());
    select(origin.location, {end, end == to.offset && to.upstream});
  }
}

void NSTextView::trackSelection(NSRange origin, int clicks) {
  constexpr std::uint64_t kMask = eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp);
  EventPointer last;
  bool done = false;
  const auto extendTo = [&](Point inWindow) {
    const Point point = convertFrom(inWindow, nullptr);
    extendByUnit(origin, caretAt(point), clicks);
    scrollRangeToVisible({head_.offset, 0});
  };
  const auto isOutside = [&] { return last && !visibleRect().contains(convertFrom(last->locationInWindow, nullptr)); };
  while (!done && window() != nullptr) {
    const auto host = window()->shared_from_this();
    const double deadline =
        isOutside() ? RunLoop::main().now() + kAutoscrollInterval : std::numeric_limits<double>::infinity();
    // Stays so when the window answers without an event.
    done = true;
    window()->trackEvents(kMask, deadline, [&](const EventPointer& event, bool& stop) {
      stop = true;  // the next turn has a deadline of its own
      const bool timedOut = !event && RunLoop::main().now() >= deadline;
      done = window() == nullptr || (event ? event->type == EventType::leftMouseUp : !timedOut);
      if (event) last = event;
      if (!done) extendTo(last->locationInWindow);
    });
  }
}

}  // namespace platform
