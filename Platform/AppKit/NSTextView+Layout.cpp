#include <algorithm>

#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/AppKit/TextRanges.h"

namespace platform {
namespace {

constexpr double kCaretWidth = 1;
constexpr double kUnlimitedWidth = 1e6;

port::Wrapping wrappingFor(LineBreakMode mode, double width) {
  if (width >= kUnlimitedWidth || mode == LineBreakMode::byClipping) return port::Wrapping::none;
  return mode == LineBreakMode::byCharWrapping ? port::Wrapping::characters : port::Wrapping::words;
}

}  // namespace

void NSTextView::setMinSize(Size size) {
  minSize_ = size;
  setNeedsLayout();
}

void NSTextView::setMaxSize(Size size) {
  maxSize_ = size;
  setNeedsLayout();
}

double NSTextView::lineWidth() const {
  const double container = container_.widthTracksTextView ? frame().width : container_.containerSize.width;
  return std::min(container, kUnlimitedWidth + 2 * container_.lineFragmentPadding) - 2 * container_.lineFragmentPadding;
}

bool NSTextView::layOutLines() const {
  const double width = lineWidth();
  const auto wrapping = wrappingFor(container_.lineBreakMode, width);
  if (wrapping != port::Wrapping::none && width <= 0) return false;
  lines_.setWidth(width, wrapping);
  lines_.layOut(storage_, {typingFont(), textColor_, marked_});
  return true;
}

void NSTextView::layout() {
  NSText::layout();
  sizeToFit();
}

void NSTextView::sizeToFit() {
  if (!layOutLines()) return;
  const auto within = [](double value, double low, double high) { return std::max(low, std::min(value, high)); };
  const Size used = lines_.usedSize();
  Rect fitting = frame();
  if (verticallyResizable_) fitting.height = within(used.height, minSize_.height, maxSize_.height);
  if (horizontallyResizable_)
    fitting.width =
        within(used.width + 2 * container_.lineFragmentPadding + kCaretWidth, minSize_.width, maxSize_.width);
  if (fitting != frame()) setFrame(fitting);
}

void NSTextView::frameDidChange(const Rect& old) {
  if (frame().width != old.width) sizeToFit();
  if (auto* scrollView = NSScrollView::enclosing(*this)) scrollView->documentFrameDidChange();
}

void NSTextView::textChanged() {
  // Without a window nobody looks; the first question about geometry lays out.
  if (window() != nullptr) {
    sizeToFit();
    scrollRangeToVisible({head_.offset, 0});
  }
  setNeedsLayout();
  setNeedsDisplay();
  restartCaret();
}

NSTextView::Caret NSTextView::caretAt(Point point) const {
  if (!layOutLines()) return {};
  return lines_.caretAt({point.x - container_.lineFragmentPadding, point.y});
}

std::uint64_t NSTextView::characterIndexAt(Point point) const {
  return caretAt(point).offset;
}

Rect NSTextView::caretRect() const {
  if (!layOutLines()) return {};
  const Rect line = lines_.caretRect(head_);
  return {line.x + container_.lineFragmentPadding, line.y, kCaretWidth, line.height};
}

Rect NSTextView::rectForRange(NSRange range) const {
  if (!layOutLines()) return {};
  range = clampedRange(storage_.string(), range);
  const auto rects = lines_.rectsFor(range);
  if (rects.empty()) {
    const Rect line = lines_.caretRect({range.location, false});
    return {line.x + container_.lineFragmentPadding, line.y, kCaretWidth, line.height};
  }
  Rect all = rects.front();
  for (const Rect& rect : rects) {
    const double left = std::min(all.x, rect.x);
    all = {left, all.y, std::max(all.maxX(), rect.maxX()) - left, rect.maxY() - all.y};
  }
  return all.offsetBy({container_.lineFragmentPadding, 0});
}

void NSTextView::scrollRangeToVisible(NSRange range) {
  auto* scrollView = NSScrollView::enclosing(*this);
  if (scrollView == nullptr) return;
  const bool isCaret = range == NSRange{head_.offset, 0};
  scrollView->scrollRectToVisible(isCaret ? caretRect() : rectForRange(range));
}

void NSTextView::draw(port::Canvas& canvas) {
  if (drawsBackground_) canvas.fill({{0, 0}, frame().size()}, backgroundColor_, 0);
  if (!layOutLines()) return;
  drawSelection(canvas);
  lines_.draw(canvas, visibleRect(), {container_.lineFragmentPadding, 0});
  if (isCaretVisible() && selection_.length == 0) canvas.fill(caretRect(), textColor_, 0);
}

void NSTextView::drawSelection(port::Canvas& canvas) const {
  if (selection_.length == 0) return;
  const Rect visible = visibleRect();
  const Color& color = caretTimer_ ? palette::kSelection : palette::kInactiveSelection;
  for (const Rect& rect : lines_.rectsFor(selection_)) {
    const Rect placed = rect.offsetBy({container_.lineFragmentPadding, 0});
    if (!placed.intersection(visible).isEmpty()) canvas.fill(placed, color, 0);
  }
}

}  // namespace platform
