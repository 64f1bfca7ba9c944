#include <stdexcept>

#include "Platform/Foundation/Geometry.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using headless::BroadcastMessage;
using platform::WindowOrdering;
using testing::AllOf;

class WindowEventsTest : public PluginTest {
 protected:
  std::vector<std::int64_t> order() const {
    std::vector<std::int64_t> numbers;
    for (const NSWindow* each : NSApplication::shared().orderedWindows()) numbers.push_back(each->windowNumber());
    return numbers;
  }
  static BroadcastMessage frameMessage(const std::string& id, const Rect& frame, bool isResized) {
    return {"mirelo_parentWindowFrame",
            "",
            {{"parentID", id},
             {"parentFrame", platform::NSStringFromRect(frame)},
             {"isResized", isResized ? "true" : "false"}}};
  }
};

TEST_F(WindowEventsTest, KeyAndMainChangesAreTold) {
  const auto first = show("first");
  const auto second = show("second");
  first.host->takeCalls();
  first.helper()->becomeFirstWindow();
  EXPECT_TRUE(first.helper()->isKeyNSWindow() && first.helper()->isMainNSWindow());
  EXPECT_FALSE(second.helper()->isKeyNSWindow() || second.helper()->isMainNSWindow());
  EXPECT_FALSE(first.helper()->hasChildWindow() || first.helper()->isSheetWindow());
  EXPECT_THAT(first.host->calls, testing::UnorderedElementsAre("windowDidBecomeMain", "windowDidBecomeKey"));
  EXPECT_THAT(second.host->calls, testing::UnorderedElementsAre("windowDidResignMain", "windowDidResignKey"));
}

TEST_F(WindowEventsTest, BecomingMainIsPostedLaterAndKeepsTheHelperUntilThen) {
  const auto bound = bind("main");
  bound.native->makeKeyAndOrderFront(nullptr);
  EXPECT_THAT(postedNames(), IsEmpty());
  bound.host->helper = nullptr;
  desktop.settle();
  EXPECT_THAT(desktop.broadcast()->takePosted(),
              ElementsAre(BroadcastMessage{"mirelo_parentWindowDidBecomeMain", "", {{"parentID", "main"}}}));
}

TEST_F(WindowEventsTest, AWindowWithoutDelegateOrIdentifierPostsNothing) {
  const auto orphan = show("orphan");
  orphan.helper()->setDelegate({});
  const auto nameless = show("nameless");
  nameless.host->id = "";
  for (const auto& bound : {orphan, nameless}) {
    bound.helper()->becomeFirstWindow();
    bound.native->setFrame({1, 2, 300, 400}, true);
    bound.helper()->closeWindow();
    desktop.settle();
  }
  EXPECT_THAT(postedNames(), IsEmpty());
}

TEST_F(WindowEventsTest, AHiddenWindowThatResignsMainIsNotTold) {
  const auto bound = show("main");
  bound.helper()->setIsWindowHidden(true);
  EXPECT_FALSE(bound.native->isMainWindow());
  EXPECT_THAT(bound.host->calls, Not(Contains("windowDidResignMain")));
}

TEST_F(WindowEventsTest, AResizeIsToldAndPublishedOncePerFrame) {
  const auto bound = show("main");
  const Rect frame{10, 20, 500, 400};
  bound.native->setFrame(frame, true);
  EXPECT_THAT(bound.host->sizes, ElementsAre(Size(500, 400)));
  EXPECT_THAT(desktop.broadcast()->takePosted(), ElementsAre(frameMessage("main", frame, true)));
  // The window is told of its size again; the frame is the one that was published.
  bound.native->delegate().lock()->windowDidResize(*bound.native);
  EXPECT_THAT(postedNames(), IsEmpty());
}

TEST_F(WindowEventsTest, ALiveResizeTellsTheProposedSizeAndKeepsIt) {
  const auto bound = show("main");
  const Rect before = bound.native->frame();
  bound.host->sizes.clear();
  const Point corner{before.maxX() - 1, before.minY() + 1};
  desktop.user().drag(corner, corner + Point{40, -30}, 1);
  desktop.settle();
  EXPECT_EQ(bound.native->frame(), Rect(before.x, before.y - 30, before.width + 40, before.height + 30));
  EXPECT_THAT(bound.host->calls, Contains("windowWillResize"));
  EXPECT_THAT(bound.host->sizes, testing::Each(Size(before.width + 40, before.height + 30)));
}

TEST_F(WindowEventsTest, AMoveIsPublishedAtTheMouseUpThatEndsIt) {
  const auto bound = show("main");
  bound.helper()->addMovableBounds({0, 0, 800, 100});
  auto& user = desktop.user();
  const Rect moved = bound.native->frame().offsetBy({30, -10});  // from where the drag began
  user.together([&] {
    user.press({300, 640});
    user.moveTo({330, 630});
    user.moveTo({360, 620});
    user.then([&] { EXPECT_THAT(desktop.broadcast()->posted(), IsEmpty()); });
    user.release();
  });
  desktop.settle();
  EXPECT_THAT(desktop.broadcast()->takePosted(), ElementsAre(frameMessage("main", moved, false)));
  desktop.user().click({300, 300});
  desktop.settle();
  EXPECT_THAT(postedNames(), IsEmpty());
}

