#include <stdexcept>

#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// Every callback of a window and of a monitor, with everything that a callee may do to the caller meanwhile. What may
/// come of it is judged by the sanitizers and by what must hold afterwards.
class ReentrancyTest : public AppKitTest {
 public:
  struct Scene {
    std::shared_ptr<NSWindow> window;
    std::shared_ptr<NSWindow> other;
    std::shared_ptr<RecordingDelegate> delegate;
  };
  Scene scene;
  std::vector<std::string> log;

  void setUpScene() {
    log.clear();
    scene.other = makeWindow({600, 100, 300, 200});
    scene.window = makeWindow();
    scene.delegate = std::make_shared<RecordingDelegate>("w", log);
    scene.other->orderFront();
    scene.window->makeKeyAndOrderFront(nullptr);
    scene.window->addChildWindow(makeWindow({150, 150, 50, 50}), WindowOrdering::above);
    desktop.settle();
    scene.window->setDelegate(scene.delegate);
  }
  void tearDownScene() {
    for (const auto& window : application().windows()) window->close();
    scene = {};
    desktop.settle();
  }
  void expectConsistent() {
    for (NSWindow* window : application().orderedWindows()) {
      EXPECT_TRUE(window->isVisible());
      EXPECT_EQ(application().windowWithNumber(window->windowNumber()).get(), window);
    }
    if (const auto key = application().keyWindow()) {
      EXPECT_TRUE(key->isVisible());
      EXPECT_FALSE(key->isClosed());
    }
  }
};

TEST_F(ReentrancyTest, whateverADelegateDoes) {
  const std::pair<const char*, std::function<void(ReentrancyTest&)>> triggers[] = {
      {"close", [](ReentrancyTest& t) { t.scene.window->performClose(); }},
      {"hide", [](ReentrancyTest& t) { t.scene.window->orderOut(); }},
      {"miniaturize and back",
       [](ReentrancyTest& t) {
         const auto window = t.scene.window;
         window->miniaturize();
         window->deminiaturize();
       }},
      {"move and resize", [](ReentrancyTest& t) { t.scene.window->setFrame(Rect(10, 10, 222, 222), true); }},
      {"give the focus away", [](ReentrancyTest& t) { t.scene.other->makeKeyAndOrderFront(nullptr); }},
      {"drag the title bar", [](ReentrancyTest& t) { t.user().drag(Point(300, 415), Point(340, 455)); }},
      {"drag the edge", [](ReentrancyTest& t) { t.user().drag(Point(499, 250), Point(540, 250)); }},
      {"press the close button", [](ReentrancyTest& t) { t.user().click(Point(114, 414.5)); }},
      {"another application", [](ReentrancyTest& t) { t.desktop.windows().userDeactivatesAll(), t.desktop.settle(); }},
      {"begin and end a sheet",
       [](ReentrancyTest& t) {
         const auto window = t.scene.window;
         const auto sheet = t.makeWindow({0, 0, 50, 50});
         window->beginSheet(sheet, [&t](int) {
           if (t.scene.delegate && t.scene.window) t.scene.delegate->windowDidResize(*t.scene.window);
         });
         t.desktop.settle();
         window->endSheet(*sheet);
         sheet->close();
       }},
      {"close with a sheet",
       [](ReentrancyTest& t) {
         const auto window = t.scene.window;
         window->beginSheet(t.makeWindow({0, 0, 50, 50}), {});
         window->close();
       }},
      {"the machine moves it",
       [](ReentrancyTest& t) {
         t.desktop.windows().userMoves(t.surfaceOf(*t.scene.window), {0, 0, 333, 333});
         t.desktop.settle();
       }},
  };
  const std::pair<const char*, std::function<void(ReentrancyTest&, NSWindow&)>> actions[] = {
      {"closes the window", [](ReentrancyTest&, NSWindow& window) { window.close(); }},
      {"drops the window",
       [](ReentrancyTest& t, NSWindow& window) {
         t.scene.window = nullptr;
         window.close();
       }},
      {"drops the delegate", [](ReentrancyTest& t, NSWindow&) { t.scene.delegate = nullptr; }},
      {"closes all windows",
       [](ReentrancyTest& t, NSWindow&) {
         for (const auto& each : t.application().windows()) each->close();
       }},
      {"hides the window", [](ReentrancyTest&, NSWindow& window) { window.orderOut(); }},
      {"takes the focus back", [](ReentrancyTest&, NSWindow& window) { window.makeKeyAndOrderFront(nullptr); }},
      {"gives the focus on", [](ReentrancyTest& t, NSWindow&) { t.scene.other->makeKeyAndOrderFront(nullptr); }},
      {"moves it", [](ReentrancyTest&, NSWindow& window) { window.setFrameOrigin(Point(7, 7)); }},
      {"takes its views away", [](ReentrancyTest&, NSWindow& window) { window.setContentView(nullptr); }},
      {"throws", [](ReentrancyTest&, NSWindow&) { throw std::runtime_error("from a delegate"); }},
  };
  for (const auto& [triggerName, trigger] : triggers)
    for (const auto& [actionName, action] : actions) {
      SCOPED_TRACE(std::string(actionName) + " on " + triggerName);
      setUpScene();
      int budget = 1;  // once, at the n-th callback: a delegate that answers itself for ever is its own affair
      for (int nth = 0; nth < 4; ++nth) {
        if (nth > 0) {
          tearDownScene();
          setUpScene();
        }
        budget = nth + 1;
        scene.delegate->during = [&, &act = action](const std::string&, NSWindow& window) {
          if (--budget == 0) act(*this, window);
        };
        try {
          trigger(*this);
        } catch (const std::runtime_error& error) {
          EXPECT_STREQ(error.what(), "from a delegate");
        }
        budget = 0;
        if (scene.delegate) scene.delegate->during = nullptr;
        user().release();
        desktop.settle();
        expectConsistent();
      }
      tearDownScene();
      EXPECT_TRUE(application().windows().empty());
    }
}

