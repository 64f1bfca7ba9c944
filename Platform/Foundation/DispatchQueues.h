#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Port/LoopDriver.h"

namespace platform {

/// The main thread's blocks, in the order of posting. The run loop takes them out.
class MainQueue final : public DispatchQueue {
 public:
  explicit MainQueue(port::LoopDriver& driver) : driver_(driver) {}
  void async(std::function<void()> block) override;
  void asyncAfter(double seconds, std::function<void()> block) override;

  /// Runs what was posted before the call, `most` blocks at most; nested calls go on with what the outer ones left.
  /// True when a block ran.
  bool run(int most);
  bool isEmpty() const;
  /// Drops all blocks, and those that their destruction posts.
  void clear();

 private:
  struct Posted {
    std::uint64_t number = 0;
    std::function<void()> block;
  };
  bool take(std::uint64_t upTo, Posted& taken);

  port::LoopDriver& driver_;
  mutable std::mutex mutex_;
  std::deque<Posted> blocks_;
  std::uint64_t lastNumber_ = 0;
};

/// A few worker threads, started as they are needed.
class GlobalQueue final : public DispatchQueue {
 public:
  explicit GlobalQueue(port::LoopDriver& driver) : driver_(driver) {}
  ~GlobalQueue() override { shutDown(); }
  void async(std::function<void()> block) override;
  void asyncAfter(double seconds, std::function<void()> block) override;

  /// Blocks wait or run.
  bool isBusy() const { return unfinished_ > 0; }
  /// Waits for the blocks that have started and drops the others, and all that come later.
  void shutDown();

 private:
  void work();

  port::LoopDriver& driver_;
  std::atomic<int> unfinished_ = 0;
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> blocks_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool stopping_ = false;
};

}  // namespace platform
