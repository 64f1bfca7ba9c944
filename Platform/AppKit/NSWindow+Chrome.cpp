#include <cmath>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"

namespace platform {

void NSWindow::setTitle(const std::string& title) {
  runtime::send(kSetTitle, *this, title);
}

void NSWindow::titleChanged(const std::string& title) {
  title_ = title;
  updateSurface();
  placeContent();
  invalidate({{}, frame_.size()});
}

void NSWindow::setTitlebarAppearsTransparent(bool transparent) {
  titlebarTransparent_ = transparent;
  placeContent();
  invalidate({{}, frame_.size()});
}

void NSWindow::setTitleHidden(bool hidden) {
  titleHidden_ = hidden;
  invalidate({{}, frame_.size()});
}

void NSWindow::setStyleMask(unsigned mask) {
  styleMask_ = mask;
  updateSurface();
  placeContent();
  invalidate({{}, frame_.size()});
}

bool NSWindow::hasButton(WindowButton button) const {
  static constexpr unsigned kNeeds[] = {StyleMask::kClosable, StyleMask::kMiniaturizable, StyleMask::kResizable};
  return (styleMask_ & StyleMask::kTitled) && (styleMask_ & kNeeds[static_cast<std::size_t>(button)]);
}

StandardButton* NSWindow::standardWindowButton(WindowButton button) {
  return hasButton(button) ? &buttons_[static_cast<std::size_t>(button)] : nullptr;
}

void NSWindow::setButtonHidden(WindowButton button, bool hidden) {
  StandardButton* standard = standardWindowButton(button);
  if (!standard) return;
  standard->hidden = hidden;
  invalidate({{}, frame_.size()});
}

void NSWindow::setBackgroundColor(const Color& color) {
  backgroundColor_ = color;
  updateSurface();
  invalidate({{}, frame_.size()});
}

void NSWindow::setOpaque(bool opaque) {
  opaque_ = opaque;
  updateSurface();
  invalidate({{}, frame_.size()});
}

bool NSWindow::allowsAutomaticWindowTabbing() {
  return NSApplication::shared().allowsAutomaticWindowTabbing_;
}

void NSWindow::setAllowsAutomaticWindowTabbing(bool allows) {
  NSApplication::shared().allowsAutomaticWindowTabbing_ = allows;
}

// A see-through window has the shape of what it shows: its content view, or the one view that fills it.
double NSWindow::cornerRadius() const {
  if (opaque_ || !contentView_) return 0;
  const auto radiusOf = [](NSView& view) {
    const CALayer* layer = view.layer();
    return layer && layer->masksToBounds ? layer->cornerRadius : 0.0;
  };
  if (const double radius = radiusOf(*contentView_); radius > 0) return radius;
  const auto& subviews = contentView_->subviews();
  return subviews.empty() ? 0 : radiusOf(*subviews.front());
}

void NSWindow::invalidate(const Rect& inWindow) {
  if (surface_) surface_->invalidate({inWindow.x, frame_.height - inWindow.maxY(), inWindow.width, inWindow.height});
}

void NSWindow::display() {
  layoutIfNeeded();
  invalidate({{}, frame_.size()});
}

void NSWindow::needsLayout() {
  if (layoutNeeded_ || closed_) return;
  layoutNeeded_ = true;
  NSApplication::shared().needsLayout(std::static_pointer_cast<NSWindow>(weak_from_this().lock()));
}

void NSWindow::layoutIfNeeded() {
  placeContent();
  // A view that asks for layout inside layout gets it at once, but not without end.
  for (int pass = 0; layoutNeeded_ && pass < 8; ++pass) {
    layoutNeeded_ = false;
    themeFrame_->layoutSubtreeIfNeeded();
  }
}

void NSWindow::surfacePaint(port::Canvas& canvas, const Rect& dirtyFromTopLeft) {
  const auto alive = self();
  layoutIfNeeded();
  const Rect all{{}, frame_.size()};
  const Color background = backgroundColor_.value_or(palette::kWindow);
  canvas.save();
  canvas.clip(dirtyFromTopLeft, 0);
  if (!opaque_ || background.alpha < 1) canvas.clear(all);
  canvas.translate({0, -std::round((1 - revealed_) * frame_.height)});
  canvas.fill(all, background, 0);
  themeFrame_->display(canvas);
  themeFrame_->drawChrome(canvas);
  canvas.restore();
}

}  // namespace platform
