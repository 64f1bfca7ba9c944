#include "Platform/Foundation/Progress.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace platform {

namespace {

std::recursive_mutex& treeLock() {
  static std::recursive_mutex lock;
  return lock;
}

}  // namespace

Progress::~Progress() {
  const std::lock_guard guard(treeLock());
  for (const auto& child : children_) child->parent_ = nullptr;
}

void Progress::setTotalUnitCount(std::int64_t count) {
  total_.store(count, std::memory_order_release);
  completeForParentIfFinished();
}

void Progress::setCompletedUnitCount(std::int64_t count) {
  completed_.store(count, std::memory_order_release);
  completeForParentIfFinished();
}

void Progress::addCompletedUnitCount(std::int64_t count) {
  completed_.fetch_add(count, std::memory_order_acq_rel);
  completeForParentIfFinished();
}

bool Progress::isFinished() const {
  const auto total = totalUnitCount();
  return total > 0 && completedUnitCount() >= total;
}

double Progress::fractionCompleted() const {
  const std::lock_guard guard(treeLock());
  const auto total = static_cast<double>(totalUnitCount());
  if (total <= 0) return 0;
  auto completed = static_cast<double>(completedUnitCount());
  for (const auto& child : children_) {
    completed += child->fractionCompleted() * static_cast<double>(child->pendingUnitCount_);
  }
  return std::clamp(completed / total, 0.0, 1.0);
}

void Progress::completeForParentIfFinished() {
  if (!isFinished()) return;
  const std::lock_guard guard(treeLock());
  if (parent_ == nullptr) return;
  Progress& parent = *std::exchange(parent_, nullptr);
  const auto at = std::find_if(parent.children_.rbegin(), parent.children_.rend(),
                               [this](const auto& child) { return child.get() == this; });
  // The parent may hold the last reference to this.
  const std::shared_ptr<Progress> self = std::move(*at);
  parent.children_.erase(std::next(at).base());
  parent.addCompletedUnitCount(pendingUnitCount_);
}

void Progress::cancel() {
  std::vector<std::shared_ptr<Progress>> children;
  Handler handler;
  {
    const std::lock_guard guard(treeLock());
    cancelled_.store(true, std::memory_order_release);
    children = children_;
    handler = std::exchange(cancellationHandler_, nullptr);
  }
  if (handler) handler();
  for (const auto& child : children) child->cancel();
}

void Progress::setCancellationHandler(Handler handler) {
  {
    const std::lock_guard guard(treeLock());
    if (!isCancelled()) {
      cancellationHandler_ = std::move(handler);
      return;
    }
  }
  if (handler) handler();
}

void Progress::addChild(std::shared_ptr<Progress> child, std::int64_t pendingUnitCount) {
  Progress& added = *child;
  {
    const std::lock_guard guard(treeLock());
    if (std::exchange(added.hadParent_, true)) throw std::logic_error("a progress has one parent for life");
    added.parent_ = this;
    added.pendingUnitCount_ = pendingUnitCount;
    children_.push_back(std::move(child));
  }
  added.completeForParentIfFinished();
  if (isCancelled()) added.cancel();
}

}  // namespace platform
