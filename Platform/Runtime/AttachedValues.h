#pragma once

#include <any>
#include <unordered_map>
#include <utility>

namespace platform::runtime {

/// Names a value that code attaches to an object it doesn't own; each key object is a key of its own, whatever its
/// type. `inline const AttachedKey<bool> kIsPopover{false};`
template <class T>
class AttachedKey {
 public:
  explicit AttachedKey(T fallback = T{}) : fallback_(std::move(fallback)) {}
  AttachedKey(const AttachedKey&) = delete;
  AttachedKey& operator=(const AttachedKey&) = delete;
  /// What a value that was never set reads as.
  const T& fallback() const { return fallback_; }

 private:
  T fallback_;
};

/// The values attached to one object; they live and die with it. Main thread.
class AttachedValues {
 public:
  /// Valid until the key is set again.
  template <class T>
  const T& get(const AttachedKey<T>& key) const {
    const auto found = values_.find(&key);
    return found == values_.end() ? key.fallback() : *std::any_cast<T>(&found->second);
  }
  template <class T>
  void set(const AttachedKey<T>& key, T value) {
    // The former value goes last: its destruction may read or set values here.
    const std::any former = std::exchange(values_[&key], std::any(std::move(value)));
  }

 private:
  std::unordered_map<const void*, std::any> values_;
};

}  // namespace platform::runtime
