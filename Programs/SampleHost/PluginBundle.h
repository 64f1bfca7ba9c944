#pragma once

#include <filesystem>
#include <memory>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Port/Value.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"

namespace samplehost {

/// Where the bundle lies when it was built or installed beside this program: "../lib/VeltrikAppKit.bundle".
std::filesystem::path defaultBundlePath();

/// Loads the plug-in's bundle and makes its principal object. Throws std::runtime_error with the reason.
std::shared_ptr<veltrik::VeltrikAppKitProtocol> loadPlugin(const std::filesystem::path& bundle);

/// What the loaded plug-in keeps on a window, by the values' names; empty before it was loaded.
platform::Dictionary attachedValues(const platform::NSWindow& window);

}  // namespace samplehost
