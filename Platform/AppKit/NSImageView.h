#pragma once

#include <memory>

#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSImage.h"

namespace platform {

/// Shows a picture as large as fits, undistorted and in the middle; a small one isn't enlarged. Main thread.
class PLATFORM_EXPORT NSImageView : public NSControl {
 public:
  using NSControl::NSControl;

  std::shared_ptr<const NSImage> image() const { return image_; }
  /// Null: nothing to be seen.
  void setImage(std::shared_ptr<const NSImage> image);
  void draw(port::Canvas& canvas) override;

 private:
  std::shared_ptr<const NSImage> image_;
};

/// Draws into `view` as an image view does, sharp at the scale of the view's screen.
PLATFORM_EXPORT void drawImageFitting(port::Canvas& canvas, const NSView& view, const NSImage& image);

}  // namespace platform
