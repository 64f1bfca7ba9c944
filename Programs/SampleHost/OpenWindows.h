#pragma once

#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>

#include "Programs/SampleHost/CallTable.h"
#include "Programs/SampleHost/Host.h"

namespace samplehost {

/// Windows of one kind that the console has opened, by identifier. `Window(Host&, identifier)` makes one, `open(frame)`
/// shows it. Main thread.
template <class Window>
class OpenWindows {
 public:
  /// `kind` names one of them in an error.
  explicit OpenWindows(const char* kind) : kind_(kind) {}

  /// Throws RequestError when that one is open.
  void open(Host& host, const std::string& identifier, const platform::Rect& frame) {
    if (windows_.contains(identifier))
      throw RequestError(fmt::format("the {} \"{}\" is open already", kind_, identifier));
    windows_.emplace(identifier, std::make_unique<Window>(host, identifier)).first->second->open(frame);
  }
  /// Throws RequestError when that one isn't open.
  Window& at(const std::string& identifier) const {
    const auto found = windows_.find(identifier);
    if (found == windows_.end()) throw RequestError(fmt::format("there is no {} \"{}\"", kind_, identifier));
    return *found->second;
  }
  void close(const std::string& identifier) { windows_.erase(identifier); }

 private:
  const char* kind_;
  std::map<std::string, std::unique_ptr<Window>> windows_;
};

}  // namespace samplehost
