#pragma once

#include <cstdint>
#include <functional>

namespace platform::port {

/// Implemented by the run loop: what wants to run on the main thread.
class LoopSink {
 public:
  virtual ~LoopSink() = default;
  /// Runs all that is due. Returns the `LoopDriver::now` time at which it wants to be called again at the latest
  /// (infinity: only after a wake). Also called inside loops the machine runs itself (a native menu or dialog).
  virtual double service() = 0;
  /// Worker threads are at work and may wake the loop: a simulated clock doesn't run ahead of them. Any thread.
  virtual bool expectsWake() const { return false; }
};

/// Waiting, waking and time. All on the main thread but `wake`.
class LoopDriver {
 public:
  virtual ~LoopDriver() = default;
  /// Null takes the sink away. Borrowed.
  virtual void setSink(LoopSink* sink) = 0;
  /// Seconds of a clock that never goes back.
  virtual double now() const = 0;
  /// Seconds since 1970-01-01 00:00 UTC.
  virtual double wallClock() const = 0;
  /// Delivers what the machine has (input, descriptors, wakes; `LoopSink::service` after each), waiting for the first
  /// of it until `deadline` at most. Infinity waits without limit.
  virtual void wait(double deadline) = 0;
  /// Ends a wait, now or the next one. Any thread.
  virtual void wake() noexcept = 0;
  /// Calls `ready` from `wait` whenever the descriptor can be read without blocking. Returns what `unwatch` takes.
  virtual std::uint64_t watch(int descriptor, std::function<void()> ready) = 0;
  virtual void unwatch(std::uint64_t watch) = 0;
};

}  // namespace platform::port
