#include <algorithm>
#include <limits>

#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/Foundation/RunLoop.h"

namespace platform {
namespace {

constexpr double kShownFor = 1.0;
constexpr double kFadeStep = 0.05;
constexpr double kFadeBy = 0.2;
constexpr double kShortestKnob = 18;
constexpr double kKnobInset = 2;

}  // namespace

NSScroller::~NSScroller() {
  if (timer_) timer_->invalidate();
}

void NSScroller::setScrollerStyle(ScrollerStyle style) {
  style_ = style;
  if (superview() != nullptr) superview()->setNeedsLayout();
  setNeedsDisplay();
}

void NSScroller::setKnob(double proportion, double position) {
  proportion_ = std::clamp(proportion, 0.0, 1.0);
  position_ = std::clamp(position, 0.0, 1.0);
  setNeedsDisplay();
}

double NSScroller::visibility() const {
  if (proportion_ >= 1) return 0;
  return style_ == ScrollerStyle::legacy ? 1 : opacity_;
}

void NSScroller::flash() {
  if (style_ != ScrollerStyle::overlay || proportion_ >= 1 || window() == nullptr) return;
  opacity_ = 1;
  if (timer_) timer_->invalidate();
  timer_ = Timer::scheduledTimer(kShownFor, false, [this](Timer&) { fade(); });
  setNeedsDisplay();
}

void NSScroller::fade() {
  opacity_ = std::max(0.0, opacity_ - kFadeBy);
  setNeedsDisplay();
  timer_ = opacity_ > 0 ? Timer::scheduledTimer(kFadeStep, false, [this](Timer&) { fade(); }) : nullptr;
}

Rect NSScroller::knob() const {
  const bool vertical = frame().height >= frame().width;
  const double track = vertical ? frame().height : frame().width;
  const double length = std::min(track, std::max(kShortestKnob, track * proportion_));
  const double start = (track - length) * position_;
  const Rect along = vertical ? Rect{0, start, frame().width, length} : Rect{start, 0, length, frame().height};
  return along.insetBy(kKnobInset, kKnobInset);
}

NSView* NSScroller::hitTest(Point point) {
  return visibility() > 0 ? NSView::hitTest(point) : nullptr;
}

void NSScroller::draw(port::Canvas& canvas) {
  if (style_ == ScrollerStyle::legacy) canvas.fill({{0, 0}, frame().size()}, palette::kScrollerTrack, 0);
  const double visible = visibility();
  if (visible <= 0) return;
  Color color = palette::kScrollerKnob;
  color.alpha *= visible;
  const Rect bar = knob();
  canvas.fill(bar, color, std::min(bar.width, bar.height) / 2);
}

void NSScroller::mouseDown(const EventPointer& event) {
  const auto keepAlive = weak_from_this().lock();
  const bool vertical = frame().height >= frame().width;
  const auto along = [&](Point inWindow) {
    const Point point = convertFrom(inWindow, nullptr);
    return vertical ? point.y : point.x;
  };
  const Rect bar = knob();
  const double start = vertical ? bar.minY() : bar.minX();
  const double length = vertical ? bar.height : bar.width;
  const double pressed = along(event->locationInWindow);
  // Outside the knob, the knob's middle jumps to the pointer.
  const double grip = pressed >= start && pressed < start + length ? pressed - start : length / 2;
  const auto moveTo = [&](Point inWindow) {
    const double room = (vertical ? frame().height : frame().width) - length - 2 * kKnobInset;
    const double position = room > 0 ? (along(inWindow) - grip - kKnobInset) / room : 0;
    if (action_) action_(std::clamp(position, 0.0, 1.0));
  };
  moveTo(event->locationInWindow);
  if (window() == nullptr) return;
  window()->trackEvents(eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp),
                        std::numeric_limits<double>::infinity(), [&](const EventPointer& next, bool& stop) {
                          stop = !next || next->type == EventType::leftMouseUp || window() == nullptr;
                          if (next && window() != nullptr) moveTo(next->locationInWindow);
                        });
}

}  // namespace platform
