#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSTextView.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using platform::NSEvent;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

class MonitorsTest : public PluginTest {
 protected:
  /// Host points are native points by 100 / 77, from the top left.
  static void expectPoint(Point got, Point wanted) {
    EXPECT_NEAR(got.x, wanted.x, 1e-9);
    EXPECT_NEAR(got.y, wanted.y, 1e-9);
  }
  /// A double click in a window, whichever is main.
  static void pressIn(const NSWindow& window, platform::EventType type) {
    auto event = std::make_shared<NSEvent>();
    event->type = type;
    event->clickCount = 2;
    event->windowNumber = window.windowNumber();
    NSApplication::shared().sendEvent(event);
  }
  BoundWindow showSized(const std::string& id, const Rect& frame, bool painted = false) {
    const auto hostWindow = std::make_shared<TestHostWindow>(id);
    if (painted) hostWindow->titleColor = platform::Color{};
    auto bound = show(hostWindow);
    bound.native->setFrame(frame, true);
    return bound;
  }
};

TEST_F(MonitorsTest, ClicksAreReportedInHostPointsADoubleClickFromBelowThePaintedTitleBar) {
  const double wholeHeight = 500 * 100.0 / 77, belowTheBar = 471 * 100.0 / 77;
  for (const bool isPainted : {false, true}) {
    SCOPED_TRACE(isPainted);
    const auto bound = showSized("main", {200, 100, 800, 600}, isPainted);
    desktop.advance(5);
    desktop.user().click({277, 200}, 2);
    desktop.user().click({277, 200}, 1, headless::Button::right);
    ASSERT_EQ(bound.host->clicks.size(), 2u);
    expectPoint(bound.host->clicks[0], {100, isPainted ? belowTheBar : wholeHeight});
    expectPoint(bound.host->clicks[1], {100, wholeHeight});
    bound.native->close();
  }
}

TEST_F(MonitorsTest, WhatTheHostConsumesDoesNotReachItsView) {
  const auto bound = showSized("main", {200, 100, 800, 600});
  desktop.user().click({300, 300}, 2);
  EXPECT_EQ(bound.view().mouseDowns, 2);
  bound.host->consumesClicks = true;
  desktop.advance(5);  // so that this is no triple click
  desktop.user().click({300, 300}, 2);
  EXPECT_EQ(bound.view().mouseDowns, 3);
}

TEST_F(MonitorsTest, ClicksInAnotherWindowAreNotReported) {
  const auto bound = showSized("main", {700, 100, 300, 300});
  const auto foreign = makeNativeWindow({100, 100, 300, 300});
  foreign->orderFront();
  for (const auto type : {platform::EventType::leftMouseDown, platform::EventType::rightMouseDown}) {
    bound.helper()->becomeFirstWindow();
    ASSERT_TRUE(bound.native->isMainWindow());
    pressIn(*foreign, type);
  }
  EXPECT_THAT(bound.host->clicks, IsEmpty());
}

TEST_F(MonitorsTest, TheMonitorsLiveWhileTheWindowIsMain) {
  const auto first = showSized("first", {0, 100, 300, 300});
  const auto second = showSized("second", {400, 100, 300, 300});
  first.helper()->becomeFirstWindow();
  second.helper()->becomeFirstWindow();
  pressIn(*first.native, platform::EventType::rightMouseDown);
  EXPECT_THAT(first.host->clicks, IsEmpty());
  pressIn(*second.native, platform::EventType::rightMouseDown);
  EXPECT_EQ(second.host->clicks.size(), 1u);
}

class FocusableControl final : public platform::NSControl {
 public:
  bool acceptsFirstResponder() override { return true; }
};

