#include "Tests/AppKit/TextWindowFixture.h"

namespace platform {
namespace {

using namespace ModifierFlag;

class TextInputMethod : public TextWindowFixture {};

/// Keeps the underlined text that is painted.
class UnderlineCanvas final : public port::Canvas {
 public:
  void save() override {}
  void restore() override {}
  void translate(Point /*by*/) override {}
  void clip(const Rect& /*rect*/, double /*radius*/) override {}
  void fade(double /*opacity*/) override {}
  void clear(const Rect& /*rect*/) override {}
  void fill(const Rect& /*rect*/, const Color& /*color*/, double /*radius*/) override {}
  void stroke(const Rect& /*rect*/, const Color& /*color*/, double /*width*/, double /*radius*/) override {}
  void line(Point /*from*/, Point /*to*/, const Color& /*color*/, double /*width*/) override {}
  void image(const Bitmap& /*bitmap*/, const Rect& /*into*/) override {}
  void text(const port::TextLayout& layout, Point /*topLeft*/) override {
    const auto& laidOut = dynamic_cast<const headless::HeadlessTextLayout&>(layout);
    for (const auto& run : laidOut.runs())
      if (run.underlined) underlined += laidOut.text().substr(run.start, run.length);
  }
  std::u16string underlined;
};

TEST_F(TextInputMethod, MarkedTextIsUnderlinedUntilItIsOrdinary) {
  fill(u"ab", {1, 0});
  const auto underlined = [&] {
    UnderlineCanvas canvas;
    view->display(canvas);
    return canvas.underlined;
  };
  inputMethod().compose(u"한");
  EXPECT_EQ(underlined(), u"한");
  inputMethod().compose(u"한글");
  EXPECT_EQ(underlined(), u"한글");
  view->unmarkText();
  EXPECT_EQ(underlined(), u"");
  inputMethod().compose(u"ㄱ");
  inputMethod().commit(u"가");
  EXPECT_EQ(underlined(), u"");
}

// Whatever ends a composition from outside: the preedit stays as text exactly once, and the input method, told to
// forget it, holds nothing that it could commit again.
TEST_F(TextInputMethod, TextStaysExactlyOnceWhateverEndsTheComposition) {
  struct Row {
    const char* name;
    std::function<void()> end;
  };
  const auto second = NSWindow::make({400, 400, 50, 50}, StyleMask::kTitled);
  for (const Row& row : std::initializer_list<Row>{
           {"selection elsewhere", [&] { view->setSelectedRange(NSRange()); }},
           {"click elsewhere", [&] { desktop.user().click(character(0)); }},
           {"click inside", [&] { desktop.user().click(character(1)); }},
           {"focus lost", [&] { window->makeFirstResponder(nullptr); }},
           {"another window becomes key", [&] { second->makeKeyAndOrderFront(nullptr); }},
           {"unmarked", [&] { view->unmarkText(); }},
           {"no longer editable", [&] { view->setEditable(false); }},
           {"storage replaced", [&] { view->setTextStorage(view->textStorage()); }},
           {"edited by code", [&] { view->replaceCharacters(view->markedRange(), u"한"); }},
           {"taken out of the window", [&] { view->removeFromSuperview(); }},
       }) {
    scrollView->setDocumentView(nullptr);
    scrollView->setDocumentView(view);
    view->setEditable(true);
    window->makeKeyAndOrderFront(nullptr);
    window->makeFirstResponder(view);
    desktop.settle();
    fill(u"ab", {1, 0});
    inputMethod().compose(u"한");
    ASSERT_EQ(inputMethod().preedit(), u"한") << row.name;
    row.end();
    EXPECT_EQ(text(), u"a한b") << row.name;
    EXPECT_FALSE(view->hasMarkedText()) << row.name;
    EXPECT_EQ(inputMethod().preedit(), u"") << row.name;
  }
}

TEST_F(TextInputMethod, KnowsCaretAndSurroundingTextWithoutThePreedit) {
  fill(u"한글 text", {3, 2});
  auto state = inputMethod().textInput();
  ASSERT_TRUE(state);
  EXPECT_EQ(state->surroundingText, u"한글 text");
  EXPECT_EQ(state->anchor, 3U);
  EXPECT_EQ(state->cursor, 5U);
  inputMethod().compose(u"ㅎ");
  state = inputMethod().textInput();
  EXPECT_EQ(state->surroundingText, u"한글 xt");
  EXPECT_EQ(state->cursor, 3U);
  EXPECT_EQ(state->anchor, 3U);
  view->unmarkText();
  view->setTextStorage(NSAttributedString(std::u16string(5000, u'x') + u"😀" + std::u16string(5000, u'y')));
  view->setSelectedRange({6001, 0});
  state = inputMethod().textInput();
  EXPECT_LE(state->surroundingText.size(), 2002U);
  EXPECT_EQ(state->surroundingText.substr(0, 2), u"😀") << "a pair at the cut stays whole";
  EXPECT_EQ(state->surroundingText.substr(state->cursor), std::u16string(1000, u'y'));
  window->makeFirstResponder(nullptr);
  EXPECT_FALSE(inputMethod().textInput());
}

TEST_F(TextInputMethod, CandidatesFollowTheCaretOnTheScreen) {
  const auto caretOnScreen = [&] { return inputMethod().textInput()->caret; };
  fill(u"ab\ncd", {0, 0});
  // The window's top left corner is at (100, 200); text begins 5 points from the left, a line is 12.5 points high.
  EXPECT_EQ(caretOnScreen(), (Rect{105, 187.5, 1, 12.5}));
  view->setSelectedRange({4, 0});
  EXPECT_EQ(caretOnScreen(), (Rect{110, 175, 1, 12.5}));
  inputMethod().compose(u"한글", 1);
  EXPECT_EQ(caretOnScreen(), (Rect{120, 175, 1, 12.5}));
  window->setFrameOrigin({300, 50});
  EXPECT_EQ(caretOnScreen(), (Rect{320, 125, 1, 12.5}));
  fill(std::u16string(30, u'\n'), {0, 0});
  desktop.settle();
  scrollView->scrollTo({0, 0});
  const double before = caretOnScreen().y;
  scrollView->scrollTo({0, 20});
  EXPECT_EQ(caretOnScreen().y, before + 20);
}

TEST_F(TextInputMethod, DeletesAroundTheCaretButNeverThePreedit) {
  struct Row {
    const char* name;
    std::ptrdiff_t offset;
    std::size_t length;
    std::u16string expected;
    std::u16string composing;
  };
  constexpr auto kFar = std::numeric_limits<std::ptrdiff_t>::max();
  for (const Row& row : std::initializer_list<Row>{
           {"before", -1, 1, u"acd", u"a한cd"},
           {"after", 0, 1, u"abd", u"ab한d"},
           {"around", -1, 2, u"ad", u"a한d"},
           {"further before", -2, 1, u"bcd", u"b한cd"},
           {"further after", 1, 1, u"abc", u"ab한c"},
           {"nothing", -1, 0, u"abcd", u"ab한cd"},
           {"starts before the text", -5, 4, u"bcd", u"b한cd"},
           {"everything", -kFar, ~std::size_t{0}, u"", u"한"},
           {"beyond the end", kFar, ~std::size_t{0}, u"abcd", u"ab한cd"},
       }) {
    fill(u"abcd", {2, 0});
    inputMethod().deleteSurrounding(row.offset, row.length);
    EXPECT_EQ(text(), row.expected) << row.name;
    fill(u"abcd", {2, 0});
    inputMethod().compose(u"한");
    inputMethod().deleteSurrounding(row.offset, row.length);
    EXPECT_EQ(text(), row.composing) << row.name << ", composing";
    EXPECT_EQ(view->textStorage().substring(view->markedRange()).string(), u"한") << row.name;
    EXPECT_EQ(caret(), view->markedRange().end()) << row.name;
    view->unmarkText();
  }
}

TEST_F(TextInputMethod, TakesKeysFirstAndWhatItLeavesActs) {
  inputMethod().setFilter([&](const port::KeyInput& key) {
    if (!key.down || key.characters != "g") return false;
    inputMethod().compose(u"ㅎ");
    return true;
  });
  desktop.user().type("gx");
  EXPECT_EQ(text(), u"ㅎx") << "a key beside the composition ends it and comes after it";
  EXPECT_EQ(inputMethod().preedit(), u"");
  desktop.user().key(KeyCode::kLeftArrow, {}, kNumericPad | kFunction);
  EXPECT_EQ(caret(), 1U);
}

TEST_F(TextInputMethod, UndoInACompositionTakesAllOfItBackBeforeItCanBeCommitted) {
  int offered = 0;
  inputMethod().setFilter([&](const port::KeyInput& key) {
    offered += key.down ? 1 : 0;
    return false;
  });
  fill(u"ab", {1, 0});
  for (const std::u16string syllable : {u"ㅎ", u"하", u"한"}) inputMethod().compose(syllable);
  desktop.user().key(KeyCode::kZ, "z", kControl);
  EXPECT_EQ(text(), u"ab");
  EXPECT_EQ(inputMethod().preedit(), u"");
  EXPECT_EQ(offered, 0);
  EXPECT_FALSE(view->undoManager().canUndo());
}

class Refusing : public NSTextView {
 public:
  bool shouldChangeTextInRanges(const std::vector<NSRange>& ranges,
                                const std::vector<std::u16string>& replacements) override {
    return replacements.front() != refused && NSTextView::shouldChangeTextInRanges(ranges, replacements);
  }
  std::u16string refused;
};

TEST_F(TextInputMethod, ARefusedEditEndsTheCompositionAndKeepsWhatStood) {
  struct Row {
    const char* name;
    std::u16string refused;
    std::function<void()> edit;
    std::u16string expected;
  };
  const auto refusing = std::make_shared<Refusing>();
  configure(*refusing);
  scrollView->setDocumentView(refusing);
  window->makeFirstResponder(refusing);
  for (const Row& row : std::initializer_list<Row>{
           {"the first preedit", u"ㅎ", [&] { inputMethod().compose(u"ㅎ"); }, u""},
           {"a later preedit", u"한", [&] { inputMethod().compose(u"하"), inputMethod().compose(u"한"); }, u"하"},
           {"the end of the preedit", u"", [&] { inputMethod().compose(u"하"), inputMethod().compose(u""); }, u"하"},
           {"the commit", u"韓", [&] { inputMethod().compose(u"한"), inputMethod().commit(u"韓"); }, u"한"},
       }) {
    refusing->setTextStorage(NSAttributedString());
    refusing->refused = row.refused;
    row.edit();
    EXPECT_EQ(refusing->textStorage().string(), row.expected) << row.name;
    EXPECT_FALSE(refusing->hasMarkedText()) << row.name;
    EXPECT_EQ(inputMethod().preedit(), u"") << row.name;
  }
}

}  // namespace
}  // namespace platform
