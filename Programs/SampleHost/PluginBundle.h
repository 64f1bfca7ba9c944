#pragma once

#include <filesystem>
#include <memory>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Port/Value.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitSearchField.h"

namespace samplehost {

/// Where the bundle lies when it was built or installed beside this program: "../lib/VeltrikAppKit.bundle".
std::filesystem::path defaultBundlePath();

/// Loads the plug-in's bundle and makes its principal object. Throws std::runtime_error with the reason.
std::shared_ptr<veltrik::VeltrikAppKitProtocol> loadPlugin(const std::filesystem::path& bundle);

/// The loaded plug-in's search field, with its callbacks set. Throws std::runtime_error when none was loaded.
std::shared_ptr<platform::NSView> makeSearchField(const veltrik::SearchFieldCallbacks& callbacks);
/// Seconds since the user's last input, as the loaded plug-in tells; 0 before it was loaded.
double idleTimeInterval();
/// What the loaded plug-in keeps on a window, by the values' names; empty before it was loaded.
platform::Dictionary attachedValues(const platform::NSWindow& window);

}  // namespace samplehost
