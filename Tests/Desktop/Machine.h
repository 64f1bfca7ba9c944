#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Port/Backend.h"

namespace desktop_tests {

/// A back end together with somebody who looks at it from outside.
class Machine {
 public:
  virtual ~Machine() = default;
  virtual platform::port::Backend& backend() = 0;
  /// What an observer sees of a window, by its native handle.
  virtual platform::Rect frameOf(std::uint64_t window) = 0;
  virtual bool isAbove(std::uint64_t upper, std::uint64_t lower) = 0;
  virtual bool staysAbove(std::uint64_t window) = 0;
  virtual double opacityOf(std::uint64_t window) = 0;
  virtual bool isMinimised(std::uint64_t window) = 0;
  virtual std::string titleOf(std::uint64_t window) = 0;
  /// Another application copies, and pastes.
  virtual void copyElsewhere(const std::string& text) = 0;
  virtual std::string pasteElsewhere() = 0;
  /// Another process posts.
  virtual void postElsewhere(const std::string& name, const platform::Dictionary& userInfo) = 0;

  /// Turns the loop until `done`; false after some seconds without.
  bool spin(const std::function<bool()>& done);
};

/// The machine that the tests are run on, one for the whole run: the real desktop.
Machine& desktopMachine();
std::unique_ptr<Machine> makeHeadlessMachine();

/// Pixels to a point, as the desktop was started.
double scale();
/// A place in screen points as xdotool takes it: pixels from the top left of the root window.
std::string rootPixels(const platform::Point& point);

/// Runs a shell command while the desktop's loop turns, and returns what it wrote, without the last newline. Fails the
/// test when the command does, or when it takes longer than ten seconds.
std::string outside(const std::string& command);

}  // namespace desktop_tests
