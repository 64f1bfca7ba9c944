#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/TextRanges.h"

namespace platform {

bool NSTextView::replaceCharacters(NSRange range, const std::u16string& with) {
  return perform(
      {.range = range, .with = NSAttributedString(with, typingAttributes()), .caret = with.size(), .marked = {}});
}

bool NSTextView::perform(Edit edit) {
  // Approval and reports may drop the view.
  const auto keepAlive = weak_from_this().lock();
  if (!editable_) return false;
  beginEditing();
  edit.range = clampedRange(storage_.string(), edit.range);
  if (!shouldChangeTextInRanges({edit.range}, {edit.with.string()})) return false;
  // Whoever approved may have put another text here meanwhile.
  edit.range = clampedRange(storage_.string(), edit.range);
  const NSRange before = selection_;
  apply(edit);
  textChanged();
  selectionMayHaveChanged(before);
  didChangeText();
  return true;
}

void NSTextView::apply(const Edit& edit) {
  if (hasMarkedText()) lines_.invalidate(marked_);
  storage_.replace(edit.range, edit.with);
  lines_.replaced(storage_.string(), edit.range, edit.with.length());
  bool compositionMet = false;
  if (edit.marked) {
    marked_ = edit.marked->length > 0 ? NSRange{edit.range.location, edit.with.length()} : NSRange{};
  } else {
    compositionMet = moveMarkedTextAlong(edit.range, edit.with.length());
  }
  const std::uint64_t caret = edit.range.location + std::min(edit.caret, edit.with.length());
  selection_ = {caret, 0};
  anchor_ = caret;
  head_ = {caret, false};
  column_.reset();
  if (compositionMet) endComposition();
}

bool NSTextView::moveMarkedTextAlong(NSRange edited, std::uint64_t newLength) {
  if (!hasMarkedText() || edited.location >= marked_.end()) return false;
  if (edited.end() > marked_.location) {
    marked_ = clampedRange(storage_.string(), marked_);
    return true;
  }
  marked_.location += newLength - edited.length;  // modulo 2^64: also right for a deletion
  return false;
}

void NSTextView::beginEditing() {
  if (std::exchange(editingBegan_, true)) return;
  std::shared_ptr<NSTextViewDelegate> hold;
  if (auto* observer = delegate(hold)) observer->textDidBeginEditing(*this);
}

bool NSTextView::shouldChangeTextInRanges(const std::vector<NSRange>& ranges,
                                          const std::vector<std::u16string>& replacements) {
  if (!allowsUndo_ || ranges.empty() || replacements.empty()) return true;
  const NSRange written{ranges.front().location, replacements.front().size()};
  undo_.registerUndo(this,
                     [this, written, lost = storage_.substring(ranges.front())] { replaceForUndo(written, lost); });
  return true;
}

void NSTextView::replaceForUndo(NSRange range, const NSAttributedString& with) {
  endComposition();
  perform({.range = range, .with = with, .caret = with.length(), .marked = {}});
}

void NSTextView::insertText(const std::u16string& text) {
  const auto keepAlive = weak_from_this().lock();
  const bool composing = hasMarkedText();
  const NSRange range = composing ? marked_ : selection_;
  if (text.empty() && range.length == 0) return;
  const bool done = perform({.range = range,
                             .with = NSAttributedString(text, typingAttributes()),
                             .caret = text.size(),
                             .marked = NSRange{}});
  if (done && !hasMarkedText()) compositionSteps_ = 0;
  if (!done && composing) endComposition();
}

void NSTextView::undo() {
  const auto keepAlive = weak_from_this().lock();
  if (!allowsUndo_) return;
  if (hasMarkedText()) {
    undoComposition();
  } else {
    undo_.undo();
  }
}

void NSTextView::undoComposition() {
  const NSRange composed = marked_;
  const int steps = compositionIsUndoable_ ? compositionSteps_ : 0;
  endComposition();
  for (int step = 0; step < steps && undo_.canUndo(); ++step) undo_.undo();
  // The steps back were dropped while composing: what is left of the composition goes as an edit of its own.
  if (steps == 0) replaceCharacters(composed, {});
}

void NSTextView::redo() {
  const auto keepAlive = weak_from_this().lock();
  if (!allowsUndo_) return;
  endComposition();
  undo_.redo();
}

void NSTextView::removeUndoSteps() {
  undo_.removeAllActions(this);
  compositionIsUndoable_ = false;
}

void NSTextView::flushBufferedKeyEvents() {
  if (window() == nullptr || !isFirstResponder()) return;
  const std::int64_t number = window()->windowNumber();
  NSApplication::shared().discardEvents(
      [number](const NSEvent& event) { return event.isKey() && event.windowNumber == number; });
}

}  // namespace platform
