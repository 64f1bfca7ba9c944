#include "Platform/Foundation/DispatchQueue.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/DispatchQueues.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Timer.h"

namespace platform {

namespace {

std::size_t mostThreads() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 8);
}

/// Starts a timer for `then`; from another thread by way of the main queue, since only the main thread reads the clock.
void startAfter(double seconds, std::function<void()> then) {
  const auto start = [seconds, then = std::move(then)] {
    Timer::scheduledTimer(seconds, false, [then](Timer&) { then(); });
  };
  if (isMainThread())
    start();
  else
    DispatchQueue::main().async(start);
}

}  // namespace

DispatchQueue& DispatchQueue::main() {
  return RunLoop::main().mainQueue();
}
DispatchQueue& DispatchQueue::global() {
  return RunLoop::main().globalQueue();
}

void MainQueue::async(std::function<void()> block) {
  {
    const std::lock_guard lock(mutex_);
    blocks_.push_back({++lastNumber_, std::move(block)});
  }
  driver_.wake();
}

void MainQueue::asyncAfter(double seconds, std::function<void()> block) {
  startAfter(seconds, std::move(block));
}

bool MainQueue::run(int most) {
  std::uint64_t last = 0;
  {
    const std::lock_guard lock(mutex_);
    last = lastNumber_;
  }
  int count = 0;
  for (Posted next; count < most && take(last, next); ++count) std::exchange(next.block, nullptr)();
  return count > 0;
}

bool MainQueue::take(std::uint64_t upTo, Posted& taken) {
  const std::lock_guard lock(mutex_);
  if (blocks_.empty() || blocks_.front().number > upTo) return false;
  taken = std::move(blocks_.front());
  blocks_.pop_front();
  return true;
}

bool MainQueue::isEmpty() const {
  const std::lock_guard lock(mutex_);
  return blocks_.empty();
}

void MainQueue::clear() {
  for (std::deque<Posted> dropped;; dropped.clear()) {
    const std::lock_guard lock(mutex_);
    if (blocks_.empty()) return;
    dropped.swap(blocks_);
  }
}

void GlobalQueue::async(std::function<void()> block) {
  const std::lock_guard lock(mutex_);
  if (stopping_) return;
  ++unfinished_;
  blocks_.push_back(std::move(block));
  if (blocks_.size() > idle_ && threads_.size() < mostThreads()) threads_.emplace_back([this] { work(); });
  posted_.notify_one();
}

void GlobalQueue::asyncAfter(double seconds, std::function<void()> block) {
  startAfter(seconds, [this, block = std::move(block)] { async(block); });
}

void GlobalQueue::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    posted_.wait(lock, [this] { return stopping_ || !blocks_.empty(); });
    --idle_;
    if (stopping_) return;
    auto block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    std::exchange(block, nullptr)();
    --unfinished_;
    // The main loop may wait for the workers to come to rest.
    driver_.wake();
    lock.lock();
  }
}

void GlobalQueue::shutDown() {
  std::deque<std::function<void()>> dropped;
  std::vector<std::thread> threads;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    dropped.swap(blocks_);
    threads.swap(threads_);
  }
  unfinished_ -= static_cast<int>(dropped.size());
  posted_.notify_all();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace platform
