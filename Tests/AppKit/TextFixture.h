#pragma once

#include "Platform/AppKit/NSTextView.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {

inline EventPointer keyEvent(std::uint16_t keyCode, std::string characters = {}, std::uint64_t modifiers = 0) {
  NSEvent event;
  event.type = EventType::keyDown;
  event.keyCode = keyCode;
  event.characters = characters;
  event.charactersIgnoringModifiers = std::move(characters);
  event.modifierFlags = ModifierFlag::kPlainKey | modifiers;
  return std::make_shared<const NSEvent>(std::move(event));
}

/// A text view 200 points wide (190 for its lines) without a window. The font is 10 points: a Latin letter is 5 points
/// wide, a Hangul syllable 10, a line 12.5 high.
class TextFixture : public AppKitTest {
 protected:
  TextFixture() : view(std::make_shared<NSTextView>(Rect{0, 0, 200, 100})) { configure(*view); }

  static void configure(NSTextView& text) {
    text.setFont({.size = 10});
    text.setAllowsUndo(true);
    text.setVerticallyResizable(true);
    text.textContainer().widthTracksTextView = true;
    text.textContainer().lineBreakMode = LineBreakMode::byCharWrapping;
  }

  void fill(const std::u16string& text, NSRange selection) {
    view->setTextStorage(NSAttributedString(text, view->typingAttributes()));
    view->setSelectedRange(selection);
  }
  void press(std::uint16_t keyCode, std::uint64_t modifiers = 0, const std::string& characters = {}) {
    view->keyDown(keyEvent(keyCode, characters, modifiers));
  }
  const std::u16string& text() const { return view->textStorage().string(); }
  std::uint64_t caret() const { return view->selectedRange().end(); }

  std::shared_ptr<NSTextView> view;
};

inline void PrintTo(const NSRange& range, std::ostream* out) {
  *out << "{" << range.location << ", " << range.length << "}";
}

}  // namespace platform
