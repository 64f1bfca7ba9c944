#include <limits>

#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

constexpr std::uint64_t kDragMask = eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp);

/// A view that tracks the mouse itself: a drag of 5 points moves the window, less is a click.
class GripView : public NSView {
 public:
  using NSView::NSView;
  std::vector<std::string> heard;

  void mouseDown(const EventPointer& event) override {
    heard.push_back("down");
    const Point start = event->locationInWindow;
    NSWindow* const window = this->window();
    window->trackEvents(kDragMask, std::numeric_limits<double>::max(), [&](const EventPointer& each, bool& stop) {
      if (!each) {
        heard.push_back("none");
        stop = true;
      } else if (each->type == EventType::leftMouseUp) {
        heard.push_back("click");
        stop = true;
      } else if (std::abs(each->locationInWindow.x - start.x) >= 5) {
        heard.push_back("drag");
        window->performDrag(each);
      }
    });
  }
  void mouseUp(const EventPointer&) override { heard.push_back("up"); }
};

class TrackingTest : public AppKitTest {
 public:
  std::shared_ptr<NSWindow> window;
  std::shared_ptr<GripView> grip = std::make_shared<GripView>(Rect{0, 200, 400, 100});
  std::vector<std::string> log;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>("w", log);

  void SetUp() override {
    window = showWindow();
    window->contentView()->addSubview(grip);
    window->setDelegate(delegate);
  }
};

TEST_F(TrackingTest, aDragMovesTheWindowWhicheverWay) {
  struct Row {
    const char* name;
    bool withChild, machineCan, reportsAtEnd;
  };
  const Row rows[] = {{"by the machine", false, true, false},
                      {"by a machine that reports at the end", false, true, true},
                      {"by the model, where the machine can't", false, false, false},
                      {"by the model, for a child's sake", true, true, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    desktop.faults().moveUnsupported = !row.machineCan;
    desktop.faults().moveReportedAtEnd = row.reportsAtEnd;
    window->setFrameOrigin({100, 100});
    const auto child = makeWindow({150, 150, 50, 50});
    child->orderFront();
    if (row.withChild) window->addChildWindow(child, WindowOrdering::above);
    desktop.settle();
    log.clear();
    std::vector<Point> offsets;
    user().together([&] {
      user().press({350, 350});
      for (int step = 1; step <= 6; ++step) {
        user().moveTo({350.0 + step * 10, 350.0 + step * 5});
        user().then([&] { offsets.push_back(child->frame().origin() - window->frame().origin()); });
      }
      user().release();
    });
    EXPECT_EQ(log.front(), "w willMove");
    EXPECT_EQ(surfaceOf(*window).state().frame, window->frame());
    EXPECT_EQ(window->frame().origin(), (Point{150, 125})) << "as far as the pointer went after the drag began";
    if (row.withChild) {
      EXPECT_THAT(offsets, testing::Each(Point{50, 50})) << "at every step";
    }
    child->close();
  }
}

TEST_F(TrackingTest, tracksInOrderAndLeavesTheRest) {
  const auto post = [&](EventType type, int click) {
    auto event = std::make_shared<NSEvent>();
    event->type = type;
    event->clickCount = click;
    event->windowNumber = window->windowNumber();
    application().postEvent(event, false);
  };
  post(EventType::scrollWheel, 1);
  post(EventType::leftMouseDragged, 2);
  post(EventType::keyUp, 3);
  post(EventType::leftMouseDragged, 4);
  post(EventType::leftMouseUp, 5);
  post(EventType::leftMouseUp, 6);
  std::vector<int> tracked;
  window->trackEvents(kDragMask, 0, [&](const EventPointer& event, bool& stop) {
    tracked.push_back(event ? event->clickCount : 0);
    stop = event && event->type == EventType::leftMouseUp;
  });
  EXPECT_THAT(tracked, ElementsAre(2, 4, 5));
  std::vector<int> left;
  while (const auto event = application().nextEvent(kAnyEventMask, 0)) left.push_back(event->clickCount);
  EXPECT_THAT(left, ElementsAre(1, 3, 6));
}

TEST_F(TrackingTest, aDeadlineEndsWithNothing) {
  std::vector<double> times;
  window->trackEvents(kDragMask, RunLoop::main().now() + 2, [&](const EventPointer& event, bool&) {
    EXPECT_EQ(event, nullptr);
    times.push_back(RunLoop::main().now());
  });
  EXPECT_THAT(times, ElementsAre(2));
}

TEST_F(TrackingTest, keysWaitUntilTheDragIsOver) {
  auto view = std::make_shared<RecordingView>();
  view->focusable = true;
  window->contentView()->addSubview(view);
  window->makeFirstResponder(view);
  user().together([&] {
    user().press({300, 350});
    user().key(KeyCode::kA, "a");
    user().then([&] { EXPECT_THAT(view->heard, IsEmpty()); });
    user().release();
  });
  EXPECT_THAT(view->heard, ElementsAre("key a"));
}

TEST_F(TrackingTest, theTitleBarDragsAMovableWindowOnly) {
  user().drag({300, 415}, {330, 415}, 3);
  EXPECT_EQ(window->frame().origin(), (Point{120, 100}));
  window->setMovable(false);
  user().drag({300, 415}, {330, 415}, 3);
  EXPECT_EQ(window->frame().origin(), (Point{120, 100}));
}

TEST_F(TrackingTest, closingInsideATrackingEndsIt) {
  application().addLocalMonitor(kAnyEventMask, [](const EventPointer& event) { return event; });
  user().together([&] {
    user().press({300, 350});
    user().then([&] { window->close(); });
  });
  EXPECT_THAT(grip->heard, ElementsAre("down", "none"));
}

}  // namespace
}  // namespace platform
