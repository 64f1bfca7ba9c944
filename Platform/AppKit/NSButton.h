#pragma once

#include <memory>
#include <string>

#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSImage.h"

namespace platform {

/// A picture to be clicked, or, bordered, a push button with a title. It sends its action when the button is released
/// over it. A picture leaves the keyboard focus where it is; a push button takes it, shows a ring then, and is pressed
/// by Space and Return. Main thread.
class PLATFORM_EXPORT NSButton : public NSControl {
 public:
  /// Around a push button's body, inside its frame: room for the ring.
  static constexpr double kRing = 3;

  using NSControl::NSControl;

  bool isFlipped() const override { return true; }
  std::shared_ptr<const NSImage> image() const { return image_; }
  /// Null: nothing to be seen, still to be clicked.
  void setImage(std::shared_ptr<const NSImage> image);
  const std::string& title() const { return title_; }
  /// Shown by a push button, on one line, cut where it is too long.
  void setTitle(std::string utf8);
  bool isBordered() const { return bordered_; }
  void setBordered(bool bordered);
  /// "\r" marks the button that Return is meant for, "\033" the one for Escape; empty for neither. The view that holds
  /// the button acts on it.
  const std::string& keyEquivalent() const { return keyEquivalent_; }
  void setKeyEquivalent(std::string key);
  /// Pressed, and the pointer over it.
  bool isHighlighted() const { return highlighted_; }
  /// As a click.
  void performClick() { sendAction(); }

  /// A push button's, with all of its title.
  std::optional<Size> intrinsicContentSize() const override;
  bool acceptsFirstResponder() override { return bordered_ && !isHiddenOrHasHiddenAncestor(); }
  bool becomeFirstResponder() override;
  bool resignFirstResponder() override;
  void draw(port::Canvas& canvas) override;
  void mouseDown(const EventPointer& event) override;
  void keyDown(const EventPointer& event) override;

 private:
  void setHighlighted(bool highlighted);
  void drawBody(port::Canvas& canvas);
  std::shared_ptr<const port::TextLayout> titleLayout(double width) const;

  std::shared_ptr<const NSImage> image_;
  std::string title_;
  std::string keyEquivalent_;
  bool bordered_ = false;
  bool highlighted_ = false;
};

}  // namespace platform