TEST_F(MonitorsTest, PlainKeysThatNothingCanTakeAreSwallowed) {
  struct Row {
    const char* name;
    std::uint16_t keyCode;
    std::uint64_t modifiers;
    bool inputable;
    std::shared_ptr<NSView> focus;
    bool passes;
    bool hasDelegate = true;
  };
  constexpr std::uint64_t kArrow = ModifierFlag::kNumericPad | ModifierFlag::kFunction;
  const auto text = std::make_shared<platform::NSTextView>();
  for (const Row& row :
       {Row{"the host takes typing", KeyCode::kA, 0, true, nullptr, true},
        Row{"the host takes none", KeyCode::kA, 0, false, nullptr, false},
        Row{"a text has the focus", KeyCode::kA, 0, false, text, true},
        Row{"a control has the focus", KeyCode::kA, 0, false, std::make_shared<FocusableControl>(), true},
        Row{"escape", KeyCode::kEscape, 0, false, nullptr, true},
        Row{"Shift held", KeyCode::kA, ModifierFlag::kShift, false, nullptr, true},
        Row{"Caps Lock", KeyCode::kA, ModifierFlag::kCapsLock, false, nullptr, true},
        Row{"arrow", KeyCode::kLeftArrow, kArrow, false, nullptr, true},
        Row{"nobody to ask", KeyCode::kA, 0, false, nullptr, true, false}}) {
    SCOPED_TRACE(row.name);
    const auto bound = show("main");
    bound.host->inputable = row.inputable;
    if (!row.hasDelegate) bound.helper()->setDelegate({});
    if (row.focus) {
      bound.native->contentView()->addSubview(row.focus);
      ASSERT_TRUE(bound.native->makeFirstResponder(row.focus));
    }
    int passed = 0;
    const auto monitor =
        NSApplication::shared().addLocalMonitor(eventMask(platform::EventType::keyDown), [&](const auto& event) {
          ++passed;
          return event;
        });
    desktop.user().key(row.keyCode, "x", row.modifiers);
    EXPECT_EQ(passed, row.passes ? 1 : 0);
    NSApplication::shared().removeMonitor(monitor);
    bound.native->close();
  }
}

TEST_F(MonitorsTest, AKeyPanelsShortcutTakesAPlainKeyAlsoFromAHostThatTakesTyping) {
  struct Shortcut final : NSView {
    bool performKeyEquivalent(const platform::EventPointer& event) override { return event->characters == "a"; }
  };
  const auto bound = show("main");
  const auto panel = platform::NSPanel::make({700, 100, 100, 100}, kOrdinaryStyle);
  const auto view = std::make_shared<HostView>();
  panel->setContentView(view);
  view->addSubview(std::make_shared<Shortcut>());
  panel->makeFirstResponder(view);
  panel->makeKeyAndOrderFront(nullptr);
  desktop.settle();
  ASSERT_TRUE(bound.native->isMainWindow());
  desktop.user().key(KeyCode::kA, "a");
  desktop.user().key(KeyCode::kV, "v");
  EXPECT_EQ(view->keys, "v");
}

TEST_F(MonitorsTest, WithoutTheHelperEventsPass) {
  const auto bound = showSized("main", {200, 100, 800, 600});
  bound.host->inputable = false;
  bound.host->consumesClicks = true;
  bound.host->helper = nullptr;
  desktop.user().click({300, 300}, 2);
  desktop.user().key(KeyCode::kA, "a");
  EXPECT_EQ(bound.view().mouseDowns, 2);
  EXPECT_EQ(bound.view().keys, "a");
}

TEST_F(MonitorsTest, AKeyPressOfTheRightArrowIsMadeFromNothing) {
  const auto bound = show("main");
  bound.helper()->generateRightArrowKey();
  EXPECT_THAT(host->keys, ElementsAre("key 124 [ ] 0", "key 124 [ ] 1"));
  EXPECT_EQ(bound.view().keys, "\uF703");
}

TEST_F(MonitorsTest, ColoursComeFromHexadecimal) {
  const auto helper = show("main").helper();
  const platform::Color color = helper->nsColorFromHex(0x336699, 0.5);
  EXPECT_NEAR(color.red, 0.2, 1e-12);
  EXPECT_NEAR(color.green, 0.4, 1e-12);
  EXPECT_NEAR(color.blue, 0.6, 1e-12);
  EXPECT_EQ(color.alpha, 0.5);
  EXPECT_EQ(helper->nsColorFromHex(-1, 1), (platform::Color{1, 1, 1, 1}));
}

}  // namespace
}  // namespace veltrik
