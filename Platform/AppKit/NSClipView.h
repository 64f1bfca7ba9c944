#pragma once

#include "Platform/AppKit/NSView.h"

namespace platform {

/// The opening of a scroll view: its bounds' origin is the document's point at its top left corner, and what lies
/// outside of it is cut off.
class PLATFORM_EXPORT NSClipView final : public NSView {
 public:
  bool isFlipped() const override { return true; }
};

}  // namespace platform
