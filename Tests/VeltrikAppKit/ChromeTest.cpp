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

struct RectangleRow {
  const char* name;
  bool isBound;
  std::optional<double> inset;
  bool isPopover;
  double bandOfContent;  ///< how much lower the content rectangle is than the frame
  double bandOfFrame;    ///< how much higher the frame rectangle is than the content
};

class RectangleRuleTest : public ChromeTest, public testing::WithParamInterface<RectangleRow> {};

TEST_P(RectangleRuleTest, HoldsBothWays) {
  const auto window = makeNativeWindow();
  window->attached().set(kIsHelperBound, GetParam().isBound);
  window->attached().set(kContentTopInset, GetParam().inset);
  window->attached().set(kIsPopover, GetParam().isPopover);
  const Rect rect{10, 20, 300, 200};
  EXPECT_EQ(window->contentRectForFrameRect(rect), Rect(10, 20, 300, 200 - GetParam().bandOfContent));
  EXPECT_EQ(window->frameRectForContentRect(rect), Rect(10, 20, 300, 200 + GetParam().bandOfFrame));
  EXPECT_EQ(measuredTitleBarHeight(*window), GetParam().bandOfContent);
}

INSTANTIATE_TEST_SUITE_P(Rows, RectangleRuleTest,
                         testing::Values(RectangleRow{"Bound", true, std::nullopt, false, 0, 0},
                                         RectangleRow{"BoundWithInset", true, 29, false, 29, 29},
                                         RectangleRow{"BoundWithOddInset", true, 40.5, false, 40.5, 40.5},
                                         RectangleRow{"Popover", true, 29, true, 0, 0},
                                         RectangleRow{"UnboundPopover", false, std::nullopt, true, 0, 0},
                                         RectangleRow{"UnboundHasTheSystemsBar", false, 40.5, false, 29, 29}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ChromeTest, ABoundWindowsContentCoversItsFrameUnlessItsTitleBarIsPainted) {
  const auto plain = show("plain");
  EXPECT_EQ(plain.native->contentView()->frame().size(), plain.native->frame().size());
  const auto painted = std::make_shared<TestHostWindow>("painted");
  painted->titleColor = platform::Color{};
  const auto bound = show(painted);
  EXPECT_EQ(bound.native->contentView()->frame().height, bound.native->frame().height - 29);
}

TEST_F(ChromeTest, TheContentSizeIsSetWithoutTheOrigin) {
  const auto bound = show("main");
  bound.helper()->setContentSize({50, 50, 700, 500});
  EXPECT_EQ(bound.native->contentView()->frame().size(), Size(700, 500));
}

TEST_F(ChromeTest, TheCloseButtonHidesAndShows) {
  const auto bound = show("main");
  bound.helper()->setCloseButtonHidden(true);
  EXPECT_TRUE(bound.native->standardWindowButton(platform::WindowButton::close)->hidden);
  bound.helper()->setCloseButtonHidden(false);
  EXPECT_FALSE(bound.native->standardWindowButton(platform::WindowButton::close)->hidden);
}

TEST_F(ChromeTest, AWindowWithoutACloseButtonHasNothingToHide) {
  const auto native = NSWindow::make({0, 0, 100, 100}, platform::StyleMask::kBorderless);
  const auto bound = bind(std::make_shared<TestHostWindow>("bare"), native);
  bound.helper()->setCloseButtonHidden(true);
  EXPECT_EQ(native->standardWindowButton(platform::WindowButton::close), nullptr);
}

struct RegionRow {
  const char* name;
  Rect hostBounds;
  Rect region;
  Rect native;
};

class MovableBoundsTest : public ChromeTest, public testing::WithParamInterface<RegionRow> {};

// The content is 800 x 600 points.
TEST_P(MovableBoundsTest, AreFlippedAndScaled) {
  const auto bound = show("main");
  bound.helper()->setContentSize({0, 0, 800, 600});
  bound.host->bounds = GetParam().hostBounds;
  bound.helper()->addMovableBounds(GetParam().region);
  EXPECT_THAT(regions(*bound.native), testing::ElementsAre(GetParam().native));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MovableBoundsTest,
    testing::Values(RegionRow{"AtScaleOne", {0, 0, 800, 600}, {10, 0, 100, 40}, {10, 560, 100, 40}},
                    RegionRow{"AtTheBottom", {0, 0, 800, 600}, {10, 580, 100, 20}, {10, 0, 100, 20}},
                    RegionRow{"Doubled", {0, 0, 400, 300}, {10, 0, 100, 40}, {20, 520, 200, 80}},
                    RegionRow{"UnevenScale", {0, 0, 1600, 300}, {16, 10, 160, 30}, {8, 520, 80, 60}},
                    RegionRow{"HostWithoutExtent", {}, {10, 0, 100, 40}, {10, -40, 100, 40}}),
    [](const auto& row) { return row.param.name; });

TEST_F(ChromeTest, WithoutADelegateAMovableRegionIsTakenAsItIs) {
  const auto bound = show("main");
  bound.helper()->setDelegate({});
  bound.helper()->addMovableBounds({10, 0, 100, 40});
  EXPECT_THAT(regions(*bound.native), testing::ElementsAre(Rect(10, 0, 100, 40)));
}

TEST_F(ChromeTest, MovableRegionsAddUpAndAreResetWithoutOtherViews) {
  const auto bound = show("main");
  const auto other = std::make_shared<DragPreventerNSView>();
  bound.native->contentView()->addSubview(other);
  bound.helper()->addMovableBounds({0, 0, 10, 10});
  bound.helper()->addMovableBounds({0, 0, 10, 10});
  EXPECT_EQ(regions(*bound.native).size(), 2u);
  bound.helper()->resetAllMovableBounds();
  EXPECT_THAT(bound.native->contentView()->subviews(), testing::ElementsAre(other));
}

struct DragRow {
  const char* name;
  Point by;  ///< from the press to the first move
  bool drags;
};

class DragRegionTest : public ChromeTest, public testing::WithParamInterface<DragRow> {};

// The press is at (300, 640) on the screen, in a region over the top 100 points of the window. A window that is dragged
// follows the pointer from where the drag began.
TEST_P(DragRegionTest, TellsAClickFromADrag) {
  const auto bound = show("main");
  bound.helper()->addMovableBounds({0, 0, 800, 100});
  const Rect before = bound.native->frame();
  auto& user = desktop.user();
  const Point start = Point{300, 640} + GetParam().by;
  user.together([&] {
    user.press({300, 640});
    user.moveTo(start);
    if (GetParam().drags) user.moveTo(start + Point{70, -30});
    user.release();
  });
  desktop.settle();
  EXPECT_EQ(bound.native->frame(), GetParam().drags ? before.offsetBy({70, -30}) : before);
  EXPECT_EQ(bound.view().mouseDowns, GetParam().drags ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(Rows, DragRegionTest,
                         testing::Values(DragRow{"InPlace", {0, 0}, false}, DragRow{"FourRight", {4, 0}, false},
                                         DragRow{"AlmostFive", {-4.99, 4.99}, false},
                                         DragRow{"FourDown", {0, -4}, false}, DragRow{"FiveLeft", {-5, 0}, true},
                                         DragRow{"FiveRight", {5, 0}, true}, DragRow{"FiveUp", {0, 5}, true},
                                         DragRow{"Far", {120, -60}, true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ChromeTest, ADragRegionTakesTheFirstPressOfAnInactiveApplication) {
  platform::NSEvent press;
  press.type = platform::EventType::leftMouseDown;
  platform::NSEvent rightPress;
  rightPress.type = platform::EventType::rightMouseDown;
  const auto region = std::make_shared<DraggerNSView>();
  const auto prevented = std::make_shared<DragPreventerNSView>();
  EXPECT_TRUE(region->acceptsFirstMouse(std::make_shared<platform::NSEvent>(press)));
  EXPECT_FALSE(region->acceptsFirstMouse(std::make_shared<platform::NSEvent>(rightPress)));
  EXPECT_FALSE(prevented->acceptsFirstMouse(std::make_shared<platform::NSEvent>(press)));
  EXPECT_TRUE(region->mouseDownCanMoveWindow());
  EXPECT_FALSE(prevented->mouseDownCanMoveWindow());
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
