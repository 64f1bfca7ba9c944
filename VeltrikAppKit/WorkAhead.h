#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace veltrik {

/// Threads that help the calling one with a piece of work: one for each further processor, up to three, and fewer where
/// the system gives no more. They take no signals, and are waited for at the end.
class HelpingThreads {
 public:
  /// How many there will be.
  static std::size_t wanted();
  /// Runs `work` with 1, 2, … on as many threads. It must not throw.
  explicit HelpingThreads(const std::function<void(std::size_t number)>& work);
  ~HelpingThreads();
  HelpingThreads(const HelpingThreads&) = delete;
  HelpingThreads& operator=(const HelpingThreads&) = delete;

 private:
  std::vector<std::thread> threads_;
};

/// The parts of a long piece of work, prepared a little ahead on all processors for one caller who takes them in order.
/// A part that could not be prepared is left to the caller, who does it as if there were no such help; so nothing but
/// time depends on it, and preparing must change nothing that anybody can see.
template <class Part>
class WorkAhead {
 public:
  /// Prepares a part by its number, or leaves it. Each thread has one of its own.
  using Prepare = std::function<std::optional<Part>(std::size_t at)>;

  /// Work of `count` parts; of few parts none is prepared. `makePrepare` is called on this thread only.
  WorkAhead(std::size_t count, const std::function<Prepare()>& makePrepare) : count_(count) {
    const std::size_t helpers = count < kFewParts ? 0 : HelpingThreads::wanted();
    if (helpers == 0) return;
    slots_.resize(kDepth);
    while (lanes_.size() <= helpers) lanes_.push_back(makePrepare());
    helpers_.emplace([this](std::size_t number) { help(lanes_[number]); });
  }

  ~WorkAhead() {
    {
      const std::lock_guard guard(lock_);
      isOver_ = true;
    }
    room_.notify_all();
  }
  WorkAhead(const WorkAhead&) = delete;
  WorkAhead& operator=(const WorkAhead&) = delete;

  /// The part, or nothing when it was left to the caller. For all parts in order.
  std::optional<Part> take(std::size_t at) {
    if (lanes_.empty()) return std::nullopt;
    std::unique_lock guard(lock_);
    Slot& slot = slots_[at % kDepth];
    while (!slot.isDone) {
      // Rather than wait for it, the caller prepares another one.
      if (canClaim()) {
        prepareNext(lanes_.front(), guard);
      } else {
        done_.wait(guard);
      }
    }
    slot.isDone = false;
    taken_ = at + 1;
    // Not for each part: waking costs as much as a small part does.
    if (next_ <= taken_ + kDepth / 2) room_.notify_all();
    return std::exchange(slot.part, std::nullopt);
  }

 private:
  static constexpr std::size_t kFewParts = 32;
  static constexpr std::size_t kDepth = 16;

  struct Slot {
    std::optional<Part> part;
    bool isDone = false;
  };

  bool canClaim() const { return next_ < std::min(count_, taken_ + kDepth); }

  void prepareNext(const Prepare& prepare, std::unique_lock<std::mutex>& guard) {
    const std::size_t at = next_++;
    guard.unlock();
    std::optional<Part> part;
    try {
      part = prepare(at);
    } catch (...) {
      // The caller meets the same failure, and reports it.
    }
    guard.lock();
    slots_[at % kDepth] = {std::move(part), true};
  }

  void help(const Prepare& prepare) {
    std::unique_lock guard(lock_);
    while (!isOver_ && next_ < count_) {
      if (canClaim()) {
        prepareNext(prepare, guard);
        done_.notify_one();
      } else {
        room_.wait(guard);
      }
    }
  }

  std::size_t count_;
  std::vector<Prepare> lanes_;  ///< the first one is the caller's
  std::mutex lock_;
  std::condition_variable done_;  ///< a part
  std::condition_variable room_;  ///< for more parts
  std::vector<Slot> slots_;
  std::size_t next_ = 0;
  std::size_t taken_ = 0;
  bool isOver_ = false;
  std::optional<HelpingThreads> helpers_;  ///< last, as they use all of the above
};

}  // namespace veltrik
