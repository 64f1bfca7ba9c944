#pragma once

#include <memory>

#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSImage.h"

namespace platform {

/// A picture to be clicked, without border and title. It sends its action when the button is released over it, and
/// leaves the keyboard focus where it is. Main thread.
class PLATFORM_EXPORT NSButton : public NSControl {
 public:
  using NSControl::NSControl;

  bool isFlipped() const override { return true; }
  std::shared_ptr<const NSImage> image() const { return image_; }
  /// Null: nothing to be seen, still to be clicked.
  void setImage(std::shared_ptr<const NSImage> image);
  /// Pressed, and the pointer over it.
  bool isHighlighted() const { return highlighted_; }
  /// As a click.
  void performClick() { sendAction(); }

  void draw(port::Canvas& canvas) override;
  void mouseDown(const EventPointer& event) override;

 private:
  void setHighlighted(bool highlighted);

  std::shared_ptr<const NSImage> image_;
  bool highlighted_ = false;
};

}  // namespace platform
