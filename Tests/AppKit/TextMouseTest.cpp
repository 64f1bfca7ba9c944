#include "Tests/AppKit/TextWindowFixture.h"

namespace platform {
namespace {

using namespace ModifierFlag;

class TextMouse : public TextWindowFixture {
 protected:
  /// The left edge of a character.
  Point before(std::uint64_t at) const {
    const Rect rect = view->rectForRange({at, 1});
    return onScreen({rect.x + 1, rect.center().y});
  }
};

TEST_F(TextMouse, ClicksSelectNothingAWordAParagraph) {
  fill(u"one two\nthree four\n", {0, 0});
  desktop.settle();
  const NSRange expected[] = {{10, 0}, {8, 5}, {8, 11}};
  for (int count = 1; count <= 3; ++count) {
    desktop.user().click(before(10), count);
    EXPECT_EQ(view->selectedRange(), expected[count - 1]) << count;
    desktop.advance(5);
  }
}

TEST_F(TextMouse, ShiftClickExtendsFromTheAnchor) {
  fill(u"one two three", {0, 0});
  desktop.settle();
  desktop.user().click(before(4));
  desktop.user().holdModifiers(kShift);
  desktop.user().click(before(8));
  EXPECT_EQ(view->selectedRange(), (NSRange{4, 4}));
  desktop.user().click(before(2));
  EXPECT_EQ(view->selectedRange(), (NSRange{2, 2}));
}

TEST_F(TextMouse, DragSelectsBothWays) {
  fill(u"one two three", {0, 0});
  desktop.settle();
  desktop.user().drag(before(4), before(8));
  EXPECT_EQ(view->selectedRange(), (NSRange{4, 4}));
  desktop.advance(5);
  desktop.user().drag(before(8), before(1));
  EXPECT_EQ(view->selectedRange(), (NSRange{1, 7}));
  EXPECT_EQ(view->selectionAnchor(), 8U);
}

TEST_F(TextMouse, DragAfterADoubleClickSelectsWholeWords) {
  fill(u"one two three", {0, 0});
  desktop.settle();
  auto& user = desktop.user();
  user.together([&] {
    user.click(before(5));
    user.press();
    user.moveTo(before(9));
    user.then([&] { EXPECT_EQ(view->selectedRange(), (NSRange{4, 9})); });
    user.moveTo(before(1));
    user.release();
  });
  desktop.settle();
  EXPECT_EQ(view->selectedRange(), (NSRange{0, 7}));
}

TEST_F(TextMouse, DragBelowTheViewScrollsAsLongAsItLasts) {
  std::u16string lines;
  for (int line = 0; line < 100; ++line) lines += u"line\n";
  fill(lines, {0, 0});
  desktop.settle();
  scrollView->scrollTo({0, 0});
  auto& user = desktop.user();
  std::vector<double> scrolled;
  const auto clock = Timer::scheduledTimer(0.1, true, [&](Timer& timer) {
    scrolled.push_back(scrollView->documentVisibleRect().y);
    if (scrolled.size() < 4) return;
    timer.invalidate();
    user.release();
  });
  user.together([&] {
    user.press(before(2));
    user.moveTo(onScreen({20, 120}));
  });
  desktop.advance(1);
  ASSERT_EQ(scrolled.size(), 4U);
  EXPECT_TRUE(std::is_sorted(scrolled.begin(), scrolled.end()));
  EXPECT_GT(scrolled.back(), scrolled.front());
  EXPECT_EQ(view->selectedRange().location, 2U);
  EXPECT_EQ(view->caretRect().maxY(), scrollView->documentVisibleRect().maxY());
}

class TextScrolling : public TextWindowFixture {
 protected:
  void fillLines(int count) {
    fill(std::u16string(static_cast<std::size_t>(count - 1), u'\n'), {0, 0});
    desktop.settle();
    scrollView->scrollTo({0, 0});
  }
  double scrolled() const { return scrollView->documentVisibleRect().y; }
};

TEST_F(TextScrolling, WheelStopsAtBothEnds) {
  fillLines(20);  // 250 points in 100
  const Point middle{200, 150};
  desktop.user().wheel(middle, 0, -40);
  EXPECT_EQ(scrolled(), 40);
  desktop.user().wheel(middle, 0, -1000);
  EXPECT_EQ(scrolled(), 150);
  desktop.user().wheel(middle, 0, 60);
  EXPECT_EQ(scrolled(), 90);
  desktop.user().wheel(middle, 0, 1000);
  EXPECT_EQ(scrolled(), 0);
}

TEST_F(TextScrolling, EditsAndMovesBringTheCaretIntoView) {
  fillLines(20);
  desktop.user().key(KeyCode::kEnd, {}, kControl);
  EXPECT_EQ(scrolled(), 150);
  desktop.user().key(KeyCode::kReturn, "\r");
  EXPECT_EQ(scrolled(), 162.5);
  scrollView->scrollTo({0, 0});
  desktop.user().type("x");
  EXPECT_EQ(scrolled(), 162.5);
  desktop.user().key(KeyCode::kPageUp);
  desktop.user().key(KeyCode::kPageUp);
  EXPECT_LT(scrolled(), 130);
  desktop.user().key(KeyCode::kHome, {}, kControl);
  EXPECT_EQ(scrolled(), 0);
}

TEST_F(TextScrolling, TextThatGetsShorterLeavesNoEmptyView) {
  fillLines(20);
  scrollView->scrollTo({0, 150});
  view->setTextStorage(NSAttributedString(u"short"));
  desktop.settle();
  EXPECT_EQ(scrolled(), 0);
}

TEST_F(TextScrolling, OverlayScrollerShowsWhileScrollingAndFadesOut) {
  NSScroller& scroller = *scrollView->verticalScroller();
  fillLines(20);
  desktop.advance(5);
  EXPECT_EQ(scroller.visibility(), 0);
  desktop.user().wheel({200, 150}, 0, -75);
  EXPECT_EQ(scroller.visibility(), 1);
  EXPECT_EQ(scroller.knobProportion(), 0.4);
  EXPECT_EQ(scroller.knobPosition(), 0.5);
  desktop.advance(1.06);
  EXPECT_GT(scroller.visibility(), 0);
  EXPECT_LT(scroller.visibility(), 1);
  desktop.advance(1);
  EXPECT_EQ(scroller.visibility(), 0);
  fillLines(2);
  scroller.flash();
  EXPECT_EQ(scroller.visibility(), 0) << "nothing to scroll";
}

TEST_F(TextScrolling, DraggingTheKnobScrollsInProportion) {
  fillLines(20);
  desktop.user().wheel({200, 150}, 0, -1);
  desktop.user().drag({295, 195}, {295, 95}, 10);
  EXPECT_EQ(scrolled(), 150);
  desktop.user().drag({295, 110}, {295, 300}, 10);
  EXPECT_EQ(scrolled(), 0);
}

}  // namespace
}  // namespace platform
