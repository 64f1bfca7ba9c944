#include "Platform/AppKit/NSView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

NSView::~NSView() {
  for (const auto& constraint : constraints_) constraint->owner_ = nullptr;
  for (const auto& subview : subviews_) {
    subview->superview_ = nullptr;
    subview->forgetWindow();
  }
}

void NSView::setFrame(const Rect& frame) {
  if (frame == frame_) return;
  const Rect old = frame_;
  if (superview_) superview_->setNeedsDisplay(old);
  frame_ = frame;
  bounds_.width = frame.width;
  bounds_.height = frame.height;
  if (superview_) superview_->setNeedsDisplay(frame);
  if (old.size() != frame.size()) {
    resizeSubviews(old.size());
    setNeedsLayout();
  }
  frameDidChange(old);
}

void NSView::setBoundsOrigin(Point origin) {
  if (origin == bounds_.origin()) return;
  bounds_.x = origin.x;
  bounds_.y = origin.y;
  setNeedsDisplay();
}

void NSView::addSubview(std::shared_ptr<NSView> view) {
  if (!view || isDescendantOf(*view)) return;
  if (view->superview_ == this) {
    std::erase(subviews_, view);
    subviews_.push_back(view);
    setNeedsDisplay(view->frame_);
    return;
  }
  view->removeFromSuperview();
  subviews_.push_back(view);
  view->superview_ = this;
  setNeedsLayout();
  setNeedsDisplay(view->frame_);
  view->moveToWindow(window_);
}

void NSView::removeFromSuperview() {
  if (!superview_) return;
  const auto self = std::static_pointer_cast<NSView>(shared_from_this());
  NSView& parent = *std::exchange(superview_, nullptr);
  std::erase(parent.subviews_, self);
  for (NSView* each = &parent; each; each = each->superview_) each->dropConstraintsOf(*this);
  parent.setNeedsLayout();
  parent.setNeedsDisplay(frame_);
  moveToWindow(nullptr);
}

void NSView::dropConstraintsOf(const NSView& leaving) {
  const auto inside = [&](const std::shared_ptr<NSView>& view) { return view && view->isDescendantOf(leaving); };
  std::erase_if(constraints_, [&](const std::shared_ptr<NSLayoutConstraint>& constraint) {
    if (!inside(constraint->first()) && !inside(constraint->second())) return false;
    constraint->owner_ = nullptr;
    return true;
  });
}

void NSView::moveToWindow(NSWindow* window) {
  if (window == window_) return;
  const auto self = weak_from_this().lock();
  viewWillMoveToWindow(window);
  if (window_) window_->viewLeaves(*this);
  window_ = window;
  const auto subviews = subviews_;
  for (const auto& subview : subviews) {
    if (subview->superview_ == this) subview->moveToWindow(window);
    if (window_ != window) return;  // a subview moved the tree elsewhere
  }
  if (window_ && needsLayout_) window_->needsLayout();
  viewDidMoveToWindow();
}

void NSView::forgetWindow() {
  window_ = nullptr;
  for (const auto& subview : subviews_) subview->forgetWindow();
}

bool NSView::isDescendantOf(const NSView& ancestor) const {
  for (const NSView* each = this; each; each = each->superview_)
    if (each == &ancestor) return true;
  return false;
}

void NSView::setHidden(bool hidden) {
  if (hidden == hidden_) return;
  hidden_ = hidden;
  if (superview_) superview_->setNeedsDisplay(frame_);
  if (hidden && window_) window_->viewLeaves(*this);
}

bool NSView::isHiddenOrHasHiddenAncestor() const {
  for (const NSView* each = this; each; each = each->superview_)
    if (each->hidden_) return true;
  return false;
}

void NSView::setWantsLayer(bool wants) {
  if (wants == wantsLayer()) return;
  layer_ = wants ? std::make_unique<CALayer>() : nullptr;
  setNeedsDisplay();
}

bool NSView::acceptsFirstMouse(const EventPointer& /*event*/) {
  return false;
}

NSResponder* NSView::nextResponder() {
  if (superview_) return superview_;
  return window_;
}

bool NSView::performKeyEquivalent(const EventPointer& event) {
  const auto subviews = subviews_;
  for (auto each = subviews.rbegin(); each != subviews.rend(); ++each)
    if ((*each)->superview_ == this && !(*each)->hidden_ && (*each)->performKeyEquivalent(event)) return true;
  return false;
}

}  // namespace platform