TEST_F(ReentrancyTest, aWindowThatBeganToCloseIsClosedWhateverIsThrown) {
  setUpScene();
  const auto window = scene.window;
  scene.delegate->during = [](const std::string&, NSWindow&) { throw std::runtime_error("no"); };
  EXPECT_THROW(window->close(), std::runtime_error);
  EXPECT_TRUE(window->isClosed());
  EXPECT_EQ(application().windowWithNumber(window->windowNumber()), nullptr);
  EXPECT_EQ(window->nativeHandle(), 0u);
}

TEST_F(ReentrancyTest, theFocusArrivesWhateverIsThrownOnTheWay) {
  for (const std::string step : {"resignedKey", "resignedMain", "becameKey", "becameMain"}) {
    SCOPED_TRACE(step);
    setUpScene();
    const auto otherDelegate = std::make_shared<RecordingDelegate>("o", log);
    scene.other->setDelegate(otherDelegate);
    bool thrown = false;
    const auto throwing = [&](const std::string& what, NSWindow&) {
      if (what != step) return;
      thrown = true;
      throw std::runtime_error("no");
    };
    scene.delegate->during = otherDelegate->during = throwing;
    EXPECT_THROW(scene.other->makeKeyAndOrderFront(nullptr), std::runtime_error);
    EXPECT_TRUE(thrown);
    EXPECT_TRUE(scene.other->isKeyWindow());
    EXPECT_TRUE(scene.other->isMainWindow());
    scene.delegate->during = otherDelegate->during = nullptr;
    tearDownScene();
  }
}

TEST_F(ReentrancyTest, monitorsComeAndGoWhileTheyRun) {
  setUpScene();
  const auto key = [&] {
    auto event = std::make_shared<NSEvent>();
    event->type = EventType::keyDown;
    return event;
  };
  std::string ran;
  const auto add = [&](char name, std::function<void()> during) {
    return application().addLocalMonitor(eventMask(EventType::keyDown),
                                         [&ran, name, during](const EventPointer& event) {
                                           ran += name;
                                           if (during) during();
                                           return event;
                                         });
  };
  EventMonitorToken self = 0, later = 0;
  self = add('a', [&] { application().removeMonitor(self); });
  add('b', [&] {
    application().removeMonitor(later);
    if (ran.size() < 4) add('n', nullptr);
  });
  later = add('c', nullptr);
  bool throws = true;
  add('t', [&] {
    if (std::exchange(throws, false)) throw std::runtime_error("from a monitor");
  });
  EXPECT_THROW(application().sendEvent(key()), std::runtime_error);
  EXPECT_EQ(ran, "abt") << "the removed one is skipped, the new one waits for the next event";
  ran = "xxxx";
  application().sendEvent(key());
  EXPECT_EQ(ran, "xxxxbtn");
}

TEST_F(ReentrancyTest, viewsVanishWhileTheyHandleTheMouse) {
  for (const std::string trigger : {"down1", "dragged", "up1", "entered", "exited", "moved", "rightDown", "wheel"}) {
    SCOPED_TRACE(trigger);
    setUpScene();
    auto view = std::make_shared<RecordingView>(Rect{100, 100, 200, 150});
    view->focusable = true;
    scene.window->contentView()->addSubview(view);
    view->during = [&](const std::string& what, const EventPointer&) {
      if (what != trigger || !view) return;
      view->removeFromSuperview();
      view = nullptr;
    };
    user().drag({250, 250}, {260, 260});
    user().click({250, 250}, 1, headless::Button::right);
    user().wheel({250, 250}, 0, 3);
    user().moveTo({110, 110});
    EXPECT_EQ(view, nullptr);
    EXPECT_EQ(scene.window->firstResponder(), scene.window) << "the focus fell back";
    tearDownScene();
  }
}

}  // namespace
}  // namespace platform
