#include "Platform/AppKit/NSThemeFrame.h"

#include <algorithm>
#include <cmath>

#include "Platform/AppKit/ScopedDepth.h"
#include "Platform/Foundation/ProcessInfo.h"

namespace platform {

namespace {

constexpr double kButtonSize = 12;
constexpr double kButtonGap = 8;

Point screenLocation(const NSEvent& event, const NSWindow& window) {
  return event.locationOnScreen.value_or(window.convertPointToScreen(event.locationInWindow));
}

}  // namespace

double NSThemeFrame::titleBarHeight() {
  return operatingSystemVersion() >= 11 ? 29 : 23;
}

bool NSThemeFrame::isTitled() const {
  return window() && (window()->styleMask() & StyleMask::kTitled) && !window()->isSheet();
}

Rect NSThemeFrame::buttonFrame(WindowButton button) const {
  const double left = kButtonGap + static_cast<int>(button) * (kButtonSize + kButtonGap);
  const double margin = (titleBarHeight() - kButtonSize) / 2;
  return {left, frame().height - margin - kButtonSize, kButtonSize, kButtonSize};
}

bool NSThemeFrame::isShown(WindowButton button) const {
  const StandardButton* standard = isTitled() ? window()->standardWindowButton(button) : nullptr;
  return standard && !standard->hidden;
}

NSThemeFrame::Edges NSThemeFrame::edgesAt(Point point) const {
  if (!window() || !(window()->styleMask() & StyleMask::kResizable) || window()->isZoomed() || window()->isSheet())
    return {};
  const auto side = [](double at, double length) { return at < kEdge ? -1 : at > length - kEdge ? 1 : 0; };
  return {side(point.x, frame().width), side(point.y, frame().height)};
}

std::optional<WindowButton> NSThemeFrame::buttonAt(Point point) const {
  for (const auto button : {WindowButton::close, WindowButton::miniaturize, WindowButton::zoom})
    if (isShown(button) && buttonFrame(button).contains(point)) return button;
  return std::nullopt;
}

bool NSThemeFrame::isTitleBarAt(Point point) const {
  if (!isTitled() || point.y < frame().height - titleBarHeight()) return false;
  // Content that runs under a transparent title bar gets what happens there.
  const auto content = window()->contentView();
  return !window()->titlebarAppearsTransparent() || !content || content->frame().maxY() < point.y;
}

bool NSThemeFrame::isChromeAt(Point point) const {
  return edgesAt(point) || buttonAt(point).has_value() || isTitleBarAt(point);
}

NSView* NSThemeFrame::hitTest(Point point) {
  const Rect area{{}, frame().size()};
  const bool inside = point.x >= 0 && point.x < area.width && point.y > 0 && point.y <= area.height;
  if (inside && isChromeAt(point)) return this;
  return NSView::hitTest(point);
}

bool NSThemeFrame::acceptsFirstMouse(const EventPointer& /*event*/) {
  return true;
}

port::Cursor NSThemeFrame::cursorAt(Point inView) const {
  const Edges edges = edgesAt(inView);
  if (edges.x != 0 && edges.y != 0)
    return edges.x == edges.y ? port::Cursor::resizeRising : port::Cursor::resizeFalling;
  if (edges.x != 0) return port::Cursor::resizeHorizontal;
  return edges.y != 0 ? port::Cursor::resizeVertical : port::Cursor::arrow;
}

void NSThemeFrame::mouseDown(const EventPointer& event) {
  press_.reset();
  NSWindow* window = this->window();
  if (!window) return;
  const Point at = event->locationInWindow;
  // What the content left unhandled is not the title bar's.
  if (!isChromeAt(at)) return NSView::mouseDown(event);
  const Edges edges = edgesAt(at);
  const auto button = edges ? std::nullopt : buttonAt(at);
  if (!edges && !button && event->clickCount == 2) {
    if (window->styleMask() & StyleMask::kResizable) window->zoom();
    return;
  }
  press_ = Press{screenLocation(*event, *window), window->frame(), edges, button};
  if (button) setNeedsDisplay(buttonFrame(*button));
}

void NSThemeFrame::mouseDragged(const EventPointer& event) {
  if (!press_) return NSView::mouseDragged(event);
  NSWindow* window = this->window();
  if (!window) return;
  const Point at = screenLocation(*event, *window);
  if (press_->button) {
    press_->inside = buttonFrame(*press_->button).contains(event->locationInWindow);
    setNeedsDisplay(buttonFrame(*press_->button));
  } else if (press_->edges) {
    resizeTo(at);
  } else if (std::abs(at.x - press_->onScreen.x) >= kDragDistance ||
             std::abs(at.y - press_->onScreen.y) >= kDragDistance) {
    press_.reset();
    window->performDrag(event);
  }
}

void NSThemeFrame::mouseUp(const EventPointer& event) {
  const auto press = std::exchange(press_, std::nullopt);
  if (!press) return NSView::mouseUp(event);
  if (press->edges && window()) window()->autosaveFrame();
  if (!press->button) return;
  setNeedsDisplay(buttonFrame(*press->button));
  if (isShown(*press->button) && buttonFrame(*press->button).contains(event->locationInWindow)) perform(*press->button);
}

void NSThemeFrame::perform(WindowButton button) {
  const auto window = this->window()->self();
  switch (button) {
    case WindowButton::close:
      return window->performClose();
    case WindowButton::miniaturize:
      return window->miniaturize();
    case WindowButton::zoom:
      return window->zoom();
  }
}

void NSThemeFrame::resizeTo(Point onScreen) {
  const auto window = this->window()->self();
  const Press press = *press_;
  const Point moved = onScreen - press.onScreen;
  const Size least = window->smallestUserSize();
  // A window that is smaller already doesn't jump.
  Size size{std::max(press.frame.width + press.edges.x * moved.x, std::min(least.width, press.frame.width)),
            std::max(press.frame.height + press.edges.y * moved.y, std::min(least.height, press.frame.height))};
  if (size == window->frame().size()) return;
  if (const auto delegate = window->delegate().lock()) size = delegate->windowWillResizeToSize(*window, size);
  if (window->isClosed()) return;
  // The opposite edge stays.
  const double x = press.edges.x < 0 ? press.frame.maxX() - size.width : press.frame.x;
  const double y = press.edges.y < 0 ? press.frame.maxY() - size.height : press.frame.y;
  const ScopedDepth change(window->userChangesFrame_);
  window->setFrame({x, y, size.width, size.height}, true);
}

}  // namespace platform
