#include "Platform/AppKit/NSPasteboard.h"
#include "Tests/AppKit/TextFixture.h"

namespace platform {
namespace {

using namespace ModifierFlag;

struct Characters {
  const char* name;
  std::u16string text;
  std::vector<std::uint64_t> ends;  ///< where each character ends
};

/// One of each kind; more of them are in the tests of the text itself.
const Characters kCharacters[] = {
    {"surrogate pair", u"a😀b", {1, 3, 4}},
    {"family joined by ZWJ", u"👨‍👩‍👧!", {8, 9}},
    {"two flags", u"🇰🇷🇺🇸", {4, 8}},
    {"keycap", u"1️⃣2", {3, 4}},
    {"combining acute", u"e\u0301x", {2, 3}},
    {"conjoining jamo", u"\u1112\u1161\u11AB\u1100\u1173\u11AF", {3, 6}},
    {"line end of two", u"a\r\nb", {1, 3, 4}},
};

class TextMoves : public TextFixture {};

TEST_F(TextMoves, ACharacterIsOneStepOfTheCaretAndOneDeletion) {
  for (const auto& row : kCharacters) {
    SCOPED_TRACE(row.name);
    fill(row.text, {0, 0});
    for (const std::uint64_t end : row.ends) {
      press(KeyCode::kRightArrow);
      EXPECT_EQ(view->selectedRange(), (NSRange{end, 0}));
    }
    for (std::size_t index = row.ends.size(); index-- > 0;) {
      const std::uint64_t start = index == 0 ? 0 : row.ends[index - 1];
      press(KeyCode::kLeftArrow);
      EXPECT_EQ(view->selectedRange(), (NSRange{start, 0}));
      press(KeyCode::kRightArrow, kShift);
      EXPECT_EQ(view->selectedRange(), (NSRange{start, row.ends[index] - start}));

      std::u16string without = row.text;
      without.erase(start, row.ends[index] - start);
      fill(row.text, {start, 0});
      press(KeyCode::kForwardDelete);
      EXPECT_EQ(text(), without);
      fill(row.text, {row.ends[index], 0});
      press(KeyCode::kBackspace);
      EXPECT_EQ(text(), without);
      fill(row.text, {start, 0});
    }
  }
}

struct Move {
  const char* name;
  std::u16string text;
  NSRange from;
  std::uint16_t key;
  std::uint64_t modifiers;
  NSRange to;
};

TEST_F(TextMoves, ByKey) {
  const std::u16string words = u"one two  한글 end";
  const std::u16string lines(50, u'x');  // 38 letters fit a line of 190 points
  for (const Move& row : std::initializer_list<Move>{
           {"word right", words, {0, 0}, KeyCode::kRightArrow, kControl, {3, 0}},
           {"word right over blanks", words, {3, 0}, KeyCode::kRightArrow, kControl, {7, 0}},
           {"word left", words, {7, 0}, KeyCode::kLeftArrow, kControl, {4, 0}},
           {"word left from inside", words, {6, 0}, KeyCode::kLeftArrow, kControl, {4, 0}},
           {"word right extends", words, {1, 0}, KeyCode::kRightArrow, kControl | kShift, {1, 2}},
           {"left at the start", words, {0, 0}, KeyCode::kLeftArrow, 0, {0, 0}},
           {"right at the end", words, {15, 0}, KeyCode::kRightArrow, 0, {15, 0}},
           {"left collapses to the start", words, {4, 3}, KeyCode::kLeftArrow, 0, {4, 0}},
           {"right collapses to the end", words, {4, 3}, KeyCode::kRightArrow, 0, {7, 0}},
           {"home in a wrapped line", lines, {45, 0}, KeyCode::kHome, 0, {38, 0}},
           {"end in a wrapped line", lines, {5, 0}, KeyCode::kEnd, 0, {38, 0}},
           {"end extends", lines, {40, 0}, KeyCode::kEnd, kShift, {40, 10}},
           {"document start", lines, {45, 0}, KeyCode::kHome, kControl, {0, 0}},
           {"document end extends", lines, {45, 0}, KeyCode::kEnd, kControl | kShift, {45, 5}},
           {"down in a wrapped line", lines, {4, 0}, KeyCode::kDownArrow, 0, {42, 0}},
           {"down to a shorter line", lines, {20, 0}, KeyCode::kDownArrow, 0, {50, 0}},
           {"down from the last line", lines, {40, 0}, KeyCode::kDownArrow, 0, {50, 0}},
           {"up from the first line", lines, {4, 0}, KeyCode::kUpArrow, 0, {0, 0}},
           {"up extends", lines, {42, 0}, KeyCode::kUpArrow, kShift, {4, 38}},
           {"paragraph end", u"ab\ncd\n", {0, 0}, KeyCode::kDownArrow, kControl, {2, 0}},
           {"next paragraph end", u"ab\ncd\n", {2, 0}, KeyCode::kDownArrow, kControl, {5, 0}},
           {"paragraph start", u"ab\ncd\n", {5, 0}, KeyCode::kUpArrow, kControl, {3, 0}},
           {"paragraph start before", u"ab\ncd\n", {3, 0}, KeyCode::kUpArrow, kControl, {0, 0}},
       }) {
    fill(row.text, row.from);
    press(row.key, row.modifiers);
    EXPECT_EQ(view->selectedRange(), row.to) << row.name;
  }
}

TEST_F(TextMoves, UpAndDownKeepTheColumnOverShorterLines) {
  fill(u"abcdef\nab\nabcdef", {5, 0});
  press(KeyCode::kDownArrow);
  EXPECT_EQ(caret(), 9U);
  press(KeyCode::kDownArrow);
  EXPECT_EQ(caret(), 15U);
  press(KeyCode::kUpArrow);
  press(KeyCode::kUpArrow);
  EXPECT_EQ(caret(), 5U);
  press(KeyCode::kDownArrow);
  press(KeyCode::kLeftArrow);
  press(KeyCode::kDownArrow);
  EXPECT_EQ(caret(), 11U) << "a move sideways sets a new column";
}

TEST_F(TextMoves, EndOfAWrappedLineShowsTheCaretThereAndIsStable) {
  fill(std::u16string(50, u'x'), {5, 0});
  press(KeyCode::kEnd);
  const Rect atEnd = view->caretRect();
  EXPECT_EQ(atEnd.y, 0);
  EXPECT_EQ(atEnd.x, 195);
  press(KeyCode::kEnd);
  EXPECT_EQ(view->caretRect(), atEnd);
  press(KeyCode::kHome);
  EXPECT_EQ(caret(), 0U);
  view->setSelectedRange({38, 0});
  EXPECT_EQ(view->caretRect().y, 12.5) << "reached otherwise, the offset is the next line's start";
}

class TextEdits : public TextFixture {};

TEST_F(TextEdits, ByKey) {
  struct Row {
    const char* name;
    std::u16string before;
    NSRange selection;
    std::uint16_t key;
    std::uint64_t modifiers;
    const char* characters;
    std::u16string after;
    std::uint64_t caret;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"types", u"ac", {1, 0}, 11, 0, "b", u"abc", 2},
           {"types over a selection", u"a한글c", {1, 2}, 11, 0, "b", u"abc", 2},
           {"return", u"ab", {1, 0}, KeyCode::kReturn, 0, "\r", u"a\nb", 2},
           {"shift return", u"ab", {1, 0}, KeyCode::kReturn, kShift, "\r", u"a\nb", 2},
           {"enter", u"ab", {2, 0}, KeyCode::kKeypadEnter, kNumericPad, "\r", u"ab\n", 3},
           {"control return does nothing", u"ab", {1, 0}, KeyCode::kReturn, kControl, "\r", u"ab", 1},
           {"tab", u"ab", {1, 0}, KeyCode::kTab, 0, "\t", u"a\tb", 2},
           {"escape types nothing", u"ab", {1, 0}, KeyCode::kEscape, 0, "\x1b", u"ab", 1},
           {"backspace at the start", u"ab", {0, 0}, KeyCode::kBackspace, 0, "", u"ab", 0},
           {"delete at the end", u"ab", {2, 0}, KeyCode::kForwardDelete, 0, "", u"ab", 2},
           {"backspace of a selection", u"abcd", {1, 2}, KeyCode::kBackspace, 0, "", u"ad", 1},
           {"delete of a selection", u"abcd", {1, 2}, KeyCode::kForwardDelete, kControl, "", u"ad", 1},
           {"word backward", u"one two", {7, 0}, KeyCode::kBackspace, kControl, "", u"one ", 4},
           {"word forward", u"one two", {0, 0}, KeyCode::kForwardDelete, kControl, "", u" two", 0},
       }) {
    fill(row.before, row.selection);
    press(row.key, row.modifiers, row.characters);
    EXPECT_EQ(text(), row.after) << row.name;
    EXPECT_EQ(view->selectedRange(), (NSRange{row.caret, 0})) << row.name;
  }
}

