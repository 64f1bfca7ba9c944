#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// A window at (100, 100) whose content has one view on its left half and one on its right half.
class PointerDispatchTest : public AppKitTest {
 public:
  std::shared_ptr<NSWindow> window;
  std::shared_ptr<RecordingView> left = std::make_shared<RecordingView>(Rect{0, 0, 200, 300});
  std::shared_ptr<RecordingView> right = std::make_shared<RecordingView>(Rect{200, 0, 200, 300});

  void SetUp() override {
    window = showWindow();
    window->contentView()->addSubview(left);
    window->contentView()->addSubview(right);
    desktop.advance(1);
  }
};

TEST_F(PointerDispatchTest, countsClicksInTimeAndPlace) {
  struct Row {
    const char* name;
    double wait;
    Point second;
    std::vector<std::string> expected;
  };
  const Row rows[] = {
      {"at once", 0, {200, 200}, {"down1", "up1", "down2", "up2"}},
      {"just in time", 0.5, {200, 200}, {"down1", "up1", "down2", "up2"}},
      {"too late", 0.51, {200, 200}, {"down1", "up1", "down1", "up1"}},
      {"just near enough", 0, {205, 195}, {"down1", "up1", "down2", "up2"}},
      {"too far", 0, {206, 200}, {"down1", "up1", "down1", "up1"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    desktop.advance(1);
    left->heard.clear();
    user().click({200, 200});
    desktop.advance(row.wait);
    user().click(row.second);
    std::erase_if(left->heard, [](const auto& what) { return what == "moved" || what == "entered"; });
    EXPECT_EQ(left->heard, row.expected);
  }
}

TEST_F(PointerDispatchTest, aPressKeepsTheMouseUntilTheRelease) {
  user().drag({200, 200}, {450, 200}, 1);
  EXPECT_THAT(left->heard, ElementsAre("entered", "moved", "down1", "dragged", "up1"));
  EXPECT_THAT(right->heard, IsEmpty());
}

TEST_F(PointerDispatchTest, enterMoveExitAndCursor) {
  right->cursor = port::Cursor::text;
  user().moveTo({200, 200});
  user().moveTo({400, 200});
  EXPECT_EQ(surfaceOf(*window).cursor(), port::Cursor::text);
  EXPECT_THAT(left->heard, ElementsAre("entered", "moved", "exited"));
  user().moveTo({900, 800});
  EXPECT_THAT(right->heard, ElementsAre("entered", "moved", "exited"));
}

TEST_F(PointerDispatchTest, theClickThatActivatesOnlyReachesWhoWantsIt) {
  for (const bool wants : {false, true}) {
    SCOPED_TRACE(wants);
    left->firstMouse = wants;
    left->heard.clear();
    const auto other = showWindow({700, 400, 200, 200});
    desktop.advance(1);
    user().click({200, 200});
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_EQ(std::count(left->heard.begin(), left->heard.end(), "down1"), wants ? 1 : 0);
    desktop.advance(1);
    user().click({200, 200});
    EXPECT_EQ(std::count(left->heard.begin(), left->heard.end(), "down1"), wants ? 2 : 1);
    other->close();
  }
}

TEST_F(PointerDispatchTest, aClickGivesTheFocusToAViewThatWantsIt) {
  left->focusable = right->focusable = true;
  user().click({200, 200});
  EXPECT_EQ(window->firstResponder(), left);
  user().type("a");
  EXPECT_EQ(left->heard.back(), "key a");
  left->agreesToResign = false;
  user().click({400, 200});
  EXPECT_EQ(window->firstResponder(), left) << "it keeps the focus";
  left->removeFromSuperview();
  EXPECT_EQ(window->firstResponder(), window);
}

TEST_F(PointerDispatchTest, titleBarButtons) {
  struct Row {
    const char* name;
    WindowButton button;
    unsigned style;
    bool hidden;
    Point release;  ///< from the press
    bool acts;
  };
  const Row rows[] = {
      {"close", WindowButton::close, kDocument, false, {}, true},
      {"miniaturize", WindowButton::miniaturize, kDocument, false, {}, true},
      {"zoom", WindowButton::zoom, kDocument, false, {}, true},
      {"released outside", WindowButton::close, kDocument, false, {40, -40}, false},
      {"hidden", WindowButton::close, kDocument, true, {}, false},
      {"not closable", WindowButton::close, kDocument & ~StyleMask::kClosable, false, {}, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto shown = showWindow({600, 300, 300, 200}, row.style);
    shown->setButtonHidden(row.button, row.hidden);
    const Point at = shown->convertPointToScreen(shown->themeFrame().buttonFrame(row.button).center());
    user().moveTo(at);
    user().press();
    EXPECT_FALSE(shown->isClosed() || shown->isMiniaturized() || shown->isZoomed()) << "not before the release";
    user().moveTo(at + row.release);
    user().release();
    desktop.settle();
    EXPECT_EQ(shown->isClosed(), row.acts && row.button == WindowButton::close);
    EXPECT_EQ(shown->isMiniaturized(), row.acts && row.button == WindowButton::miniaturize);
    EXPECT_EQ(shown->isZoomed(), row.acts && row.button == WindowButton::zoom);
    shown->close();
  }
}

TEST_F(PointerDispatchTest, contentUnderATransparentTitleBarGetsTheMouse) {
  auto cover = std::make_shared<RecordingView>();
  window->setContentView(cover);
  window->setStyleMask(kDocument);
  user().click({300, 415});
  EXPECT_THAT(cover->heard, IsEmpty()) << "the title bar's";
  cover->setFrame({0, 0, 400, 329});
  EXPECT_EQ(window->themeFrame().hitTest({200, 315}), &window->themeFrame());
  window->setTitlebarAppearsTransparent(true);
  cover->setFrame({0, 0, 400, 329});
  EXPECT_EQ(window->themeFrame().hitTest({200, 315}), cover.get());
  EXPECT_EQ(window->themeFrame().hitTest({14, 315}), &window->themeFrame()) << "the buttons stay";
}

TEST_F(PointerDispatchTest, paintsChromeByStyle) {
  struct Row {
    const char* name;
    std::function<void(NSWindow&)> change;
    bool title;
    int buttons;
  };
  const Row rows[] = {
      {"as made", [](NSWindow&) {}, true, 3},
      {"title hidden", [](NSWindow& w) { w.setTitleHidden(true); }, false, 3},
      {"transparent", [](NSWindow& w) { w.setTitlebarAppearsTransparent(true); }, false, 3},
      {"one button hidden", [](NSWindow& w) { w.setButtonHidden(WindowButton::zoom, true); }, true, 2},
      {"only titled", [](NSWindow& w) { w.setStyleMask(StyleMask::kTitled); }, true, 0},
      {"borderless", [](NSWindow& w) { w.setStyleMask(StyleMask::kBorderless); }, false, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto shown = showWindow();
    shown->setTitle("Chat");
    row.change(*shown);
    const auto& painted = surfaceOf(*shown).repaint();
    EXPECT_EQ(painted.hasText(u"Chat"), row.title);
    EXPECT_EQ(std::count_if(painted.fills().begin(), painted.fills().end(),
                            [](const auto& fill) { return fill.radius == 6 && fill.rect.width == 12; }),
              row.buttons);
    EXPECT_EQ(painted.openSaves(), 0u);
    shown->close();
  }
}

}  // namespace
}  // namespace platform
