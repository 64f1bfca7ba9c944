#include <algorithm>
#include <array>
#include <utility>

#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/TextRanges.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

bool NSTextView::doCommand(std::string_view selector) {
  const auto keepAlive = weak_from_this().lock();
  static constexpr std::array<std::pair<std::string_view, Command>, 12> kCommands = {{
      {"deleteBackward:", &NSTextView::deleteBackward},
      {"deleteForward:", &NSTextView::deleteForward},
      {"deleteWordBackward:", &NSTextView::deleteWordBackward},
      {"deleteWordForward:", &NSTextView::deleteWordForward},
      {"insertNewline:", &NSTextView::insertNewline},
      {"insertTab:", &NSTextView::insertTab},
      {"selectAll:", &NSTextView::selectAll},
      {"copy:", &NSTextView::copy},
      {"cut:", &NSTextView::cut},
      {"paste:", &NSTextView::paste},
      {"undo:", &NSTextView::undo},
      {"redo:", &NSTextView::redo},
  }};
  constexpr std::string_view kExtending = "AndModifySelection:";
  const auto found =
      std::find_if(kCommands.begin(), kCommands.end(), [&](const auto& entry) { return entry.first == selector; });
  if (found != kCommands.end()) {
    (this->*found->second)();
    return true;
  }
  if (selector.ends_with(kExtending)) return move(selector.substr(0, selector.size() - kExtending.size()), true);
  if (selector.ends_with(':') && move(selector.substr(0, selector.size() - 1), false)) return true;
  return NSText::doCommand(selector);
}

bool NSTextView::move(std::string_view name, bool extending) {
  static constexpr std::array<std::pair<std::string_view, Move>, 14> kMoves = {{
      {"moveLeft", &NSTextView::left},
      {"moveRight", &NSTextView::right},
      {"moveWordLeft", &NSTextView::wordLeft},
      {"moveWordRight", &NSTextView::wordRight},
      {"moveUp", &NSTextView::up},
      {"moveDown", &NSTextView::down},
      {"pageUp", &NSTextView::pageUp},
      {"pageDown", &NSTextView::pageDown},
      {"moveToBeginningOfLine", &NSTextView::lineStart},
      {"moveToEndOfLine", &NSTextView::lineEnd},
      {"moveToBeginningOfParagraph", &NSTextView::paragraphStart},
      {"moveToEndOfParagraph", &NSTextView::paragraphEnd},
      {"moveToBeginningOfDocument", &NSTextView::documentStart},
      {"moveToEndOfDocument", &NSTextView::documentEnd},
  }};
  const auto found = std::find_if(kMoves.begin(), kMoves.end(), [&](const auto& entry) { return entry.first == name; });
  if (found == kMoves.end()) return false;
  Movement movement = (this->*found->second)();
  const bool collapses = !extending && selection_.length > 0;
  if (collapses && name == "moveLeft") movement.caret = {selection_.location, false};
  if (collapses && name == "moveRight") movement.caret = {selection_.end(), false};
  select(extending ? anchor_ : movement.caret.offset, movement.caret);
  column_ = movement.column;
  scrollRangeToVisible({head_.offset, 0});
  return true;
}

NSTextView::Movement NSTextView::left() const {
  return {{previousCharacter(storage_.string(), head_.offset), false}, {}};
}

NSTextView::Movement NSTextView::right() const {
  return {{nextCharacter(storage_.string(), head_.offset), false}, {}};
}

NSTextView::Movement NSTextView::wordLeft() const {
  const std::u16string& text = storage_.string();
  return {{previousWordStart(text, head_.offset), false}, {}};
}

NSTextView::Movement NSTextView::wordRight() const {
  return {{nextWordEnd(storage_.string(), head_.offset), false}, {}};
}

NSTextView::Movement NSTextView::up() const {
  return vertically(-1);
}

NSTextView::Movement NSTextView::down() const {
  return vertically(1);
}

