#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Export.h"
#include "Platform/Port/Geometry.h"

namespace platform {

class NSWindow;

/// Values are the event type numbers at the boundary; an event mask has bit `1 << type`.
enum class EventType : std::uint8_t {
  leftMouseDown = 1,
  leftMouseUp = 2,
  rightMouseDown = 3,
  rightMouseUp = 4,
  mouseMoved = 5,
  leftMouseDragged = 6,
  rightMouseDragged = 7,
  mouseEntered = 8,
  mouseExited = 9,
  keyDown = 10,
  keyUp = 11,
  scrollWheel = 22,
  otherMouseDown = 25,
  otherMouseUp = 26,
  otherMouseDragged = 27,
};

constexpr std::uint64_t eventMask(EventType type) {
  return std::uint64_t{1} << static_cast<unsigned>(type);
}
inline constexpr std::uint64_t kAnyEventMask = ~std::uint64_t{0};

/// Modifier flags of an event; a key without modifiers carries `kPlainKey`.
namespace ModifierFlag {
inline constexpr std::uint64_t kPlainKey = 0x100;
inline constexpr std::uint64_t kCapsLock = 0x10000;
inline constexpr std::uint64_t kShift = 0x20000;
inline constexpr std::uint64_t kControl = 0x40000;
inline constexpr std::uint64_t kOption = 0x80000;
inline constexpr std::uint64_t kCommand = 0x100000;
inline constexpr std::uint64_t kNumericPad = 0x200000;
inline constexpr std::uint64_t kFunction = 0x800000;
inline constexpr std::uint64_t kDeviceIndependentMask = 0xFFFF0000;
}  // namespace ModifierFlag

/// Virtual key codes (by place on the keyboard, not by letter).
namespace KeyCode {
inline constexpr std::uint16_t kA = 0, kC = 8, kV = 9, kX = 7, kY = 16, kZ = 6;
inline constexpr std::uint16_t kReturn = 36, kTab = 48, kSpace = 49, kGrave = 50, kBackspace = 51, kEscape = 53;
inline constexpr std::uint16_t kKeypadEnter = 76, kHome = 115, kPageUp = 116, kForwardDelete = 117, kEnd = 119;
inline constexpr std::uint16_t kPageDown = 121, kLeftArrow = 123, kRightArrow = 124, kDownArrow = 125, kUpArrow = 126;
}  // namespace KeyCode

/// One thing the user did; immutable once it is queued.
struct PLATFORM_EXPORT NSEvent {
  EventType type = EventType::mouseMoved;
  Point locationInWindow;  ///< points, origin at the bottom left of the window's frame
  /// Where the pointer was, whatever became of the window since; nothing for an event that code made.
  std::optional<Point> locationOnScreen;
  std::uint64_t modifierFlags = 0;
  double timestamp = 0;  ///< seconds, as `RunLoop::now`
  std::int64_t windowNumber = 0;
  int clickCount = 0;
  double deltaX = 0;  ///< wheel, points
  double deltaY = 0;
  std::uint16_t keyCode = 0;
  bool isARepeat = false;
  std::string characters;
  std::string charactersIgnoringModifiers;

  bool isKey() const { return type == EventType::keyDown || type == EventType::keyUp; }
  /// The window the event is for; null when it is gone or there is none.
  std::shared_ptr<NSWindow> window() const;
  /// Where the pointer is now; screen points.
  static Point mouseLocation();
};

using EventPointer = std::shared_ptr<const NSEvent>;

/// Ends a monitor's installation when handed to `NSApplication::removeMonitor`; 0 is none.
using EventMonitorToken = std::uint64_t;
/// Returns the event to let it go on (or another one in its place), null to swallow it.
using EventMonitor = std::function<EventPointer(const EventPointer&)>;

}  // namespace platform
