#pragma once

#include <cstdint>
#include <memory>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Port/WindowHost.h"

namespace platform {

/// Makes events of what the pointer does: knows which buttons are down and counts clicks. Main thread.
class PointerState {
 public:
  static constexpr double kDoubleClickInterval = 0.5;  ///< seconds from press to press
  static constexpr double kDoubleClickDistance = 5;    ///< points, in each direction

  /// `windowOrigin` in screen points, as it is now.
  EventPointer event(const port::PointerInput& input, std::int64_t windowNumber, Point windowOrigin);
  /// Someone else heard of the releases: no button is down any more.
  void forgetButtons() { leftDown_ = rightDown_ = otherDown_ = false; }

 private:
  EventType typeOf(port::PointerAction action);
  bool isNearLastPress(Point location) const;
  void countClick(const port::PointerInput& input, EventType type, std::int64_t windowNumber);

  bool leftDown_ = false;
  bool rightDown_ = false;
  bool otherDown_ = false;
  int clickCount_ = 0;
  EventType lastPress_ = EventType::mouseMoved;
  std::int64_t lastWindow_ = 0;
  Point lastLocation_;
  double lastTime_ = 0;
};

}  // namespace platform