NSTextView::Movement NSTextView::pageUp() const {
  return vertically(-pageDistance());
}

NSTextView::Movement NSTextView::pageDown() const {
  return vertically(pageDistance());
}

NSTextView::Movement NSTextView::vertically(double distance) const {
  if (!layOutLines()) return {head_, column_};
  const Rect caret = lines_.caretRect(head_);
  const double column = column_.value_or(caret.x);
  const double y = distance < 0 ? caret.minY() + distance : caret.maxY() + distance;
  const bool isLarge = std::abs(distance) > caret.height;
  if (y < 0 && !(isLarge && caret.minY() > 0)) return {{0, false}, column};
  if (y >= lines_.usedSize().height && !(isLarge && caret.maxY() < lines_.usedSize().height))
    return {{storage_.length(), false}, column};
  return {lines_.caretAt({column, y}), column};
}

double NSTextView::pageDistance() const {
  const double line = layOutLines() ? lines_.caretRect(head_).height : 0;
  return std::max(1.0, visibleRect().height - 2 * line);
}

NSTextView::Movement NSTextView::lineStart() const {
  return {layOutLines() ? lines_.lineStart(head_) : head_, {}};
}

NSTextView::Movement NSTextView::lineEnd() const {
  return {layOutLines() ? lines_.lineEnd(head_) : head_, {}};
}

NSTextView::Movement NSTextView::paragraphStart() const {
  const std::uint64_t before = head_.offset == 0 ? 0 : head_.offset - 1;
  const NSRange here = paragraphAround(storage_.string(), head_.offset);
  // From a paragraph's start on to the one before it.
  if (here.location < head_.offset) return {{here.location, false}, {}};
  return {{paragraphAround(storage_.string(), before).location, false}, {}};
}

NSTextView::Movement NSTextView::paragraphEnd() const {
  const std::u16string& text = storage_.string();
  const auto endOf = [&](std::uint64_t at) {
    const NSRange paragraph = paragraphAround(text, at);
    const bool hasNewline = paragraph.length > 0 && text[paragraph.end() - 1] == u'\n';
    return paragraph.end() - (hasNewline ? 1 : 0);
  };
  const std::uint64_t here = endOf(head_.offset);
  return {{here > head_.offset ? here : endOf(head_.offset + 1), false}, {}};
}

NSTextView::Movement NSTextView::documentStart() const {
  return {{0, false}, {}};
}

NSTextView::Movement NSTextView::documentEnd() const {
  return {{storage_.length(), false}, {}};
}

void NSTextView::deleteRange(std::uint64_t other) {
  const NSRange toOther{std::min(head_.offset, other), std::max(head_.offset, other) - std::min(head_.offset, other)};
  const NSRange range = selection_.length > 0 ? selection_ : toOther;
  if (range.length > 0) replaceCharacters(range, {});
}

void NSTextView::deleteBackward() {
  deleteRange(left().caret.offset);
}

void NSTextView::deleteForward() {
  deleteRange(right().caret.offset);
}

void NSTextView::deleteWordBackward() {
  deleteRange(wordLeft().caret.offset);
}

void NSTextView::deleteWordForward() {
  deleteRange(wordRight().caret.offset);
}

void NSTextView::insertNewline() {
  insertText(u"\n");
}

void NSTextView::insertTab() {
  insertText(u"\t");
}

void NSTextView::selectAll() {
  select(0, {storage_.length(), false});
}

void NSTextView::copy() {
  if (selection_.length > 0) NSPasteboard::general().setString(storage_.substring(selection_).utf8String());
}

void NSTextView::cut() {
  if (!editable_ || selection_.length == 0) return;
  copy();
  replaceCharacters(selection_, {});
}

void NSTextView::paste() {
  const auto text = NSPasteboard::general().string();
  if (!text || text->empty()) return;
  endComposition();
  insertText(plainText(*text));
}

}  // namespace platform
