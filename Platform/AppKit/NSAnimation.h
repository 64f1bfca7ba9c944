#pragma once

#include <functional>
#include <memory>

#include "Platform/Export.h"

namespace platform {

class Timer;

/// Something that changes little by little, in steps of the main run loop. Destroying it leaves the change where it is.
/// Main thread.
class PLATFORM_EXPORT NSAnimation {
 public:
  /// `step` is called with the progress, from just above 0 to 1, slower towards both ends; it may destroy the
  /// animation. Seconds.
  NSAnimation(double duration, std::function<void(double progress)> step);
  ~NSAnimation();
  NSAnimation(const NSAnimation&) = delete;
  NSAnimation& operator=(const NSAnimation&) = delete;

 private:
  std::shared_ptr<Timer> timer_;
};

}  // namespace platform
