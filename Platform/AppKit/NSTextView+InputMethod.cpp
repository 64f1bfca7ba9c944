#include <algorithm>

#include "Platform/AppKit/KeyBindings.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/TextRanges.h"

namespace platform {
namespace {

/// How much text around the caret an input method is shown, in either direction.
constexpr std::uint64_t kSurroundingLength = 1000;

/// The stretch of a text of `size` units that starts `offset` units from `caret`, as far as it is in the text.
NSRange stretchAround(std::uint64_t caret, std::uint64_t size, std::ptrdiff_t offset, std::size_t length) {
  constexpr std::int64_t kFar = std::int64_t{1} << 40;  // beyond any text, and sums of it don't overflow
  const auto from = static_cast<std::int64_t>(caret) + std::clamp<std::int64_t>(offset, -kFar, kFar);
  const auto to = from + static_cast<std::int64_t>(std::min<std::uint64_t>(length, 4 * kFar));
  const auto last = static_cast<std::int64_t>(size);
  const auto start = static_cast<std::uint64_t>(std::clamp<std::int64_t>(from, 0, last));
  return {start, static_cast<std::uint64_t>(std::clamp<std::int64_t>(to, 0, last)) - start};
}

bool isUndoOrRedo(std::string_view command) {
  return command == "undo:" || command == "redo:";
}

}  // namespace

void NSTextInputContext::discardMarkedText() {
  NSWindow* window = view_.window();
  if (window != nullptr && window->firstResponder().get() == &view_) window->textInputChanged(true);
}

void NSTextView::setMarkedText(const std::u16string& text, std::size_t caret) {
  const auto keepAlive = weak_from_this().lock();
  const bool composing = hasMarkedText();
  if (text.empty() && !composing) return;
  if (!composing) {
    compositionSteps_ = 0;
    compositionIsUndoable_ = true;
  }
  const bool done = perform({.range = composing ? marked_ : selection_,
                             .with = NSAttributedString(text, typingAttributes()),
                             .caret = clampedRange(text, {caret, 0}).location,
                             .marked = NSRange{0, text.size()}});
  if (done && hasMarkedText()) ++compositionSteps_;
  if (done) return;
  // A refused preedit must not come back as a commit.
  endComposition();
  inputContext_.discardMarkedText();
}

void NSTextView::unmarkText() {
  endComposition();
}

void NSTextView::endComposition() {
  if (!hasMarkedText()) return;
  lines_.invalidate(marked_);
  marked_ = {};
  compositionSteps_ = 0;
  setNeedsDisplay();
  inputContext_.discardMarkedText();
}

void NSTextView::deleteSurrounding(std::ptrdiff_t offset, std::size_t length) {
  const auto keepAlive = weak_from_this().lock();
  if (!editable_) return;
  // Reckoned without the marked text, which stays.
  std::uint64_t caret = hasMarkedText() ? marked_.location : selection_.location;
  const std::uint64_t caretInMarked = hasMarkedText() ? head_.offset - marked_.location : 0;
  const NSRange doomed = stretchAround(caret, storage_.length() - marked_.length, offset, length);
  const std::uint64_t split = std::clamp(caret, doomed.location, doomed.end());
  const NSRange after{split + marked_.length, doomed.end() - split};
  const NSRange before{doomed.location, split - doomed.location};
  if (after.length > 0) replaceCharacters(after, {});
  if (before.length > 0 && replaceCharacters(before, {})) caret -= before.length;
  setSelectedRange({caret + caretInMarked, 0});
}

void NSTextView::interpretKeyEvent(const EventPointer& event) {
  const auto keepAlive = weak_from_this().lock();
  // Offered to the input method, an undo would first commit the composition that it is to take back.
  const bool takesCompositionBack = hasMarkedText() && isUndoOrRedo(editingCommandFor(*event));
  if (editable_ && !takesCompositionBack && window() != nullptr && window()->offerToInputMethod(event)) return;
  interpretKeyDirectly(event);
}

void NSTextView::interpretKeyDirectly(const EventPointer& event) {
  const auto keepAlive = weak_from_this().lock();
  const auto command = editingCommandFor(*event);
  const auto text = typedText(*event);
  // A key that acts beside the input method ends what that was composing.
  if ((!command.empty() || !text.empty()) && !isUndoOrRedo(command)) endComposition();
  if (!command.empty() && doCommand(command)) return;
  if (!text.empty() && command.empty()) {
    insertText(text);
  } else if (NSResponder* next = nextResponder()) {
    next->keyDown(event);
  }
}

std::optional<port::TextInputState> NSTextView::textInputState() {
  if (!editable_ || window() == nullptr || isHiddenOrHasHiddenAncestor()) return std::nullopt;
  const std::u16string& text = storage_.string();
  const std::uint64_t caret = hasMarkedText() ? marked_.location : head_.offset;
  const std::uint64_t anchor = hasMarkedText() ? caret : anchor_;
  const std::uint64_t behind = hasMarkedText() ? marked_.end() : caret;
  const std::uint64_t first = std::max(caret, kSurroundingLength) - kSurroundingLength;
  const NSRange before = clampedRange(text, {first, caret - first});
  const NSRange after = clampedRange(text, {behind, kSurroundingLength});
  port::TextInputState state;
  state.surroundingText = text.substr(before.location, before.length) + text.substr(after.location, after.length);
  state.cursor = caret - before.location;
  state.anchor =
      std::min<std::size_t>(std::max(anchor, before.location) - before.location, state.surroundingText.size());
  const Rect inWindow = convertTo(caretRect(), nullptr);
  state.caret = Rect(window()->convertPointToScreen(inWindow.origin()), inWindow.size());
  return state;
}

}  // namespace platform
