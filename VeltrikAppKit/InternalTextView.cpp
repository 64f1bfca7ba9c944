#include "VeltrikAppKit/InternalTextView.h"

#include <utility>

#include "Platform/AppKit/TextRanges.h"

namespace veltrik {
namespace {

using platform::EventPointer;
using platform::NSAttributedString;
using platform::NSEvent;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

constexpr double kFallbackFontSize = 13;

bool isArrow(std::uint16_t keyCode) {
  return keyCode >= KeyCode::kLeftArrow && keyCode <= KeyCode::kUpArrow;
}

/// The key as it would be with Shift alone held.
EventPointer withShiftOnly(const NSEvent& event) {
  NSEvent rebuilt = event;
  rebuilt.modifierFlags = ModifierFlag::kShift;
  return std::make_shared<const NSEvent>(std::move(rebuilt));
}

}  // namespace

InternalTextView::InternalTextView() {
  setSelfAsTextViewDelegate(this);
}

platform::Attributes InternalTextView::defaultAttributes() const {
  const double size = font() ? font()->size : kFallbackFontSize;
  return {{platform::kFontAttribute, platform::Font{.size = size}}};
}

// Keys.

void InternalTextView::keyDown(const EventPointer& event) {
  if (!canKeyDownOverriding_) return NSTextView::keyDown(event);
  const auto keepAlive = weak_from_this().lock();
  constexpr std::uint64_t kIgnored = ModifierFlag::kCapsLock | ModifierFlag::kNumericPad;
  const std::uint64_t modifiers = event->modifierFlags & ModifierFlag::kDeviceIndependentMask & ~kIgnored;
  backspaceEntered_ = event->keyCode == KeyCode::kBackspace;
  backArrowEntered_ = event->keyCode == KeyCode::kLeftArrow;
  if (modifiers == 0) {
    handlePlainKey(event);
  } else {
    handleModifiedKey(event, modifiers);
  }
}

void InternalTextView::handlePlainKey(const EventPointer& event) {
  if (event->keyCode == KeyCode::kReturn) {
    handleReturn();
  } else {
    NSTextView::keyDown(event);
  }
}

void InternalTextView::handleReturn() {
  if (hasMarkedText() && isConvertingMode_) {
    endMarkedText();
  } else {
    if (const auto delegate = textInputViewDelegate_.lock()) delegate->requestToSendMessage();
    flushBufferedKeyEvents();
  }
  preparingConvertMode_ = false;
  removeUndoSteps();
}

void InternalTextView::handleModifiedKey(const EventPointer& event, std::uint64_t modifiers) {
  const bool isReturn = event->keyCode == KeyCode::kReturn;
  const bool entersLine = isReturn && modifiers == ModifierFlag::kControl;
  if (isReturn && (event->modifierFlags & ModifierFlag::kOption) != 0) {
    preparingConvertMode_ = true;
  } else if (!isArrow(event->keyCode)) {
    preparingConvertMode_ = false;
  }
  NSTextView::keyDown(entersLine ? withShiftOnly(*event) : event);
}

// Edits.

bool InternalTextView::shouldChangeTextInRanges(const std::vector<platform::NSRange>& ranges,
                                                const std::vector<std::u16string>& replacements) {
  isConvertingMode_ = preparingConvertMode_ && replacements.size() == 1 && replacements.front() != u"\n";
  prevAttributedText_ = textStorage();
  const auto delegate = textInputViewDelegate_.lock();
  if (!delegate || ranges.empty() || replacements.empty()) return true;
  const std::string text = platform::utf8(replacements.front());
  return backspaceEntered_ ? delegate->shouldHandleBackspaceIn(*this, ranges.front(), text)
                           : delegate->shouldChangeTextInTextView(*this, ranges.front(), text);
}

void InternalTextView::didChangeText() {
  const auto keepAlive = weak_from_this().lock();
  reportChange();
  registerUndo(prevAttributedText_);
}

void InternalTextView::reportChange() {
  if (const auto delegate = textInputViewDelegate_.lock()) delegate->didChangeIn(*this, string());
}

void InternalTextView::registerUndo(const Snapshot& snapshot) {
  const auto weakThis = std::weak_ptr<platform::NSResponder>(weak_from_this());
  undoManager().registerUndo(this, [weakThis, snapshot] {
    const auto view = std::dynamic_pointer_cast<InternalTextView>(weakThis.lock());
    if (view) view->restore(snapshot);
  });
}

void InternalTextView::restore(const Snapshot& snapshot) {
  const std::u16string before = textStorage().string();
  registerUndo(textStorage());
  replaceWholeText(snapshot);
  // The caret goes to what came back.
  NSTextView::setSelectedRange({platform::changedRange(before, textStorage().string()).end(), 0});
  reportChange();
}

void InternalTextView::replaceWholeText(const Snapshot& text) {
  setTextStorage(text ? *text : NSAttributedString(std::u16string(), defaultAttributes()));
}

void InternalTextView::setAttributedText(const std::optional<NSAttributedString>& text) {
  if (!isEditable()) return;
  const auto keepAlive = weak_from_this().lock();
  replaceWholeText(text);
  reportChange();
  registerUndo(prevAttributedText_);
}

void InternalTextView::reset() {
  const auto keepAlive = weak_from_this().lock();
  setAttributedText(std::nullopt);
  prevAttributedText_.reset();
  endMarkedText();
  removeUndoSteps();
}

void InternalTextView::unmark() {
  const auto keepAlive = weak_from_this().lock();
  unmarkText();
}

void InternalTextView::endMarkedText() {
  unmarkText();
  inputContext().discardMarkedText();
}

// Focus and selection.

void InternalTextView::setTextEditable(bool editable) {
  const auto keepAlive = weak_from_this().lock();
  setEditable(editable);
  setSelectable(editable);
  setHidden(!editable);
}

bool InternalTextView::resignFirstResponder() {
  return canResignFirstResponder_ && NSTextView::resignFirstResponder();
}

void InternalTextView::textViewDidChangeSelection(platform::NSTextView& /*view*/) {
  const bool byLeftArrow = backArrowEntered_;
  if (const auto delegate = textInputViewDelegate_.lock()) delegate->didChangeSelectionIn(*this, byLeftArrow);
  backArrowEntered_ = false;
}

// The base's report of the first edit is of no use to a host that hears of every edit.
void InternalTextView::textDidBeginEditing(platform::NSTextView& /*view*/) {}

}  // namespace veltrik
