#include "Platform/AppKit/NSWindowController.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class WindowFrameTest : public AppKitTest {
 public:
  std::vector<std::string> log;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>("w", log);
};

TEST_F(WindowFrameTest, theSystemsRuleOfContentAndFrame) {
  struct Row {
    const char* name;
    int system;
    unsigned style;
    double bar;
  };
  const Row rows[] = {{"titled", 11, kDocument, 29},
                      {"titled on an older system", 10, kDocument, 23},
                      {"borderless", 11, StyleMask::kBorderless, 0},
                      {"borderless, resizable", 11, StyleMask::kResizable, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    setOperatingSystemVersionForTesting(row.system);
    const auto window = makeWindow({10, 20, 300, 200}, row.style);
    EXPECT_EQ(window->frame(), (Rect{10, 20, 300, 200 + row.bar}));
    EXPECT_EQ(window->contentView()->frame(), (Rect{0, 0, 300, 200}));
    EXPECT_EQ(window->contentRectForFrameRect(window->frame()), (Rect{10, 20, 300, 200}));
  }
  setOperatingSystemVersionForTesting(11);
}

TEST_F(WindowFrameTest, frameInIsFrameOutOverTenRounds) {
  const auto window = showWindow();
  const auto child = showWindow({300, 200, 80, 60});
  window->addChildWindow(child, WindowOrdering::above);
  const Rect parentStart = window->frame(), childStart = child->frame();
  for (int round = 0; round < 10; ++round) {
    const Rect frame{10.0 + round * 7, 20.0 + round * 3, 300.0 + round, 200.0 + round};
    window->setFrame(frame, true);
    desktop.settle();
    window->orderOut();
    window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
    EXPECT_EQ(window->frame(), frame);
    EXPECT_EQ(surfaceOf(*window).state().frame, frame);
    EXPECT_EQ(child->frame().origin() - window->frame().origin(), childStart.origin() - parentStart.origin());
  }
  window->setFrame(parentStart, true);
  desktop.settle();
  EXPECT_EQ(child->frame(), childStart) << "no drift";
  EXPECT_EQ(surfaceOf(*child).state().frame, childStart);
}

TEST_F(WindowFrameTest, programsKeepTheTopWhenTheContentChanges) {
  const auto window = makeWindow({100, 100, 400, 300});
  window->setContentSize({500, 200});
  EXPECT_EQ(window->frame(), (Rect{100, 200, 500, 229}));
  window->setContentMinSize({100, 100});
  window->setFrame({0, 0, 5, 5}, false);
  EXPECT_EQ(window->frame().size(), (Size{100, 129}));
}

TEST_F(WindowFrameTest, anAutosavedFrameComesBackInTheNextSession) {
  struct Row {
    const char* name;
    std::optional<Value> stored;
    Rect expected;
  };
  const Rect made{100, 100, 400, 329};
  const Row rows[] = {
      {"nothing saved", std::nullopt, made},
      {"a frame", Value("{{40, 50}, {600, 500}}"), {40, 50, 600, 500}},
      {"fractions", Value("{{40.25, -50.5}, {600, 500}}"), {40.25, -50.5, 600, 500}},
      {"on a screen that is gone", Value("{{5000, 5000}, {600, 500}}"), {0, 376, 600, 500}},
      {"not a frame", Value("somewhere"), made},
      {"three numbers", Value("{{1, 2}, {3}}"), made},
      {"a negative size", Value("{{1, 2}, {-3, 4}}"), made},
      {"no number", Value("{{nan, 2}, {3, 4}}"), made},
      {"another kind of value", Value(7), made},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    UserDefaults::standard().set("NSWindow Frame chat", row.stored.value_or(Value()));
    const auto window = makeWindow();
    NSWindowController(window).setWindowFrameAutosaveName("chat");
    EXPECT_EQ(window->frame(), row.expected);
    window->close();
  }
}

TEST(WindowFrameAcrossSessions, aMoveIsRemembered) {
  headless::HeadlessBackend desktop;
  const Rect moved{222, 111, 444, 333};
  {
    Session session(desktop);
    const auto window = NSWindow::make({100, 100, 400, 300}, StyleMask::kTitled);
    EXPECT_TRUE(window->setFrameAutosaveName("chat"));
    const auto second = NSWindow::make({100, 100, 400, 300}, StyleMask::kTitled);
    EXPECT_FALSE(second->setFrameAutosaveName("chat")) << "one window a name";
    window->setFrame(moved, false);
    window->setFrameAutosaveName("");
    window->setFrame({1, 2, 3, 40}, false);
  }
  Session session(desktop);
  const auto window = NSWindow::make({100, 100, 400, 300}, StyleMask::kTitled);
  window->setFrameAutosaveName("chat");
  EXPECT_EQ(window->frame(), moved);
}

TEST_F(WindowFrameTest, theUserResizesByEveryEdge) {
  // A frame of {100, 100, 400, 329}; each row drags by (30, 20).
  struct Row {
    const char* name;
    Point from;
    Rect expected;
    port::Cursor cursor;
  };
  using enum port::Cursor;
  const Row rows[] = {
      {"right", {497, 250}, {100, 100, 430, 329}, resizeHorizontal},
      {"left", {102, 250}, {130, 100, 370, 329}, resizeHorizontal},
      {"top", {300, 427}, {100, 100, 400, 349}, resizeVertical},
      {"bottom", {300, 102}, {100, 120, 400, 309}, resizeVertical},
      {"top right", {498, 427}, {100, 100, 430, 349}, resizeRising},
      {"bottom left", {102, 102}, {130, 120, 370, 309}, resizeRising},
      {"top left", {102, 427}, {130, 100, 370, 349}, resizeFalling},
      {"bottom right", {498, 102}, {100, 120, 430, 309}, resizeFalling},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto window = showWindow();
    window->setDelegate(delegate);
    user().moveTo(row.from);
    EXPECT_EQ(surfaceOf(*window).cursor(), row.cursor);
    user().drag(row.from, row.from + Point{30, 20});
    EXPECT_EQ(window->frame(), row.expected);
    EXPECT_EQ(surfaceOf(*window).state().frame, row.expected);
    window->close();
  }
}

TEST_F(WindowFrameTest, aLiveResizeAsksAndRespectsLimits) {
  const auto window = showWindow();
  window->setMinSize({300, 0});
  window->setDelegate(delegate);
  delegate->resizing = [](Size size) { return Size{size.width, 329}; };
  user().drag({498, 102}, {0, 0}, 1);
  EXPECT_EQ(window->frame(), (Rect{100, 100, 300, 329}));
  EXPECT_THAT(log, ElementsAre("w willResize", "w resized"));
  window->setStyleMask(StyleMask::kTitled);
  user().drag({398, 250}, {500, 250});
  EXPECT_EQ(window->frame(), (Rect{100, 100, 300, 329})) << "not resizable";
}

TEST_F(WindowFrameTest, aMachineThatNeitherMinimisesNorZoomsLosesNoWindow) {
  desktop.faults().minimiseUnsupported = desktop.faults().zoomUnsupported = true;
  const auto window = showWindow();
  const Rect before = window->frame();
  window->miniaturize();
  desktop.settle();
  window->deminiaturize();
  window->zoom();
  desktop.settle();
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(surfaceOf(*window).isShown());
  EXPECT_EQ(window->frame(), before);
  EXPECT_EQ(surfaceOf(*window).state().frame, before);
}

TEST_F(WindowFrameTest, theMachineZoomsAndBack) {
  const auto window = showWindow();
  user().click({300, 415}, 2);
  desktop.settle();
  EXPECT_TRUE(window->isZoomed());
  EXPECT_EQ(window->frame(), (Rect{0, 0, 1440, 876}));
  user().click({300, 860}, 2);
  desktop.settle();
  EXPECT_FALSE(window->isZoomed());
  EXPECT_EQ(window->frame(), (Rect{100, 100, 400, 329}));
}

}  // namespace
}  // namespace platform
