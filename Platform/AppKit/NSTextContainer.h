#pragma once

#include "Platform/Port/Geometry.h"

namespace platform {

enum class LineBreakMode { byWordWrapping = 0, byCharWrapping = 1, byClipping = 2 };

/// Where a text is laid out: its size in points and how lines break.
struct NSTextContainer {
  Size containerSize{0, 0};
  bool widthTracksTextView = false;
  double lineFragmentPadding = 5;  ///< between the container's sides and the lines
  LineBreakMode lineBreakMode = LineBreakMode::byWordWrapping;
};

}  // namespace platform
