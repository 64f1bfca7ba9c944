#pragma once

#include <functional>
#include <memory>

#include "Platform/Export.h"

namespace platform {

/// Runs blocks later: on the main thread in the order of posting, or on worker threads.
class PLATFORM_EXPORT DispatchQueue {
 public:
  /// Blocks run on the main run loop, one after another; a block that a block posts runs in a later turn.
  static DispatchQueue& main();
  /// Blocks run side by side on a few worker threads, for work the user waits for. At the session's end blocks that
  /// have started are waited for, the others dropped.
  static DispatchQueue& global();

  virtual ~DispatchQueue() = default;
  /// Any thread.
  virtual void async(std::function<void()> block) = 0;
  /// `seconds` from now by the session's clock. Any thread.
  virtual void asyncAfter(double seconds, std::function<void()> block) = 0;
};

}  // namespace platform
