#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/Port/Geometry.h"
#include "Programs/SampleHost/Machine.h"

namespace samplehost {

/// The one who sits at the keyboard during a tour. Each action is over when it returns. Main thread.
class TourUser {
 public:
  virtual ~TourUser() = default;
  virtual void type(const std::string& utf8) = 0;
  virtual void key(std::uint16_t keyCode, std::uint64_t modifiers) = 0;
  /// The input method shows a preedit, and later commits.
  virtual void compose(const std::u16string& preedit) = 0;
  virtual void commit(const std::u16string& text) = 0;
  /// At a screen point.
  virtual void click(platform::Point at, int count, bool secondary) = 0;
  /// Presses at `from`, moves to `to` and releases; screen points.
  virtual void drag(platform::Point from, platform::Point to) = 0;
  /// Chooses from the open menu; where only the real pointer could, leaves it.
  virtual void chooseMenuItem(const std::string& title) = 0;
  virtual bool canChooseFromMenus() const = 0;
  /// Drops files of another application; nothing happens where only the real pointer could.
  virtual bool dropFiles(const std::string& uriList, platform::Point at) = 0;
  /// Whether a drag can move a window: on a real desktop the window manager asks the real pointer.
  virtual bool canMoveWindows() const = 0;
};

/// The simulated user of a headless machine; on a desktop one that hands events to the application by itself.
std::unique_ptr<TourUser> makeTourUser(Machine& machine);

}  // namespace samplehost
