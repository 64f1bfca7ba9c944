#include "Platform/AppKit/KeyBindings.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "Platform/Foundation/Unicode.h"

namespace platform {
namespace {

using namespace ModifierFlag;

struct Binding {
  std::uint16_t keyCode;
  std::uint64_t modifiers;
  std::string_view command;
};

constexpr std::array kBindings = {
    Binding{KeyCode::kLeftArrow, 0, "moveLeft:"},
    Binding{KeyCode::kLeftArrow, kShift, "moveLeftAndModifySelection:"},
    Binding{KeyCode::kLeftArrow, kControl, "moveWordLeft:"},
    Binding{KeyCode::kLeftArrow, kControl | kShift, "moveWordLeftAndModifySelection:"},
    Binding{KeyCode::kRightArrow, 0, "moveRight:"},
    Binding{KeyCode::kRightArrow, kShift, "moveRightAndModifySelection:"},
    Binding{KeyCode::kRightArrow, kControl, "moveWordRight:"},
    Binding{KeyCode::kRightArrow, kControl | kShift, "moveWordRightAndModifySelection:"},
    Binding{KeyCode::kUpArrow, 0, "moveUp:"},
    Binding{KeyCode::kUpArrow, kShift, "moveUpAndModifySelection:"},
    Binding{KeyCode::kUpArrow, kControl, "moveToBeginningOfParagraph:"},
    Binding{KeyCode::kUpArrow, kControl | kShift, "moveToBeginningOfParagraphAndModifySelection:"},
    Binding{KeyCode::kDownArrow, 0, "moveDown:"},
    Binding{KeyCode::kDownArrow, kShift, "moveDownAndModifySelection:"},
    Binding{KeyCode::kDownArrow, kControl, "moveToEndOfParagraph:"},
    Binding{KeyCode::kDownArrow, kControl | kShift, "moveToEndOfParagraphAndModifySelection:"},
    Binding{KeyCode::kHome, 0, "moveToBeginningOfLine:"},
    Binding{KeyCode::kHome, kShift, "moveToBeginningOfLineAndModifySelection:"},
    Binding{KeyCode::kHome, kControl, "moveToBeginningOfDocument:"},
    Binding{KeyCode::kHome, kControl | kShift, "moveToBeginningOfDocumentAndModifySelection:"},
    Binding{KeyCode::kEnd, 0, "moveToEndOfLine:"},
    Binding{KeyCode::kEnd, kShift, "moveToEndOfLineAndModifySelection:"},
    Binding{KeyCode::kEnd, kControl, "moveToEndOfDocument:"},
    Binding{KeyCode::kEnd, kControl | kShift, "moveToEndOfDocumentAndModifySelection:"},
    Binding{KeyCode::kPageUp, 0, "pageUp:"},
    Binding{KeyCode::kPageUp, kShift, "pageUpAndModifySelection:"},
    Binding{KeyCode::kPageDown, 0, "pageDown:"},
    Binding{KeyCode::kPageDown, kShift, "pageDownAndModifySelection:"},
    Binding{KeyCode::kBackspace, 0, "deleteBackward:"},
    Binding{KeyCode::kBackspace, kShift, "deleteBackward:"},
    Binding{KeyCode::kBackspace, kControl, "deleteWordBackward:"},
    Binding{KeyCode::kForwardDelete, 0, "deleteForward:"},
    Binding{KeyCode::kForwardDelete, kShift, "cut:"},
    Binding{KeyCode::kForwardDelete, kControl, "deleteWordForward:"},
    Binding{KeyCode::kReturn, 0, "insertNewline:"},
    Binding{KeyCode::kReturn, kShift, "insertNewline:"},
    Binding{KeyCode::kKeypadEnter, 0, "insertNewline:"},
    Binding{KeyCode::kKeypadEnter, kShift, "insertNewline:"},
    Binding{KeyCode::kTab, 0, "insertTab:"},
    Binding{KeyCode::kA, kControl, "selectAll:"},
    Binding{KeyCode::kC, kControl, "copy:"},
    Binding{KeyCode::kX, kControl, "cut:"},
    Binding{KeyCode::kV, kControl, "paste:"},
    Binding{KeyCode::kZ, kControl, "undo:"},
    Binding{KeyCode::kZ, kControl | kShift, "redo:"},
    Binding{KeyCode::kY, kControl, "redo:"},
};

struct Letter {
  char letter;
  std::uint16_t keyCode;
};
constexpr std::array kBoundLetters = {Letter{'a', KeyCode::kA}, Letter{'c', KeyCode::kC}, Letter{'v', KeyCode::kV},
                                      Letter{'x', KeyCode::kX}, Letter{'y', KeyCode::kY}, Letter{'z', KeyCode::kZ}};
constexpr std::uint16_t kNoKey = 0xFFFF;

/// The key whose bindings apply: on a layout that puts letters elsewhere, the key that has the typed letter.
std::uint16_t boundKey(const NSEvent& event) {
  const auto& typed = event.charactersIgnoringModifiers;
  const bool isLatin = typed.size() == 1 && std::isalpha(static_cast<unsigned char>(typed[0])) != 0;
  const auto letterOf = [&](const Letter& entry) {
    return isLatin ? entry.letter == std::tolower(static_cast<unsigned char>(typed[0]))
                   : entry.keyCode == event.keyCode;
  };
  const auto* found = std::find_if(kBoundLetters.begin(), kBoundLetters.end(), letterOf);
  if (found != kBoundLetters.end()) return found->keyCode;
  return isLatin ? kNoKey : event.keyCode;
}

bool isTypable(char16_t unit) {
  constexpr char16_t kFirstFunctionKey = 0xF700, kLastFunctionKey = 0xF8FF, kDelete = 0x7F, kFirstPrintable = 0x20;
  return unit >= kFirstPrintable && unit != kDelete && (unit < kFirstFunctionKey || unit > kLastFunctionKey);
}

}  // namespace

std::string_view editingCommandFor(const NSEvent& event) {
  const std::uint64_t modifiers = event.modifierFlags & (kShift | kControl | kOption | kCommand);
  const std::uint16_t key = boundKey(event);
  const auto* found = std::find_if(kBindings.begin(), kBindings.end(), [&](const Binding& binding) {
    return binding.keyCode == key && binding.modifiers == modifiers;
  });
  return found == kBindings.end() ? std::string_view{} : found->command;
}

std::u16string typedText(const NSEvent& event) {
  if ((event.modifierFlags & (kControl | kOption | kCommand)) != 0) return {};
  std::u16string text = utf16(event.characters);
  std::erase_if(text, [](char16_t unit) { return !isTypable(unit); });
  return text;
}

}  // namespace platform