TEST_F(WindowEventsTest, ACloseRequestClosesTheChildrenBeforeTheHostIsAsked) {
  const auto bound = show("main");
  const auto first = makeNativeWindow();
  const auto second = makeNativeWindow();
  for (const auto& child : {first, second}) bound.native->addChildWindow(child, WindowOrdering::above);
  bound.host->mayClose = false;
  bool closedBefore = false;
  bound.host->reactions["windowShouldClose"] = [&] { closedBefore = first->isClosed() && second->isClosed(); };
  bound.native->performClose();
  EXPECT_TRUE(closedBefore);
  EXPECT_FALSE(bound.native->isClosed());
  bound.helper()->setDelegate({});
  bound.native->performClose();
  EXPECT_TRUE(bound.native->isClosed()) << "with nobody to ask";
}

TEST_F(WindowEventsTest, ClosingAsksNobodyTakesTheChildrenAlongAndIsToldThenPosted) {
  const auto bound = show("main");
  const auto child = makeNativeWindow();
  bound.native->addChildWindow(child, WindowOrdering::above);
  bound.host->mayClose = false;
  bound.host->reactions["windowWillClose"] = [&] { EXPECT_THAT(postedNames(), IsEmpty()); };
  bound.helper()->closeWindow();
  EXPECT_TRUE(bound.native->isClosed());
  EXPECT_TRUE(child->isClosed());
  EXPECT_THAT(bound.host->calls, AllOf(Contains("windowWillClose"), Not(Contains("windowShouldClose"))));
  EXPECT_THAT(desktop.broadcast()->takePosted(),
              ElementsAre(BroadcastMessage{"mirelo_parentWindowWillClose", "", {{"parentID", "main"}}}));
  EXPECT_EQ(bound.helper()->nsWindowFrame(), Rect());
}

TEST_F(WindowEventsTest, AWindowGoesBehindTheHostsOtherWindowsWithoutTheFocus) {
  const auto first = show("first");
  const auto foreign = makeNativeWindow();
  foreign->makeKeyAndOrderFront(nullptr);
  const auto second = show("second");
  const auto hidden = show("hidden");
  hidden.helper()->setIsWindowHidden(true);
  const auto third = show("third");
  third.helper()->orderFrontBehideCurrentWindows();
  const auto numbers = [](const auto&... windows) { return std::vector<std::int64_t>{windows->windowNumber()...}; };
  EXPECT_EQ(order(), numbers(second.native, foreign, first.native, third.native));
  third.helper()->orderFrontBehideCurrentWindows();
  EXPECT_EQ(order(), numbers(second.native, foreign, first.native, third.native)) << "already behind the others";
  hidden.helper()->orderFrontBehideCurrentWindows();
  EXPECT_EQ(order(), numbers(second.native, foreign, first.native, third.native, hidden.native));
  EXPECT_FALSE(hidden.native->isKeyWindow());
  first.helper()->closeWindow();
  second.helper()->closeWindow();
  hidden.helper()->closeWindow();
  foreign->makeKeyAndOrderFront(nullptr);
  third.helper()->orderFrontBehideCurrentWindows();
  EXPECT_EQ(order(), numbers(third.native, foreign)) << "the host's only one is just ordered front";
  EXPECT_TRUE(foreign->isKeyWindow());
}

TEST_F(WindowEventsTest, AChildThatIsTheOnlyOneBesideItsParentTakesItNowhere) {
  const auto parent = show("parent"), child = show("child");
  parent.native->addChildWindow(child.native, WindowOrdering::above);
  const auto foreign = makeNativeWindow();
  foreign->orderFront();
  child.helper()->orderFrontBehideCurrentWindows();
  EXPECT_EQ(order(),
            (std::vector{child.native->windowNumber(), parent.native->windowNumber(), foreign->windowNumber()}));
}

TEST_F(WindowEventsTest, AHostThatThrowsLosesNeitherMonitorsNorAPopoversClosing) {
  const auto popover = show("popover"), main = show("main");
  popover.native->attached().set(kIsPopover, true);
  const auto failing = [] { throw std::runtime_error("host"); };
  popover.host->reactions["windowDidBecomeMain"] = popover.host->reactions["windowDidResignMain"] = failing;
  EXPECT_THROW(popover.helper()->becomeFirstWindow(), std::runtime_error);
  desktop.user().click(popover.native->frame().center(), 1, headless::Button::right);
  EXPECT_THAT(popover.host->calls, Contains("mouseRightClick"));
  EXPECT_THROW(main.helper()->becomeFirstWindow(), std::runtime_error);
  EXPECT_TRUE(main.helper()->isMainNSWindow());
  EXPECT_TRUE(main.helper()->isKeyNSWindow());
  desktop.settle();
  EXPECT_TRUE(popover.native->isClosed());
}

TEST_F(WindowEventsTest, MakingMainAndKeyAlsoShowsAHiddenWindow) {
  const auto first = show("first");
  const auto second = show("second");
  first.helper()->setIsWindowHidden(true);
  first.helper()->makeMainAndKeyNSWindow();
  EXPECT_TRUE(first.native->isVisible());
  EXPECT_TRUE(first.native->isMainWindow());
  EXPECT_TRUE(first.native->isKeyWindow());
  EXPECT_EQ(first.native->orderedIndex(), 0u);
}

}  // namespace
}  // namespace veltrik
