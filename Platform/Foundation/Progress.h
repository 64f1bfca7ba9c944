#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/Export.h"

namespace platform {

/// How far a piece of work has come, and the wish to stop it. The worker sets the counts; others watch and may cancel.
/// A part of the work can be handed to a child, which counts in units of its own: when it is finished, the units
/// pending for it here are completed. Every member may be called from any thread.
class PLATFORM_EXPORT Progress {
 public:
  using Handler = std::function<void()>;

  explicit Progress(std::int64_t totalUnitCount = 0) : total_(totalUnitCount) {}
  /// Children live on, on their own.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  std::int64_t totalUnitCount() const { return total_.load(std::memory_order_acquire); }
  void setTotalUnitCount(std::int64_t count);
  /// What this progress completed itself, and the pending units of its finished children.
  std::int64_t completedUnitCount() const { return completed_.load(std::memory_order_acquire); }
  void setCompletedUnitCount(std::int64_t count);
  void addCompletedUnitCount(std::int64_t count);

  /// 0 to 1, the fractions of unfinished children included; 0 while the total is not known.
  double fractionCompleted() const;
  /// The total is known, not 0, and reached.
  bool isFinished() const;

  /// Asks the work, and that of all children, to stop. It can't be taken back; the work ends when it notices.
  void cancel();
  bool isCancelled() const { return cancelled_.load(std::memory_order_acquire); }
  /// Called once, on the cancelling thread; at once when the progress is cancelled already.
  void setCancellationHandler(Handler handler);

  /// Makes `child` stand for `pendingUnitCount` units of this total. A child has one parent for life; a second one
  /// throws std::logic_error. A child of a cancelled progress is cancelled, a finished one counts at once.
  void addChild(std::shared_ptr<Progress> child, std::int64_t pendingUnitCount);

 private:
  void completeForParentIfFinished();

  std::atomic<std::int64_t> total_;
  std::atomic<std::int64_t> completed_ = 0;
  std::atomic<bool> cancelled_ = false;

  // Guarded by one lock for all trees, which is held for a few instructions and never while a handler runs.
  Progress* parent_ = nullptr;
  bool hadParent_ = false;
  std::int64_t pendingUnitCount_ = 0;
  std::vector<std::shared_ptr<Progress>> children_;
  Handler cancellationHandler_;
};

}  // namespace platform
