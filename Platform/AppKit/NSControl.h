#pragma once

#include "Platform/AppKit/NSView.h"

namespace platform {

/// A view that the user operates: a button, a field.
class PLATFORM_EXPORT NSControl : public NSView {
 public:
  using NSView::NSView;
};

}  // namespace platform
