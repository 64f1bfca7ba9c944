#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/ApplicationProcess.h"
#include "Tests/Foundation/ApplicationFixture.h"
#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Protocols/CFDateGetIdleTimeInterval.h"
#include "VeltrikAppKit/WebViewRequest.h"

namespace veltrik {
namespace {

namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

class InputTest : public PluginTest {
 protected:
  InputTest() { desktop.settle(); }

  /// How often the host heard that the user is active.
  std::size_t interactions() const {
    return static_cast<std::size_t>(std::ranges::count(host->calls, "notifyUserInteraction 2"));
  }
};

TEST_F(InputTest, EveryKeyReachesTheHostWithItsModifiersAndType) {
  constexpr std::uint64_t kShift = ModifierFlag::kShift, kControl = ModifierFlag::kControl,
                          kOption = ModifierFlag::kOption, kCommand = ModifierFlag::kCommand;
  struct Row {
    const char* name;
    std::uint16_t code;
    std::uint64_t modifiers;
    const char* held;
  };
  const Row rows[] = {
      {"plain letter", 0, 0, "[ ]"},
      {"escape", 53, 0, "[ ]"},
      {"down arrow, which carries flags of its own", 125, 0, "[ ]"},
      {"a function key", 122, 0, "[ ]"},
      {"shift and control", 0, kShift | kControl, "[ 65536 ]"},
      {"option", 11, kOption, "[ 131072 ]"},
      {"command", 50, kCommand, "[ 262144 ]"},
      {"all, and caps lock", 8, kShift | kControl | kOption | kCommand | ModifierFlag::kCapsLock,
       "[ 65536 131072 262144 ]"},
  };
  const auto window = show("main");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    host->keys.clear();
    desktop.user().key(row.code, "", row.modifiers);
    const std::string start = "key " + std::to_string(row.code) + " " + row.held;
    EXPECT_THAT(host->keys, ElementsAre(start + " 0", start + " 1"));
  }
}

TEST_F(InputTest, AKeyGoesOnIfTheHostSaysSoOrIsNotThere) {
  struct Row {
    const char* name;
    bool hasDelegate;
    bool letsKeysGoOn;
    bool arrives;
  };
  const auto window = show("main");
  for (const Row& row : {Row{"host lets it", true, true, true}, Row{"host takes it", true, false, false},
                         Row{"no host", false, false, true}}) {
    SCOPED_TRACE(row.name);
    appKit->setDelegate(row.hasDelegate ? host : nullptr);
    host->letsKeysGoOn = row.letsKeysGoOn;
    window.view().keys.clear();
    desktop.user().key(0, "a");
    EXPECT_EQ(window.view().keys, row.arrives ? "a" : "");
  }
}

/// Knows one shortcut, by its key code.
class ShortcutView final : public NSView {
 public:
  explicit ShortcutView(std::uint16_t code) : code_(code) {}
  bool acceptsFirstResponder() override { return true; }
  bool performKeyEquivalent(const platform::EventPointer& event) override {
    if (event->keyCode == code_) ++performed;
    return event->keyCode == code_;
  }
  int performed = 0;

 private:
  std::uint16_t code_;
};

/// A process that stands in for the companion until the end of the scope.
class RunningCompanion {
 public:
  RunningCompanion() {
    makeApplication(folder_ / "Companion.app", kWebViewBundleIdentifier, "");
    const auto bundle = platform::Bundle::read(folder_ / "Companion.app");
    std::filesystem::copy_file("/bin/sleep", bundle->executablePath(),
                               std::filesystem::copy_options::overwrite_existing);
    process_ = platform::ApplicationProcess::launch(*bundle, {"60"});
  }
  ~RunningCompanion() { process_.terminate(); }
  int number() const { return static_cast<int>(process_.id); }

