#include "Platform/AppKit/NSPanel.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class WindowFocusTest : public AppKitTest {
 protected:
  std::shared_ptr<NSWindow> named(const std::string& name, unsigned style = kDocument) {
    auto window = makeWindow({100, 100, 300, 200}, style);
    listen(*window, name);
    return window;
  }
  void listen(NSWindow& window, const std::string& name) {
    delegates_.push_back(std::make_shared<RecordingDelegate>(name, log));
    window.setDelegate(delegates_.back());
  }
  std::vector<std::string> taken() { return std::exchange(log, {}); }
  void watchActivity() {
    for (const char* name : {kApplicationDidBecomeActive, kApplicationDidResignActive})
      NotificationCenter::defaultCenter().addObserver(this, name, nullptr, [this](const Notification& notification) {
        log.push_back(notification.name == kApplicationDidBecomeActive ? "active" : "inactive");
      });
  }
  std::vector<std::string> log;

 private:
  std::vector<std::shared_ptr<RecordingDelegate>> delegates_;
};

TEST_F(WindowFocusTest, theOldOneResignsBeforeTheNewOneBecomes) {
  const auto a = named("a"), b = named("b");
  a->makeKeyAndOrderFront(nullptr);
  EXPECT_THAT(taken(), ElementsAre("a becameKey", "a becameMain"));
  b->makeKeyAndOrderFront(nullptr);
  EXPECT_THAT(taken(), ElementsAre("a resignedKey", "a resignedMain", "b becameKey", "b becameMain"));
  desktop.settle();
  EXPECT_THAT(taken(), IsEmpty()) << "the machine only confirms";
  EXPECT_TRUE(b->isKeyWindow());
  EXPECT_TRUE(b->isMainWindow());
  EXPECT_TRUE(surfaceOf(*b).isActive());
}

TEST_F(WindowFocusTest, aPanelIsKeyButNeverMain) {
  const auto a = named("a");
  a->makeKeyAndOrderFront(nullptr);
  const auto panel = NSPanel::make({0, 0, 100, 100}, kDocument);
  listen(*panel, "panel");
  taken();
  panel->makeKeyAndOrderFront(nullptr);
  EXPECT_THAT(taken(), ElementsAre("a resignedKey", "panel becameKey"));
  EXPECT_EQ(application().mainWindow(), a);
}

TEST_F(WindowFocusTest, whoCanBeKey) {
  struct Row {
    const char* name;
    unsigned style;
    bool shown, expected;
  };
  const Row rows[] = {{"a titled window", StyleMask::kTitled, true, true},
                      {"a resizable one", StyleMask::kResizable, true, true},
                      {"a borderless one", StyleMask::kBorderless, true, false},
                      {"a hidden one", kDocument, false, false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto window = makeWindow({0, 0, 50, 50}, row.style);
    if (row.shown) window->orderFront();
    window->makeKey();
    EXPECT_EQ(window->isKeyWindow(), row.expected);
    EXPECT_EQ(window->isMainWindow(), row.expected);
    window->close();
  }
}

TEST_F(WindowFocusTest, theFrontMostHeirTakesOver) {
  const std::pair<const char*, std::function<void(NSWindow&)>> ways[] = {
      {"hidden", [](NSWindow& window) { window.orderOut(); }},
      {"closed", [](NSWindow& window) { window.close(); }},
      {"miniaturized", [](NSWindow& window) { window.miniaturize(); }}};
  for (const auto& [name, leave] : ways) {
    SCOPED_TRACE(name);
    const auto a = named("a"), b = named("b"), borderless = named("borderless", StyleMask::kBorderless), c = named("c");
    for (const auto& window : {a, b, borderless, c}) window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
    taken();
    leave(*c);
    EXPECT_EQ(application().keyWindow(), b);
    EXPECT_EQ(application().mainWindow(), b);
    std::erase_if(log, [](const std::string& line) { return line == "c willClose" || line == "c miniaturized"; });
    EXPECT_THAT(taken(), ElementsAre("c resignedKey", "c resignedMain", "b becameKey", "b becameMain"));
    desktop.settle();
    EXPECT_TRUE(surfaceOf(*b).isActive());
    EXPECT_TRUE(application().isActive());
    for (const auto& window : {a, b, borderless, c}) window->close();
    desktop.settle();
    EXPECT_EQ(application().keyWindow(), nullptr);
    EXPECT_FALSE(application().isActive()) << "no window, no focus";
  }
}

TEST_F(WindowFocusTest, anotherApplicationTakesAndGivesTheFocus) {
  watchActivity();
  const auto a = named("a");
  a->makeKeyAndOrderFront(nullptr);
  desktop.settle();
  EXPECT_THAT(taken(), ElementsAre("a becameKey", "a becameMain", "active"));
  desktop.windows().userDeactivatesAll();
  desktop.settle();
  EXPECT_THAT(taken(), ElementsAre("a resignedKey", "a resignedMain", "inactive"));
  desktop.windows().userActivates(surfaceOf(*a));
  desktop.settle();
  EXPECT_THAT(taken(), ElementsAre("a becameKey", "a becameMain", "active"));
}

TEST_F(WindowFocusTest, theUserSwitchesBetweenOurWindows) {
  watchActivity();
  const auto a = named("a"), b = named("b");
  a->makeKeyAndOrderFront(nullptr);
  b->makeKeyAndOrderFront(nullptr);
  desktop.advance(1);
  taken();
  desktop.windows().userActivates(surfaceOf(*a));
  desktop.settle();
  EXPECT_THAT(taken(), ElementsAre("b resignedKey", "b resignedMain", "a becameKey", "a becameMain"));
  EXPECT_EQ(application().orderedWindows().front(), a.get());
}

TEST_F(WindowFocusTest, aReportOlderThanOurOwnRequestChangesNothing) {
  const auto a = named("a"), b = named("b"), c = named("c");
  for (const auto& window : {a, b, c}) window->makeKeyAndOrderFront(nullptr);
  desktop.advance(1);
  desktop.windows().holdReports(true);
  desktop.windows().userActivates(surfaceOf(*a));
  taken();
  b->makeKey();
  desktop.windows().holdReports(false);
  desktop.settle();
  EXPECT_TRUE(b->isKeyWindow());
  EXPECT_THAT(taken(), ElementsAre("c resignedKey", "c resignedMain", "b becameKey", "b becameMain"));
}

TEST_F(WindowFocusTest, aRefusedActivationEndsInactive) {
  desktop.faults().activationRefused = true;
  const auto a = named("a");
  a->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(a->isKeyWindow()) << "the model decides at once";
  desktop.advance(3);
  EXPECT_FALSE(a->isKeyWindow());
  EXPECT_FALSE(application().isActive());
}

TEST_F(WindowFocusTest, activatingTheApplicationTakesItsFrontMostWindow) {
  const auto a = named("a"), b = named("b");
  a->orderFront();
  b->orderFront();
  application().activate(true);
  desktop.settle();
  EXPECT_EQ(application().keyWindow(), b);
  EXPECT_TRUE(surfaceOf(*b).isActive());
}

}  // namespace
}  // namespace platform
