#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "Platform/Port/LoopDriver.h"

namespace headless {

/// A loop with a clock that only moves when it is told to, or when a wait has nothing else to do. It waits in real time
/// only while a descriptor is watched or a worker thread is at work, and throws std::runtime_error after `kSilence`
/// seconds in which nothing came, or at once where nothing can come: no test hangs.
class HeadlessLoop final : public platform::port::LoopDriver {
 public:
  static constexpr double kSilence = 10;
  /// The wall clock at `now() == 0`: 2026-01-02 03:04:05 UTC.
  static constexpr double kWallClockStart = 1767323045;

  HeadlessLoop();
  ~HeadlessLoop() override;
  HeadlessLoop(const HeadlessLoop&) = delete;
  HeadlessLoop& operator=(const HeadlessLoop&) = delete;

  void setSink(platform::port::LoopSink* sink) override { sink_ = sink; }
  double now() const override { return now_; }
  double wallClock() const override { return kWallClockStart + wallClockShift_ + now_; }
  void wait(double deadline) override;
  void wake() noexcept override;
  std::uint64_t watch(int descriptor, std::function<void()> ready) override;
  void unwatch(std::uint64_t watch) override;

  /// Runs everything that is due, then moves the clock from one due time to the next until `seconds` have passed.
  /// Waits for worker threads before each step, unless `setWaitsForWorkers(false)`.
  void advance(double seconds);
  /// Runs everything that is due without moving the clock.
  void settle();
  void setWaitsForWorkers(bool waits) { waitsForWorkers_ = waits; }
  /// For a program that is driven through a watched descriptor: the clock moves by `advance` alone, a wait for
  /// descriptors has no limit, and `advance` and `settle` leave watched descriptors for the next wait.
  void setDrivenFromOutside(bool driven) { drivenFromOutside_ = driven; }
  /// The user sets the wall clock; `now` goes on as it was.
  void shiftWallClock(double seconds) { wallClockShift_ += seconds; }

  /// Serves the sink once, as a loop of the machine's own does; when it wants to be served again at the latest.
  double serve() { return service(); }
  /// Queues something the machine will deliver: one for each wait, in order.
  void deliver(std::function<void()> delivery) { deliveries_.push_back(std::move(delivery)); }
  /// Paints what is dirty in a turn with nothing to deliver; true when it painted something.
  void setPainter(std::function<bool()> painter) { painter_ = std::move(painter); }

 private:
  struct Watch {
    std::uint64_t id;
    int descriptor;
    std::function<void()> ready;
  };
  bool deliverSomething(bool fromWatched = true);
  /// Infinity waits without limit.
  bool deliverReady(double seconds, bool fromWatched = true);
  void callReady(std::uint64_t id);
  bool workersAtWork() const { return waitsForWorkers_ && sink_ && sink_->expectsWake(); }
  void waitInRealTime(double deadline);
  double service();
  double serviceAll();

  platform::port::LoopSink* sink_ = nullptr;
  double now_ = 0;
  double wallClockShift_ = 0;
  bool waitsForWorkers_ = true;
  bool drivenFromOutside_ = false;
  int wakeDescriptor_;
  std::uint64_t lastWatch_ = 0;
  std::vector<Watch> watches_;
  std::deque<std::function<void()>> deliveries_;
  std::function<bool()> painter_;
};

}  // namespace headless
