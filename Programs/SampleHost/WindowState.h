#pragma once

#include <string>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Port/Value.h"

namespace samplehost {

/// All that the model knows of a window, by the fields' names.
platform::Dictionary windowState(platform::NSWindow& window);
/// One field. Throws RequestError for a name that no field has.
platform::Value windowField(platform::NSWindow& window, const std::string& name);

}  // namespace samplehost
