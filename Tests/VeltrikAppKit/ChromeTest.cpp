#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/CustomViews.h"

namespace veltrik {
namespace {

class ChromeTest : public PluginTest {
 protected:
  static std::vector<Rect> regions(const NSWindow& window) {
    std::vector<Rect> frames;
    for (const auto& view : window.contentView()->subviews())
      if (std::dynamic_pointer_cast<DraggerNSView>(view)) frames.push_back(view->frame());
    return frames;
  }
};

TEST_F(ChromeTest, TheRectangleRuleHoldsBothWays) {
  struct Row {
    const char* name;
    bool isBound;
    std::optional<double> inset;
    bool isPopover;
    double bandOfContent;  ///< how much lower the content rectangle is than the frame
    double bandOfFrame;    ///< how much higher the frame rectangle is than the content
  };
  for (const Row& row :
       {Row{"bound", true, std::nullopt, false, 0, 0}, Row{"bound, with an inset", true, 29, false, 29, 29},
        Row{"bound, with an odd inset", true, 40.5, false, 40.5, 40.5}, Row{"popover", true, 29, true, 0, 0},
        Row{"unbound popover", false, std::nullopt, true, 0, 0},
        Row{"unbound, with the system's bar", false, 40.5, false, 29, 29}}) {
    SCOPED_TRACE(row.name);
    const auto window = makeNativeWindow();
    window->attached().set(kIsHelperBound, row.isBound);
    window->attached().set(kContentTopInset, row.inset);
    window->attached().set(kIsPopover, row.isPopover);
    const Rect rect{10, 20, 300, 200};
    EXPECT_EQ(window->contentRectForFrameRect(rect), Rect(10, 20, 300, 200 - row.bandOfContent));
    EXPECT_EQ(window->frameRectForContentRect(rect), Rect(10, 20, 300, 200 + row.bandOfFrame));
    EXPECT_EQ(measuredTitleBarHeight(*window), row.bandOfContent);
  }
}

TEST_F(ChromeTest, TheCloseButtonHidesAndShowsWhereThereIsOne) {
  const auto bound = show("main");
  for (const bool isHidden : {true, false}) {
    bound.helper()->setCloseButtonHidden(isHidden);
    EXPECT_EQ(bound.native->standardWindowButton(platform::WindowButton::close)->hidden, isHidden);
  }
  const auto native = NSWindow::make({0, 0, 100, 100}, platform::StyleMask::kBorderless);
  bind(std::make_shared<TestHostWindow>("bare"), native).helper()->setCloseButtonHidden(true);
  EXPECT_EQ(native->standardWindowButton(platform::WindowButton::close), nullptr);
}

// The content is 800 x 600 points.
TEST_F(ChromeTest, MovableBoundsAreFlippedAndScaled) {
  struct Row {
    const char* name;
    std::optional<Rect> hostBounds;  ///< none without a delegate
    Rect region, native;
  };
  const auto bound = show("main");
  bound.helper()->setContentSize({50, 50, 800, 600});
  ASSERT_EQ(bound.native->contentView()->frame().size(), Size(800, 600));
  for (const Row& row : {Row{"at scale one", Rect{0, 0, 800, 600}, {10, 0, 100, 40}, {10, 560, 100, 40}},
                         Row{"at the bottom", Rect{0, 0, 800, 600}, {10, 580, 100, 20}, {10, 0, 100, 20}},
                         Row{"doubled", Rect{0, 0, 400, 300}, {10, 0, 100, 40}, {20, 520, 200, 80}},
                         Row{"uneven scale", Rect{0, 0, 1600, 300}, {16, 10, 160, 30}, {8, 520, 80, 60}},
                         Row{"host without extent", Rect{}, {10, 0, 100, 40}, {10, -40, 100, 40}},
                         Row{"no delegate", std::nullopt, {10, 0, 100, 40}, {10, 0, 100, 40}}}) {
    SCOPED_TRACE(row.name);
    if (row.hostBounds)
      bound.host->bounds = *row.hostBounds;
    else
      bound.helper()->setDelegate({});
    bound.helper()->addMovableBounds(row.region);
    EXPECT_THAT(regions(*bound.native), ElementsAre(row.native));
    bound.helper()->resetAllMovableBounds();
  }
}

TEST_F(ChromeTest, MovableRegionsAddUpAndAreResetWithoutOtherViews) {
  const auto bound = show("main");
  const auto other = std::make_shared<DragPreventerNSView>();
  bound.native->contentView()->addSubview(other);
  for (int twice = 0; twice < 2; ++twice) bound.helper()->addMovableBounds({0, 0, 10, 10});
  EXPECT_EQ(regions(*bound.native).size(), 2u);
  bound.helper()->resetAllMovableBounds();
  EXPECT_THAT(bound.native->contentView()->subviews(), ElementsAre(other));
}

// The press is at (300, 640) on the screen, in a region over the top 100 points of the window. A window that is dragged
// follows the pointer from where the drag began.
TEST_F(ChromeTest, ADragRegionTellsAClickFromADrag) {
  struct Row {
    Point by;  ///< from the press to the first move
    bool drags;
  };
  for (const Row& row : {Row{{0, 0}, false}, Row{{4, 0}, false}, Row{{-4.99, 4.99}, false}, Row{{0, -4}, false},
                         Row{{-5, 0}, true}, Row{{5, 0}, true}, Row{{0, 5}, true}, Row{{120, -60}, true}}) {
    SCOPED_TRACE(testing::Message() << row.by.x << ", " << row.by.y);
    const auto bound = show("main");
    bound.helper()->addMovableBounds({0, 0, 800, 100});
    const Rect before = bound.native->frame();
    auto& user = desktop.user();
    const Point start = Point{300, 640} + row.by;
    desktop.advance(5);  // no double click
    user.together([&] {
      user.press({300, 640});
      user.moveTo(start);
      if (row.drags) user.moveTo(start + Point{70, -30});
      user.release();
    });
    desktop.settle();
    EXPECT_EQ(bound.native->frame(), row.drags ? before.offsetBy({70, -30}) : before);
    EXPECT_EQ(bound.view().mouseDowns, row.drags ? 0 : 1);
    bound.native->close();
  }
}

TEST_F(ChromeTest, ADragRegionTakesTheFirstPressOfAnInactiveApplication) {
  const auto pressOf = [](platform::EventType type) {
    auto press = std::make_shared<platform::NSEvent>();
    press->type = type;
    return press;
  };
  DraggerNSView region;
  DragPreventerNSView prevented;
  EXPECT_TRUE(region.acceptsFirstMouse(pressOf(platform::EventType::leftMouseDown)));
  EXPECT_FALSE(region.acceptsFirstMouse(pressOf(platform::EventType::rightMouseDown)));
  EXPECT_FALSE(prevented.acceptsFirstMouse(pressOf(platform::EventType::leftMouseDown)));
  EXPECT_TRUE(region.mouseDownCanMoveWindow());
  EXPECT_FALSE(prevented.mouseDownCanMoveWindow());
}

TEST_F(ChromeTest, ADragThatTakesItsRegionAwayEndsSafely) {
  const auto bound = show("main");
  bound.helper()->addMovableBounds({0, 0, 800, 100});
  auto& user = desktop.user();
  user.together([&] {
    user.press({300, 640});
    user.then([&] { bound.helper()->resetAllMovableBounds(); });
    user.then([&] { bound.native->close(); });
    user.moveTo({400, 640});
    user.release();
  });
  desktop.settle();
  EXPECT_TRUE(bound.native->isClosed());
}

}  // namespace
}  // namespace veltrik
