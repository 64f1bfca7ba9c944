#include "Platform/AppKit/NSScrollView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSClipView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"

namespace platform {
namespace {

constexpr double kLegacyWidth = 15;
constexpr double kOverlayWidth = 10;
constexpr Color kBackground{1, 1, 1, 1};

double widthOf(bool has, const NSScroller& scroller) {
  return has && scroller.scrollerStyle() == ScrollerStyle::legacy ? kLegacyWidth : 0;
}

double proportion(double visible, double whole) {
  return whole > visible ? visible / whole : 1;
}

double position(double offset, double visible, double whole) {
  return whole > visible ? offset / (whole - visible) : 0;
}

/// The offset nearest to `offset` at which [from, to) shows in an opening of `length`.
double revealing(double offset, double length, double from, double to) {
  if (from < offset || to - from > length) return from;
  return to > offset + length ? to - length : offset;
}

}  // namespace

NSScrollView::NSScrollView() : NSScrollView(Rect{}) {}

NSScrollView::NSScrollView(const Rect& frame)
    : NSView(frame),
      clip_(std::make_shared<NSClipView>()),
      vertical_(std::make_shared<NSScroller>()),
      horizontal_(std::make_shared<NSScroller>()) {
  vertical_->setHidden(true);
  horizontal_->setHidden(true);
  vertical_->setAction([this](double at) {
    scrollTo({documentVisibleRect().x, at * (documentSize().height - contentSize().height)});
  });
  horizontal_->setAction([this](double at) {
    scrollTo({at * (documentSize().width - contentSize().width), documentVisibleRect().y});
  });
  addSubview(clip_);
  addSubview(vertical_);
  addSubview(horizontal_);
}

NSScrollView::~NSScrollView() {
  // Whoever keeps a scroller must not reach a scroll view that has gone.
  vertical_->setAction(nullptr);
  horizontal_->setAction(nullptr);
}

NSScrollView* NSScrollView::enclosing(const NSView& view) {
  for (NSView* clip = view.superview(); clip != nullptr; clip = clip->superview())
    if (auto* scrollView = dynamic_cast<NSScrollView*>(clip->superview());
        scrollView && scrollView->clip_.get() == clip)
      return scrollView;
  return nullptr;
}

void NSScrollView::setDocumentView(std::shared_ptr<NSView> view) {
  if (document_ == view) return;
  if (document_) document_->removeFromSuperview();
  document_ = std::move(view);
  if (document_) clip_->addSubview(document_);
  setNeedsLayout();
}

Size NSScrollView::contentSize() const {
  const double border = 2 * borderWidth();
  return {std::max(0.0, frame().width - border - widthOf(hasVertical_, *vertical_)),
          std::max(0.0, frame().height - border - widthOf(hasHorizontal_, *horizontal_))};
}

Size NSScrollView::documentSize() const {
  return document_ ? document_->frame().size() : Size{};
}

Rect NSScrollView::documentVisibleRect() const {
  return {clip_->bounds().origin(), contentSize()};
}

void NSScrollView::scrollTo(Point documentOrigin) {
  const Size visible = contentSize();
  const Size whole = documentSize();
  const Point allowed{std::clamp(documentOrigin.x, 0.0, std::max(0.0, whole.width - visible.width)),
                      std::clamp(documentOrigin.y, 0.0, std::max(0.0, whole.height - visible.height))};
  const bool moves = allowed != clip_->bounds().origin();
  if (moves) clip_->setBoundsOrigin(allowed);
  updateScrollers();
  if (!moves) return;
  vertical_->flash();
  horizontal_->flash();
  setNeedsDisplay();
  caretMayHaveMoved();
}

void NSScrollView::caretMayHaveMoved() {
  if (window() == nullptr) return;
  const auto responder = window()->firstResponder();
  const auto* view = dynamic_cast<const NSView*>(responder.get());
  if (view != nullptr && view->isDescendantOf(*this)) window()->textInputChanged(false);
}

void NSScrollView::scrollRectToVisible(const Rect& inDocument) {
  const Rect visible = documentVisibleRect();
  scrollTo({revealing(visible.x, visible.width, inDocument.minX(), inDocument.maxX()),
            revealing(visible.y, visible.height, inDocument.minY(), inDocument.maxY())});
}

void NSScrollView::documentFrameDidChange() {
  scrollTo(clip_->bounds().origin());
  setNeedsDisplay();
}

void NSScrollView::updateScrollers() {
  const Rect visible = documentVisibleRect();
  const Size whole = documentSize();
  vertical_->setKnob(proportion(visible.height, whole.height), position(visible.y, visible.height, whole.height));
  horizontal_->setKnob(proportion(visible.width, whole.width), position(visible.x, visible.width, whole.width));
}

void NSScrollView::setBorderType(BorderType border) {
  border_ = border;
  setNeedsLayout();
  setNeedsDisplay();
}

void NSScrollView::setHasVerticalScroller(bool has) {
  hasVertical_ = has;
  vertical_->setHidden(!has);
  setNeedsLayout();
}

void NSScrollView::setHasHorizontalScroller(bool has) {
  hasHorizontal_ = has;
  horizontal_->setHidden(!has);
  setNeedsLayout();
}

void NSScrollView::setDrawsBackground(bool draws) {
  drawsBackground_ = draws;
  setNeedsDisplay();
}

void NSScrollView::draw(port::Canvas& canvas) {
  const Rect whole{{0, 0}, frame().size()};
  if (drawsBackground_) canvas.fill(whole, kBackground, 0);
  if (border_ == BorderType::line) canvas.stroke(whole.insetBy(0.5, 0.5), palette::kSeparator, 1, 0);
}

void NSScrollView::layout() {
  const double border = borderWidth();
  const Size content = contentSize();
  const auto thickness = [](const NSScroller& scroller) {
    return scroller.scrollerStyle() == ScrollerStyle::legacy ? kLegacyWidth : kOverlayWidth;
  };
  const double right = border + content.width + widthOf(hasVertical_, *vertical_);
  const double bottom = border + content.height + widthOf(hasHorizontal_, *horizontal_);
  vertical_->setFrame({right - thickness(*vertical_), border, thickness(*vertical_), content.height});
  horizontal_->setFrame({border, bottom - thickness(*horizontal_), content.width, thickness(*horizontal_)});
  clip_->setFrame({{border, border}, content});
  if (document_ && (document_->autoresizingMask() & Autoresizing::kWidth) != 0) {
    Rect stretched = document_->frame();
    stretched.width = content.width;
    document_->setFrame(stretched);
  }
  documentFrameDidChange();
}

void NSScrollView::scrollWheel(const EventPointer& event) {
  const Point before = clip_->bounds().origin();
  scrollTo({before.x - event->deltaX, before.y - event->deltaY});
  // At the document's end the wheel moves what lies around.
  if (clip_->bounds().origin() == before) NSView::scrollWheel(event);
}

}  // namespace platform
