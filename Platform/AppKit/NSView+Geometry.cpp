#include <algorithm>
#include <cmath>

#include "Platform/AppKit/NSView.h"

namespace platform {

namespace {

struct Span {
  double start;
  double length;
};

/// Shares the growth of the space around a span equally between its flexible parts.
Span resized(Span span, double growth, bool marginBefore, bool length, bool marginAfter) {
  const int parts = int{marginBefore} + int{length} + int{marginAfter};
  if (parts == 0) return span;
  const double share = growth / parts;
  return {marginBefore ? span.start + share : span.start, length ? span.length + share : span.length};
}

Rect rectBetween(Point a, Point b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
}

}  // namespace

void NSView::resizeSubviews(Size old) {
  const double growthX = frame_.width - old.width, growthY = frame_.height - old.height;
  const auto subviews = subviews_;
  for (const auto& subview : subviews) {
    if (!subview->translatesAutoresizingMask_) continue;
    const unsigned mask = subview->autoresizingMask_;
    const Rect& frame = subview->frame_;
    const Span x = resized({frame.x, frame.width}, growthX, mask & Autoresizing::kMinXMargin,
                           mask & Autoresizing::kWidth, mask & Autoresizing::kMaxXMargin);
    const Span y = resized({frame.y, frame.height}, growthY, mask & Autoresizing::kMinYMargin,
                           mask & Autoresizing::kHeight, mask & Autoresizing::kMaxYMargin);
    subview->setFrame({x.start, y.start, x.length, y.length});
  }
}

Point NSView::toSuperview(Point point) const {
  Point inFrame = point - bounds_.origin();
  const bool superviewFlipped = superview_ && superview_->isFlipped();
  if (isFlipped() != superviewFlipped) inFrame.y = frame_.height - inFrame.y;
  return inFrame + frame_.origin();
}

Point NSView::fromSuperview(Point point) const {
  Point inFrame = point - frame_.origin();
  const bool superviewFlipped = superview_ && superview_->isFlipped();
  if (isFlipped() != superviewFlipped) inFrame.y = frame_.height - inFrame.y;
  return inFrame + bounds_.origin();
}

const NSView& NSView::root() const {
  const NSView* each = this;
  while (each->superview_) each = each->superview_;
  return *each;
}

Point NSView::toRoot(Point point) const {
  for (const NSView* each = this; each; each = each->superview_) point = each->toSuperview(point);
  return point;
}

Point NSView::fromRoot(Point point) const {
  return fromSuperview(superview_ ? superview_->fromRoot(point) : point);
}

Point NSView::convertTo(Point point, const NSView* view) const {
  if (!view) return toRoot(point);
  if (&view->root() != &root()) return point;
  return view->fromRoot(toRoot(point));
}

Point NSView::convertFrom(Point point, const NSView* view) const {
  if (!view) return fromRoot(point);
  return view->convertTo(point, this);
}

Rect NSView::convertTo(const Rect& rect, const NSView* view) const {
  return rectBetween(convertTo(rect.origin(), view), convertTo(Point{rect.maxX(), rect.maxY()}, view));
}

Rect NSView::convertFrom(const Rect& rect, const NSView* view) const {
  return rectBetween(convertFrom(rect.origin(), view), convertFrom(Point{rect.maxX(), rect.maxY()}, view));
}

NSView* NSView::hitTest(Point point) {
  if (hidden_) return nullptr;
  const Point inBounds = fromSuperview(point);
  // A pointer names the pixel to its right and below, so the top edge is inside and the bottom edge outside, whichever
  // way y grows.
  const double fromTop = isFlipped() ? inBounds.y - bounds_.y : bounds_.maxY() - inBounds.y;
  const double fromLeft = inBounds.x - bounds_.x;
  if (fromLeft < 0 || fromLeft >= bounds_.width || fromTop < 0 || fromTop >= bounds_.height) return nullptr;
  for (auto each = subviews_.rbegin(); each != subviews_.rend(); ++each)
    if (NSView* hit = (*each)->hitTest(inBounds)) return hit;
  return this;
}

Rect NSView::visibleRect() const {
  Rect visible = bounds_;
  for (const NSView* each = superview_; each; each = each->superview_)
    if (each->clipsToBounds()) visible = visible.intersection(convertFrom(each->bounds_, each));
  return visible;
}

}  // namespace platform