TEST_F(TextEdits, ClipboardRoundTrip) {
  const auto onClipboard = [] { return NSPasteboard::general().string().value_or("nothing"); };
  fill(u"한 😀 글", {0, 0});
  press(KeyCode::kC, kControl, "c");
  EXPECT_EQ(onClipboard(), "nothing") << "nothing selected, nothing copied";
  press(KeyCode::kA, kControl, "a");
  press(KeyCode::kC, kControl, "c");
  EXPECT_EQ(onClipboard(), "한 😀 글");
  press(KeyCode::kX, kControl, "x");
  EXPECT_EQ(text(), u"");
  press(KeyCode::kV, kControl, "v");
  press(KeyCode::kV, kControl, "v");
  EXPECT_EQ(text(), u"한 😀 글한 😀 글");
  NSPasteboard::general().setString("a\r\nb");
  press(KeyCode::kA, kControl, "a");
  press(KeyCode::kV, kControl, "v");
  EXPECT_EQ(text(), u"a\nb");
}

TEST_F(TextEdits, ClipboardTypes) {
  struct Row {
    const char* name;
    std::map<std::string, std::string> contents;
    std::optional<std::string> expected;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"UTF-8 before plain", {{"text/plain", "x"}, {"text/plain;charset=utf-8", "y"}}, "y"},
           {"spelled otherwise", {{"text/plain; charset=UTF-8", "y"}}, "y"},
           {"the X name", {{"UTF8_STRING", "y"}}, "y"},
           {"plain", {{"text/plain", "y"}}, "y"},
           {"another encoding", {{"text/plain;charset=euc-kr", "y"}}, std::nullopt},
           {"no text", {{"image/png", "y"}}, std::nullopt},
       }) {
    desktop.clipboard().write(row.contents);
    EXPECT_EQ(NSPasteboard::general().string(), row.expected) << row.name;
  }
}

