#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Port/Backend.h"

namespace samplehost {

/// The machine the host runs on.
struct Machine {
  std::unique_ptr<platform::port::Backend> backend;
  /// Null on a real desktop: there is nothing to simulate.
  headless::HeadlessBackend* headless = nullptr;
};

/// Makes the named back end, or, without a name, the first that may be chosen and can run here. Throws
/// std::runtime_error with a reason to be shown to the user.
Machine makeMachine(const std::optional<std::string>& name);

}  // namespace samplehost
