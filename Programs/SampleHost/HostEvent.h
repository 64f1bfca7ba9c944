#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Port/Value.h"

namespace samplehost {

/// A call that reached one of the host's delegates. `from` is "app", "application", "window:ID" or "text:ID".
struct HostEvent {
  std::string name;
  std::string from;
  platform::Value::Array arguments;
};

/// Hands every event to those who listen. Main thread.
class HostEvents {
 public:
  using Listener = std::function<void(const HostEvent&)>;
  void listen(Listener listener) { listeners_.push_back(std::move(listener)); }
  void emit(const HostEvent& event) const {
    for (const Listener& listener : listeners_) listener(event);
  }

 private:
  std::vector<Listener> listeners_;
};

}  // namespace samplehost
