#include "Platform/AppKit/PointerState.h"

#include <cmath>

namespace platform {

namespace {

bool isPress(EventType type) {
  return type == EventType::leftMouseDown || type == EventType::rightMouseDown || type == EventType::otherMouseDown;
}

bool isRelease(EventType type) {
  return type == EventType::leftMouseUp || type == EventType::rightMouseUp || type == EventType::otherMouseUp;
}

}  // namespace

EventType PointerState::typeOf(port::PointerAction action) {
  switch (action) {
    case port::PointerAction::leftDown:
      leftDown_ = true;
      return EventType::leftMouseDown;
    case port::PointerAction::leftUp:
      leftDown_ = false;
      return EventType::leftMouseUp;
    case port::PointerAction::rightDown:
      rightDown_ = true;
      return EventType::rightMouseDown;
    case port::PointerAction::rightUp:
      rightDown_ = false;
      return EventType::rightMouseUp;
    case port::PointerAction::otherDown:
      otherDown_ = true;
      return EventType::otherMouseDown;
    case port::PointerAction::otherUp:
      otherDown_ = false;
      return EventType::otherMouseUp;
    case port::PointerAction::exited:
      return EventType::mouseExited;
    case port::PointerAction::moved:
      break;
  }
  if (leftDown_) return EventType::leftMouseDragged;
  if (rightDown_) return EventType::rightMouseDragged;
  return otherDown_ ? EventType::otherMouseDragged : EventType::mouseMoved;
}

bool PointerState::isNearLastPress(Point location) const {
  const Point moved = location - lastLocation_;
  return std::abs(moved.x) <= kDoubleClickDistance && std::abs(moved.y) <= kDoubleClickDistance;
}

void PointerState::countClick(const port::PointerInput& input, EventType type, std::int64_t windowNumber) {
  const bool again = type == lastPress_ && windowNumber == lastWindow_ &&
                     input.time - lastTime_ <= kDoubleClickInterval && isNearLastPress(input.location);
  clickCount_ = again ? clickCount_ + 1 : 1;
  lastPress_ = type;
  lastWindow_ = windowNumber;
  lastLocation_ = input.location;
  lastTime_ = input.time;
}

EventPointer PointerState::event(const port::PointerInput& input, std::int64_t windowNumber, Point windowOrigin) {
  auto event = std::make_shared<NSEvent>();
  event->type = typeOf(input.action);
  if (isPress(event->type))
    countClick(input, event->type, windowNumber);
  else if (!isNearLastPress(input.location))
    lastPress_ = EventType::mouseMoved;  // a press that became a drag is no first click of two
  event->locationInWindow = input.location - windowOrigin;
  event->locationOnScreen = input.location;
  event->modifierFlags = input.modifiers;
  event->timestamp = input.time;
  event->windowNumber = windowNumber;
  if (isPress(event->type) || isRelease(event->type)) event->clickCount = clickCount_;
  return event;
}

}  // namespace platform
