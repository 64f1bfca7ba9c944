#pragma once

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Port/Value.h"

namespace veltrik {

/// A second C entry of the bundle, for consoles and tests: writes what the plug-in keeps on a window into `*values`,
/// "hostWindowID", "isHelperBound", "contentTopInset" (null for none), "isPopover", "isForcedClose" and
/// "hasFirstOrderFrontHandler". Changes nothing else. Main thread.
using VeltrikAppKitWindowValuesFunction = void(const platform::NSWindow& window, platform::Dictionary* values);
inline constexpr const char* kVeltrikAppKitWindowValuesSymbol = "VeltrikAppKitWindowValues";

}  // namespace veltrik