TEST_F(TextEdits, NothingChangesAViewThatIsNotEditable) {
  fill(u"abc", {0, 3});
  view->setEditable(false);
  press(0, 0, "x");
  press(KeyCode::kBackspace);
  press(KeyCode::kX, kControl, "x");
  view->setMarkedText(u"한", 1);
  view->insertText(u"한");
  view->deleteSurrounding(0, 3);
  EXPECT_FALSE(view->replaceCharacters({0, 1}, u"z"));
  EXPECT_EQ(text(), u"abc");
  EXPECT_FALSE(view->hasMarkedText());
  press(KeyCode::kC, kControl, "c");
  EXPECT_EQ(NSPasteboard::general().string(), "abc") << "copying is no edit";
  view->setEditable(true);
  press(KeyCode::kBackspace);
  view->setAllowsUndo(false);
  press(KeyCode::kZ, kControl, "z");
  EXPECT_EQ(text(), u"");
}

class Observer : public NSTextViewDelegate {
 public:
  void textViewDidChangeSelection(NSTextView& view) override { selections.push_back(view.selectedRange()); }
  void textDidBeginEditing(NSTextView&) override { ++begun; }
  std::vector<NSRange> selections;
  int begun = 0;
};

TEST_F(TextEdits, DelegateHearsOfTheFirstEditAndOfSelectionsThatDiffer) {
  const auto observer = std::make_shared<Observer>();
  view->setTextViewDelegate(observer);
  press(0, 0, "a");
  press(0, 0, "b");
  view->setSelectedRange({2, 0});
  view->setSelectedRange({0, 9});
  EXPECT_EQ(observer->begun, 1);
  EXPECT_EQ(observer->selections, (std::vector<NSRange>{{1, 0}, {2, 0}, {0, 2}}));
}

}  // namespace
}  // namespace platform
