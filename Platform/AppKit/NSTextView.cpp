#include "Platform/AppKit/NSTextView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/TextRanges.h"

namespace platform {
namespace {

constexpr double kDefaultFontSize = 13;

NSRange rangeBetween(std::uint64_t one, std::uint64_t other) {
  return {std::min(one, other), std::max(one, other) - std::min(one, other)};
}

bool haveSameSingleLook(const NSAttributedString& a, const NSAttributedString& b) {
  return a.runs().size() == 1 && b.runs().size() == 1 && a.runs().front().attributes == b.runs().front().attributes;
}

}  // namespace

NSTextView::NSTextView() : NSTextView(Rect{}) {}

NSTextView::NSTextView(const Rect& frame) : NSText(frame) {}

NSTextView::~NSTextView() {
  stopCaret();
}

void NSTextView::setTextStorage(NSAttributedString text) {
  const auto keepAlive = weak_from_this().lock();
  endComposition();
  if (haveSameSingleLook(storage_, text)) {
    const NSRange changed = changedRange(storage_.string(), text.string());
    const std::uint64_t unchanged = text.length() - changed.length;
    lines_.replaced(text.string(), {changed.location, storage_.length() - unchanged}, changed.length);
  } else {
    lines_.invalidateAll();
  }
  storage_ = std::move(text);
  const NSRange before = selection_;
  const auto clamped = [&](std::uint64_t at) { return clampedRange(storage_.string(), {at, 0}).location; };
  anchor_ = clamped(anchor_);
  head_ = {clamped(head_.offset), false};
  selection_ = rangeBetween(anchor_, head_.offset);
  column_.reset();
  textChanged();
  selectionMayHaveChanged(before);
}

void NSTextView::setSelectedRange(NSRange range) {
  range = clampedRange(storage_.string(), range);
  select(range.location, {range.end(), false});
}

void NSTextView::select(std::uint64_t anchor, Caret head) {
  const auto keepAlive = weak_from_this().lock();
  const NSRange before = selection_;
  anchor_ = anchor;
  head_ = head;
  selection_ = rangeBetween(anchor, head.offset);
  column_.reset();
  const bool leavesMarked = selection_.location < marked_.location || selection_.end() > marked_.end();
  if (hasMarkedText() && leavesMarked) endComposition();
  restartCaret();
  selectionMayHaveChanged(before);
}

void NSTextView::selectionMayHaveChanged(NSRange before) {
  setNeedsDisplay();
  if (window() != nullptr && isFirstResponder()) window()->textInputChanged(false);
  if (selection_ == before) return;
  std::shared_ptr<NSTextViewDelegate> hold;
  if (auto* observer = delegate(hold)) observer->textViewDidChangeSelection(*this);
}

NSTextViewDelegate* NSTextView::delegate(std::shared_ptr<NSTextViewDelegate>& hold) const {
  hold = delegate_.lock();
  return hold ? hold.get() : selfDelegate_;
}

void NSTextView::setFont(const Font& font) {
  font_ = font;
  lines_.invalidateAll();
  if (!richText_) {
    const auto runs = storage_.runs();
    for (const auto& run : runs) {
      Attributes attributes = run.attributes;
      attributes[kFontAttribute] = font;
      storage_.setAttributes(run.range, attributes);
    }
  }
  textChanged();
}

void NSTextView::setTextColor(const Color& color) {
  textColor_ = color;
  lines_.invalidateAll();
  textChanged();
}

Attributes NSTextView::typingAttributes() const {
  return {{kFontAttribute, typingFont()}};
}

Font NSTextView::typingFont() const {
  return font_.value_or(Font{.size = kDefaultFontSize});
}

void NSTextView::setEditable(bool editable) {
  editable_ = editable;
  if (!editable) endComposition();
  if (window() != nullptr && isFirstResponder()) window()->textInputChanged(!editable);
}

void NSTextView::setSelectable(bool selectable) {
  selectable_ = selectable;
}

void NSTextView::setDrawsBackground(bool draws) {
  drawsBackground_ = draws;
  setNeedsDisplay();
}

void NSTextView::setBackgroundColor(const Color& color) {
  backgroundColor_ = color;
  setNeedsDisplay();
}

}  // namespace platform
