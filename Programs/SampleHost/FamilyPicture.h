#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Port/Bitmap.h"

namespace samplehost {

/// The windows as they lie over each other on the screen, the backmost first, each as see-through as it is. Nothing
/// while one of them can't tell what it shows.
std::optional<platform::Bitmap> picturedTogether(const std::vector<std::shared_ptr<platform::NSWindow>>& backToFront);

}  // namespace samplehost
