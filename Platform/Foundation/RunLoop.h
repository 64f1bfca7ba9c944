#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/Timer.h"
#include "Platform/Port/LoopDriver.h"

namespace platform {

class DispatchQueue;
class GlobalQueue;
class MainQueue;

/// The main thread's loop: main queue, timers, and the sources that other rooms add (the application's event queue). A
/// block, timer or source may run the loop itself; what is due then runs inside, each thing once and in its order. A
/// turn runs a bounded number of blocks, so a flood of them never keeps the machine's input waiting. Main thread.
class PLATFORM_EXPORT RunLoop : private port::LoopSink {
 public:
  static RunLoop& main();
  RunLoop();
  ~RunLoop() override;

  /// Runs until `done` answers true (asked before each turn) or `deadline` (monotonic seconds, infinity for none)
  /// passes. Nests. Returns what `done` last answered.
  bool runUntil(const std::function<bool()>& done, double deadline);
  /// One turn: does what is due; when nothing is, waits until `deadline` at most for something to happen, and does it.
  void turn(double deadline);
  /// Runs all that is due now without waiting.
  void runDue();

  double now() const;
  /// Seconds since 1970-01-01 00:00 UTC.
  double wallClock() const;

  /// `source` is called in every turn and does what is due; returns true when it did something. Lives as long as the
  /// loop.
  void addSource(std::function<bool()> source);
  void schedule(const std::shared_ptr<Timer>& timer);

  DispatchQueue& mainQueue();
  DispatchQueue& globalQueue();
  /// Ends the worker threads, then drops all pending work, timers and sources. The session's end calls it first, while
  /// what the work refers to is still there.
  void shutDown();

 private:
  double service() override;
  bool expectsWake() const override;
  bool runDueReporting();
  bool fireTimers();
  double nextDue() const;

  port::LoopDriver& driver_;
  std::unique_ptr<MainQueue> mainQueue_;
  std::unique_ptr<GlobalQueue> globalQueue_;
  std::deque<std::function<bool()>> sources_;  // a deque: stays where it is while one runs and another is added
  std::vector<std::shared_ptr<Timer>> timers_;
};

}  // namespace platform
