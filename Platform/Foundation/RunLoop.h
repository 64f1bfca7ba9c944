#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/LoopDriver.h"

namespace platform {

class Timer;

/// The main thread's loop: main queue, timers, and the sources that other rooms add (the application's event queue).
class PLATFORM_EXPORT RunLoop : private port::LoopSink {
 public:
  static RunLoop& main();
  RunLoop();
  ~RunLoop() override;

  /// Runs until `done` answers true (asked after each turn) or `deadline` (monotonic seconds, infinity for none) passes.
  /// Nests. Returns what `done` last answered.
  bool runUntil(const std::function<bool()>& done, double deadline);
  /// One turn: waits until `deadline` at most for something to happen, and does it.
  void turn(double deadline);
  /// Runs all that is due now without waiting.
  void runDue();

  double now() const;

  /// `source` is called in every turn and does what is due; returns true when it did something. Lives as long as the loop.
  void addSource(std::function<bool()> source);
  void schedule(const std::shared_ptr<Timer>& timer);

 private:
  double service() override;
  bool fireTimers();

  port::LoopDriver& driver_;
  std::vector<std::function<bool()>> sources_;
  std::vector<std::shared_ptr<Timer>> timers_;
};

/// Calls a block on the main run loop, once or again and again. Main thread.
class PLATFORM_EXPORT Timer : public std::enable_shared_from_this<Timer> {
 public:
  /// The run loop keeps the timer until it has fired (or, repeating, until it is invalidated). A repeating timer that fell
  /// behind fires once and keeps to its raster.
  static std::shared_ptr<Timer> scheduledTimer(double interval, bool repeats, std::function<void(Timer&)> block);
  void invalidate() { block_ = nullptr; }
  bool isValid() const { return static_cast<bool>(block_); }
  double interval() const { return interval_; }

 private:
  friend class RunLoop;
  Timer(double interval, bool repeats, double fireTime, std::function<void(Timer&)> block);

  double interval_;
  bool repeats_;
  double fireTime_;
  std::function<void(Timer&)> block_;
};

}  // namespace platform
