#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

/// Ends a subscription when it is destroyed or cancelled, at the latest.
class AnyCancellable {
 public:
  explicit AnyCancellable(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  ~AnyCancellable() { cancel(); }
  AnyCancellable(AnyCancellable&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  AnyCancellable& operator=(AnyCancellable&&) = delete;

  /// From now on the handler is called no more; also inside the handler itself.
  void cancel() {
    if (const auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }

 private:
  std::function<void()> cancel_;
};

/// A stream that hands each value to those subscribed at that moment and keeps none. A handler may subscribe, cancel
/// any subscription, send again, or destroy the subject. Main thread.
template <class T>
class PassthroughSubject {
 public:
  using Handler = std::function<void(const T&)>;

  /// A stream of the same values without those equal to the one before; each subscription compares for itself.
  class WithoutDuplicates {
   public:
    [[nodiscard]] AnyCancellable sink(Handler handler) {
      return subject_.sink([last = std::optional<T>(), handler = std::move(handler)](const T& value) mutable {
        if (last == value) return;
        last = value;
        handler(value);
      });
    }

   private:
    friend class PassthroughSubject;
    explicit WithoutDuplicates(PassthroughSubject& subject) : subject_(subject) {}
    PassthroughSubject& subject_;
  };

  [[nodiscard]] AnyCancellable sink(Handler handler) {
    auto entry = std::make_shared<Entry>(Entry{std::move(handler)});
    entries_->push_back(entry);
    return AnyCancellable([weak = std::weak_ptr(entries_), entry] {
      entry->cancelled = true;
      if (const auto entries = weak.lock()) std::erase(*entries, entry);
    });
  }
  /// `subject.removeDuplicates().sink(…)`
  [[nodiscard]] WithoutDuplicates removeDuplicates() { return WithoutDuplicates(*this); }

  void send(const T& value) {
    const T sent = value;  // a handler may change what the caller's reference stands for
    const auto snapshot = *entries_;
    for (const auto& entry : snapshot)
      if (!entry->cancelled) entry->handler(sent);
  }

 private:
  struct Entry {
    Handler handler;
    bool cancelled = false;
  };
  using Entries = std::vector<std::shared_ptr<Entry>>;
  std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};

}  // namespace platform
