#include "VeltrikAppKit/ProcessState.h"

#include <algorithm>

#include "Platform/Foundation/Session.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitEntry.h"

namespace veltrik {

ProcessState& ProcessState::current() {
  return platform::Session::current().service<ProcessState>();
}

std::shared_ptr<platform::Bundle> appKitBundle() {
  const auto bundles = platform::Bundle::allBundles();
  const auto found = std::find_if(bundles.begin(), bundles.end(), [](const auto& bundle) {
    return bundle->isLoaded() && bundle->bundleIdentifier() == kVeltrikAppKitBundleIdentifier;
  });
  return found == bundles.end() ? nullptr : *found;
}

}  // namespace veltrik
