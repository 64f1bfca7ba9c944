#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace platform {

/// Ends a subscription when it is destroyed.
class AnyCancellable {
 public:
  explicit AnyCancellable(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  ~AnyCancellable() {
    if (cancel_) cancel_();
  }
  AnyCancellable(AnyCancellable&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  AnyCancellable& operator=(AnyCancellable&&) = delete;

 private:
  std::function<void()> cancel_;
};

/// A stream that hands each value to those subscribed at that moment and keeps none. Main thread.
template <class T>
class PassthroughSubject {
 public:
  using Handler = std::function<void(const T&)>;

  [[nodiscard]] AnyCancellable sink(Handler handler) {
    auto entry = std::make_shared<Handler>(std::move(handler));
    handlers_->push_back(entry);
    return AnyCancellable([weak = std::weak_ptr(handlers_), entry] {
      if (const auto handlers = weak.lock()) std::erase(*handlers, entry);
      *entry = nullptr;
    });
  }
  /// As `sink`, without a value equal to the one before it.
  [[nodiscard]] AnyCancellable sinkRemovingDuplicates(Handler handler) {
    return sink([last = std::optional<T>(), handler = std::move(handler)](const T& value) mutable {
      if (last == value) return;
      last = value;
      handler(value);
    });
  }
  void send(const T& value) {
    const auto snapshot = *handlers_;  // a handler may subscribe, cancel, or drop the subject
    for (const auto& handler : snapshot)
      if (*handler) (*handler)(value);
  }

 private:
  std::shared_ptr<std::vector<std::shared_ptr<Handler>>> handlers_ =
      std::make_shared<std::vector<std::shared_ptr<Handler>>>();
};

}  // namespace platform
