#pragma once

#include <functional>
#include <memory>

#include "Platform/Export.h"

namespace platform {

class RunLoop;

/// Calls a block on the main run loop, once or again and again. Main thread.
class PLATFORM_EXPORT Timer {
 public:
  using Block = std::function<void(Timer&)>;

  /// The run loop keeps the timer until it has fired (or, repeating, until it is invalidated). A repeating timer that
  /// fell behind fires once and keeps to its raster; it never fires inside its own block. Seconds; at least a tenth of
  /// a millisecond for a repeating one.
  static std::shared_ptr<Timer> scheduledTimer(double interval, bool repeats, Block block);
  /// The block is called no more, and destroyed as soon as it isn't running.
  void invalidate() { block_ = nullptr; }
  bool isValid() const { return block_ != nullptr; }
  double interval() const { return interval_; }

 private:
  friend class RunLoop;
  Timer(double interval, bool repeats, double fireTime, Block block);
  bool isDueAt(double time) const { return isValid() && !firing_ && fireTime_ <= time; }
  void fire(const RunLoop& loop);
  void moveOn(double now);

  double interval_;
  bool repeats_;
  bool firing_ = false;
  double fireTime_;
  std::shared_ptr<const Block> block_;
};

}  // namespace platform
