#include <random>

#include "Backends/Headless/RecordingCanvas.h"
#include "Tests/AppKit/TextWindowFixture.h"

namespace platform {
namespace {

class TextLayout : public TextFixture {};

TEST_F(TextLayout, APointOnACaretIsTheCaretsOffset) {
  fill(u"abc 한글 😀\n\ne\u0301f" + std::u16string(60, u'x'), {0, 0});
  for (const std::uint64_t at : {0U, 1U, 3U, 4U, 5U, 6U, 7U, 9U, 10U, 11U, 13U, 14U, 30U, 74U}) {
    view->setSelectedRange({at, 0});
    EXPECT_EQ(view->characterIndexAt(view->caretRect().center()), at);
  }
  EXPECT_EQ(view->characterIndexAt({-50, -50}), 0U);
  EXPECT_EQ(view->characterIndexAt({1e6, 1e6}), view->textStorage().length());
  EXPECT_EQ(view->characterIndexAt({1e6, 14}), 10U) << "right of an empty line";
}

TEST_F(TextLayout, GrowsWithItsLinesBetweenSmallestAndLargestSize) {
  struct Row {
    int lines;
    double height;
  };
  view->setMinSize({0, 30});
  view->setMaxSize({1e9, 60});
  for (const Row& row : {Row{1, 30}, Row{3, 37.5}, Row{4, 50}, Row{9, 60}, Row{2, 30}}) {
    fill(std::u16string(static_cast<std::size_t>(row.lines - 1), u'\n'), {0, 0});
    view->layout();
    EXPECT_EQ(view->frame().height, row.height) << row.lines << " lines";
    EXPECT_EQ(view->frame().width, 200);
  }
}

TEST_F(TextLayout, WrapsAsItsContainerSays) {
  struct Row {
    const char* name;
    LineBreakMode mode;
    bool tracks;
    double containerWidth;
    double height;
  };
  fill(u"aaaa bbbb", {0, 0});
  for (const Row& row : {Row{"as wide as the view", LineBreakMode::byCharWrapping, true, 0, 12.5},
                         Row{"narrow, characters", LineBreakMode::byCharWrapping, false, 35, 25},
                         Row{"narrow, words", LineBreakMode::byWordWrapping, false, 35, 25},
                         Row{"narrow, clipped", LineBreakMode::byClipping, false, 35, 12.5},
                         // The blank hangs at the end of the fourth line.
                         Row{"one character a line", LineBreakMode::byCharWrapping, false, 15, 100}}) {
    view->textContainer() = {
        .containerSize = {row.containerWidth, 1e9}, .widthTracksTextView = row.tracks, .lineBreakMode = row.mode};
    view->layout();
    EXPECT_EQ(view->frame().height, row.height) << row.name;
  }
}

TEST_F(TextLayout, AnEditLaysOutOnlyTheParagraphsItTouches) {
  constexpr std::uint64_t kParagraphs = 20000;
  std::u16string text;
  for (std::uint64_t at = 0; at < kParagraphs; ++at) text += u"some fifty letters that make up a paragraph of text\n";
  fill(text, {0, 0});
  view->layout();
  EXPECT_EQ(view->frame().height, (kParagraphs + 1) * 25 - 12.5);
  struct Row {
    const char* name;
    NSRange range;
    std::u16string with;
    std::uint64_t paragraphs;
  };
  std::uint64_t before = view->paragraphsLaidOut();
  for (const Row& row : std::initializer_list<Row>{{"a letter", {500000, 0}, u"x", 1},
                                                   {"a newline", {500000, 0}, u"\n", 2},
                                                   {"a deleted newline", {500000, 1}, u"", 1},
                                                   {"a letter at the end", {1u << 30, 0}, u"x", 1},
                                                   {"three lines", {0, 0}, u"a\nb\nc", 3}}) {
    ASSERT_TRUE(view->replaceCharacters(row.range, row.with));
    view->layout();
    EXPECT_EQ(view->paragraphsLaidOut() - before, row.paragraphs) << row.name;
    before = view->paragraphsLaidOut();
  }
}

TEST_F(TextLayout, LinesAfterAnyEditsAreThoseOfAFreshLayout) {
  std::mt19937 random(11);
  const auto other = std::make_shared<NSTextView>(Rect{0, 0, 200, 100});
  configure(*other);
  const std::u16string pieces[] = {u"", u"a", u"한글", u"\n", u"b\nc", u"\n\n", std::u16string(40, u'w')};
  for (int step = 0; step < 400; ++step) {
    const std::uint64_t length = view->textStorage().length();
    const NSRange range{random() % (length + 1), random() % 9};
    const auto& piece = pieces[random() % std::size(pieces)];
    if (step % 7 == 3) {
      view->setMarkedText(piece, 0);
    } else {
      view->replaceCharacters(length > 300 ? NSRange{0, 250} : range, piece);
    }
    other->setTextStorage(NSAttributedString());
    other->setTextStorage(view->textStorage());
    for (std::uint64_t at = 0; at <= view->textStorage().length(); at += 5)
      ASSERT_EQ(view->rectForRange({at, 3}), other->rectForRange({at, 3})) << "step " << step << " offset " << at;
  }
}

class TextDrawing : public TextWindowFixture {
 protected:
  headless::RecordingCanvas paint() {
    headless::RecordingCanvas canvas;
    view->display(canvas);
    EXPECT_EQ(canvas.openSaves(), 0U);
    return canvas;
  }
  bool drawsCaret() {
    const Rect caret = view->caretRect();
    const auto fills = paint().fills();
    return std::any_of(fills.begin(), fills.end(), [&](const auto& fill) { return fill.rect == caret; });
  }
};

TEST_F(TextDrawing, CaretBlinksWhileTheViewHasTheKeyboard) {
  EXPECT_TRUE(drawsCaret());
  desktop.advance(0.5);
  EXPECT_FALSE(drawsCaret());
  desktop.advance(0.5);
  EXPECT_TRUE(drawsCaret());
  desktop.advance(0.5);
  desktop.user().type("a");
  EXPECT_TRUE(drawsCaret()) << "typing shows it at once";
  window->makeFirstResponder(nullptr);
  EXPECT_FALSE(drawsCaret());
  window->makeFirstResponder(view);
  EXPECT_TRUE(drawsCaret());
  const auto second = NSWindow::make({400, 400, 50, 50}, StyleMask::kTitled);
  second->makeKeyAndOrderFront(nullptr);
  EXPECT_FALSE(drawsCaret());
  window->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(drawsCaret());
}

TEST_F(TextDrawing, SelectionIsFilledLineByLineBehindTheText) {
  fill(u"ab\ncd", {1, 3});
  const auto canvas = paint();
  std::vector<Rect> selected;
  for (const auto& fill : canvas.fills())
    if (fill.rect.height == 12.5) selected.push_back(fill.rect);
  EXPECT_EQ(selected, (std::vector<Rect>{{10, 0, 9, 12.5}, {5, 12.5, 5, 12.5}}));
  EXPECT_TRUE(canvas.hasText(u"ab"));
  EXPECT_TRUE(canvas.hasText(u"cd"));
}

TEST_F(TextDrawing, OnlyVisibleParagraphsAreDrawn) {
  std::u16string text;
  for (int line = 0; line < 1000; ++line) text += u"line\n";
  fill(text, {0, 0});
  desktop.settle();
  EXPECT_LT(paint().texts().size(), 12U);
}

}  // namespace
}  // namespace platform
