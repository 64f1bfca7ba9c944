#pragma once

#include "Platform/Port/Geometry.h"

namespace platform {

class NSPasteboard;

/// What a drop does with what is dragged.
enum class DragOperation { none = 0, copy = 1 };

/// Something that is dragged over a window; for the length of the call that tells of it.
struct NSDraggingInfo {
  Point location;  ///< in window coordinates
  const NSPasteboard& pasteboard;
};

}  // namespace platform
