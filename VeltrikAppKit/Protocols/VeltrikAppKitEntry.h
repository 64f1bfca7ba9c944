#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Foundation/Bundle.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"

namespace veltrik {

/// The plug-in's bundle identifier.
inline constexpr const char* kVeltrikAppKitBundleIdentifier = "com.brenholt.VeltrikAppKit";

/// The version of the interfaces in this folder. It grows with every change to any of them: they are C++ classes, so
/// host and plug-in must have been built against the same version, the same Platform library and the same compiler ABI.
inline constexpr std::uint32_t kVeltrikAppKitInterfaceVersion = 1;

/// The bundle's C entry. Stores a new principal object in `*principalObject` and answers true; answers false, and
/// changes nothing, when the plug-in was built for another interface version or `principalObject` is null.
/// Needs a `platform::Session`. Main thread.
using VeltrikAppKitCreateFunction = bool(std::uint32_t interfaceVersion,
                                         std::shared_ptr<VeltrikAppKitProtocol>* principalObject);
inline constexpr const char* kVeltrikAppKitCreateSymbol = "VeltrikAppKitCreate";

/// Loads the bundle and creates a principal object. Null when the bundle can't be loaded, has no such entry or was
/// built for another interface version:
///
///     const auto bundle = platform::Bundle::open("lib/VeltrikAppKit.bundle");
///     const auto appKit = bundle ? veltrik::createVeltrikAppKit(*bundle) : nullptr;
///
/// The code stays loaded until the process ends, so the object may be let go of at any time.
inline std::shared_ptr<VeltrikAppKitProtocol> createVeltrikAppKit(platform::Bundle& bundle) {
  if (!bundle.load()) return nullptr;
  const auto create = reinterpret_cast<VeltrikAppKitCreateFunction*>(bundle.symbol(kVeltrikAppKitCreateSymbol));
  std::shared_ptr<VeltrikAppKitProtocol> principalObject;
  if (!create || !create(kVeltrikAppKitInterfaceVersion, &principalObject)) return nullptr;
  return principalObject;
}

}  // namespace veltrik
