#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

void NSView::setNeedsDisplay(const Rect& rect) {
  if (window_ && !hidden_) window_->invalidate(convertTo(rect, nullptr));
}

void NSView::display(port::Canvas& canvas) {
  if (hidden_ || frame_.isEmpty()) return;
  Point topLeft = frame_.origin();
  if (superview_) {
    topLeft = topLeft - superview_->bounds_.origin();
    if (!superview_->isFlipped()) topLeft.y = superview_->bounds_.height - topLeft.y - frame_.height;
  }
  const Rect area{0, 0, frame_.width, frame_.height};
  canvas.save();
  canvas.translate(topLeft);
  const double radius = layer_ ? layer_->cornerRadius : 0;
  if (layer_ && layer_->backgroundColor) canvas.fill(area, *layer_->backgroundColor, radius);
  if (clipsToBounds()) canvas.clip(area, radius);
  draw(canvas);
  const auto subviews = subviews_;
  for (const auto& subview : subviews) subview->display(canvas);
  canvas.restore();
}

void NSView::setNeedsLayout() {
  needsLayout_ = true;
  if (window_) window_->needsLayout();
}

void NSView::layout() {
  auto constraints = constraints_;
  for (const auto& subview : subviews_)
    for (const auto& constraint : subview->constraints_)
      if (!constraint->second()) constraints.push_back(constraint);
  if (!constraints.empty()) solveConstraints(*this, constraints);
}

void NSView::layoutSubtreeIfNeeded() {
  if (needsLayout_) {
    needsLayout_ = false;
    layout();
  }
  const auto subviews = subviews_;
  for (const auto& subview : subviews) subview->layoutSubtreeIfNeeded();
}

void NSView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
  translatesAutoresizingMask_ = translates;
  (superview_ ? superview_ : this)->setNeedsLayout();
}

}  // namespace platform