 private:
  ScratchFolder folder_;
  platform::ApplicationProcess process_;
};

TEST_F(InputTest, CommandAndTheKeyLeftOfOneIsTheCompanionsBesideExactlyTwoWindows) {
  const RunningCompanion companion;
  const std::string activation = "application " + std::to_string(companion.number()) + ": activate";
  std::vector<BoundWindow> windows;
  NSWindow::make({0, 0, 100, 100}, kOrdinaryStyle)->makeKeyAndOrderFront(nullptr);  // nobody's
  for (const bool switches : {false, true, false}) {
    windows.push_back(show("window " + std::to_string(windows.size())));
    SCOPED_TRACE(windows.size());
    host->keys.clear();
    desktop.journal().take();
    desktop.user().keyDown(KeyCode::kGrave, "`", ModifierFlag::kCommand);
    EXPECT_EQ(host->keys.empty(), switches);
    EXPECT_EQ(desktop.journal().count(activation), switches ? 1U : 0U);
  }
}

TEST_F(InputTest, TheCompanionTakesNoOtherKeyAndNoneWhenItDoesNotRun) {
  const auto first = show("first"), second = show("second");
  desktop.user().keyDown(KeyCode::kGrave, "`", ModifierFlag::kCommand);
  EXPECT_EQ(host->keys.size(), 1U);
  host->keys.clear();
  const RunningCompanion companion;
  desktop.user().keyDown(KeyCode::kGrave, "`");
  desktop.user().keyDown(KeyCode::kA, "a", ModifierFlag::kCommand);
  EXPECT_EQ(host->keys.size(), 2U);
  desktop.user().keyDown(KeyCode::kGrave, "`", ModifierFlag::kCommand | ModifierFlag::kShift);
  EXPECT_EQ(host->keys.size(), 2U);
}

TEST_F(InputTest, AModalWindowsShortcutsComeBeforeAllElse) {
  const auto behind = show("main");
  const auto modal = NSWindow::make({200, 200, 200, 100}, kOrdinaryStyle);
  const auto view = std::make_shared<ShortcutView>(53);
  modal->setContentView(view);
  platform::DispatchQueue::main().async([&] {
    desktop.user().keyDown(53);
    EXPECT_EQ(view->performed, 1);
    EXPECT_THAT(host->keys, IsEmpty());
    desktop.user().keyDown(36);
    EXPECT_THAT(host->keys, ElementsAre("key 36 [ ] 0"));
    desktop.user().click(behind.native->frame().center());
    EXPECT_EQ(behind.view().mouseDowns, 0) << "windows behind get nothing";
    NSApplication::shared().stopModal();
  });
  NSApplication::shared().runModal(modal);
  modal->orderOut();
  desktop.user().keyDown(53);
  EXPECT_EQ(view->performed, 1);
}

TEST_F(InputTest, ThePrincipalObjectsOwnDelegateIsTold) {
  const auto later = std::make_shared<TestHost>();
  const auto second = VeltrikAppKit::make();
  second->setDelegate(later);
  const auto window = show("main");
  desktop.user().keyDown(0, "a");
  EXPECT_EQ(host->keys.size(), 1U);
  EXPECT_EQ(later->keys.size(), 1U);
  appKit.reset();
  window.view().keys.clear();
  desktop.user().keyDown(0, "a");
  EXPECT_EQ(window.view().keys, "") << "keys end at the monitor of an object that has gone";
}

TEST_F(InputTest, AfterTheEndOnlyTheIdleTimerGoesOn) {
  const auto window = show("main");
  appKit->applicationWillTerminate();
  desktop.user().key(0, "a");
  EXPECT_THAT(host->keys, IsEmpty());
  EXPECT_EQ(window.view().keys, "a");
  desktop.advance(0.9999);
  desktop.presence()->userActs();
  desktop.advance(1);
  EXPECT_EQ(interactions(), 1U);
}

TEST_F(InputTest, TheUserIsActiveWhileTheIdleTimeIsBelowASecond) {
  struct Row {
    const char* name;
    double lastInput;
    std::size_t told;
  };
  constexpr double kLittle = 1.0 / (1 << 20);  // adds up without rounding
  for (const Row& row : {Row{"a second ago", 0, 0}, Row{"a little less than a second ago", kLittle, 1},
                         Row{"just now", 1 - kLittle, 1}}) {
    SCOPED_TRACE(row.name);
    host->calls.clear();
    desktop.advance(row.lastInput);
    desktop.presence()->userActs();
    desktop.advance(1 - row.lastInput);
    EXPECT_EQ(interactions(), row.told);
    desktop.advance(10);
    EXPECT_EQ(interactions(), row.told) << "idle from then on";
  }
}

TEST_F(InputTest, AnIdleTimeThatCannotBeReadCountsAsActivity) {
  desktop.advance(5);
  ASSERT_EQ(interactions(), 0U);
  desktop.faults().idleTimeUnreadable = true;
  desktop.advance(5);
  EXPECT_EQ(interactions(), 5U);
  EXPECT_EQ(CFDateGetIdleTimeInterval(), 0.0);
}

TEST_F(InputTest, TheIdleTimeIsInSecondsToTheNanosecond) {
  desktop.advance(1234.000000007);
  EXPECT_NEAR(CFDateGetIdleTimeInterval(), 1234.000000007, 1e-9);
  desktop.user().moveTo({1, 1});
  EXPECT_EQ(CFDateGetIdleTimeInterval(), 0.0);
}

TEST_F(InputTest, ScreensThatSleepAndWakeAreToldOnceEach) {
  appKit->notifyWillSleep({platform::kWorkspaceScreensDidWake, nullptr, {}});
  appKit->notifyDidWake({platform::kWorkspaceScreensDidSleep, nullptr, {}});
  EXPECT_THAT(host->calls, IsEmpty()) << "notifications of another name";
  for (const bool asleep : {true, true, false, false, true}) desktop.presence()->setScreensAsleep(asleep);
  desktop.settle();
  EXPECT_THAT(host->calls, ElementsAre("notifyWorkspaceEnvironment 0", "notifyWorkspaceEnvironment 1",
                                       "notifyWorkspaceEnvironment 0"));
}

TEST_F(InputTest, WithoutAHostNothingIsTold) {
  appKit->setDelegate({});
  desktop.faults().idleTimeUnreadable = true;
  desktop.presence()->setScreensAsleep(true);
  desktop.advance(3);
  appKit->setDelegate(host);
  desktop.settle();
  EXPECT_THAT(host->calls, IsEmpty());
}

TEST(IdleTimeWithoutSession, IsZero) {
  EXPECT_EQ(CFDateGetIdleTimeInterval(), 0.0);
}

}  // namespace
}  // namespace veltrik
