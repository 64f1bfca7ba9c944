#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSTextView.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using platform::NSEvent;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

class MonitorsTest : public PluginTest {
 protected:
  /// Host points are native points by 100 / 77, from the top left.
  static void expectPoint(Point got, Point wanted) {
    EXPECT_NEAR(got.x, wanted.x, 1e-9);
    EXPECT_NEAR(got.y, wanted.y, 1e-9);
  }
  BoundWindow showSized(const std::string& id, const Rect& frame, bool painted = false) {
    const auto hostWindow = std::make_shared<TestHostWindow>(id);
    if (painted) hostWindow->titleColor = platform::Color{};
    auto bound = show(hostWindow);
    bound.native->setFrame(frame, true);
    return bound;
  }
};

TEST_F(MonitorsTest, ADoubleClickIsReportedInHostPoints) {
  const auto bound = showSized("main", {200, 100, 800, 600});
  desktop.user().click({277, 200}, 2);
  ASSERT_EQ(bound.host->clicks.size(), 1u);
  expectPoint(bound.host->clicks[0], {100, 649.3506493506493});
}

TEST_F(MonitorsTest, OnlyADoubleClickIsMeasuredFromBelowThePaintedTitleBar) {
  const auto bound = showSized("main", {200, 100, 800, 600}, true);
  desktop.user().click({277, 200}, 2);
  desktop.user().click({277, 200}, 1, headless::Button::right);
  ASSERT_EQ(bound.host->clicks.size(), 2u);
  expectPoint(bound.host->clicks[0], {100, 611.6883116883117});  // (571 - 100) x 100 / 77
  expectPoint(bound.host->clicks[1], {100, 649.3506493506493});  // (600 - 100) x 100 / 77
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
  for (const auto button : {headless::Button::left, headless::Button::right}) {
    auto event = std::make_shared<NSEvent>();
    event->type =
        button == headless::Button::left ? platform::EventType::leftMouseDown : platform::EventType::rightMouseDown;
    event->clickCount = 2;
    event->windowNumber = foreign->windowNumber();
    bound.helper()->becomeFirstWindow();
    ASSERT_TRUE(bound.native->isMainWindow());
    NSApplication::shared().sendEvent(event);
  }
  EXPECT_THAT(bound.host->clicks, IsEmpty());
}

TEST_F(MonitorsTest, TheMonitorsLiveWhileTheWindowIsMain) {
  const auto first = showSized("first", {0, 100, 300, 300});
  const auto second = showSized("second", {400, 100, 300, 300});
  first.helper()->becomeFirstWindow();
  second.helper()->becomeFirstWindow();
  auto event = std::make_shared<NSEvent>();
  event->type = platform::EventType::rightMouseDown;
  event->windowNumber = first.native->windowNumber();
  NSApplication::shared().sendEvent(event);
  EXPECT_THAT(first.host->clicks, IsEmpty());
  event->windowNumber = second.native->windowNumber();
  NSApplication::shared().sendEvent(event);
  EXPECT_EQ(second.host->clicks.size(), 1u);
}

enum class Focus { hostView, text, control };

struct KeyRow {
  const char* name;
  std::uint16_t keyCode;
  std::uint64_t modifiers;
  bool inputable;
  Focus focus;
  bool passes;
};

class KeyMonitorTest : public MonitorsTest, public testing::WithParamInterface<KeyRow> {};

class FocusableControl final : public platform::NSControl {
 public:
  bool acceptsFirstResponder() override { return true; }
};

TEST_P(KeyMonitorTest, SwallowsPlainKeysThatNothingCanTake) {
  const auto bound = show("main");
  bound.host->inputable = GetParam().inputable;
  if (GetParam().focus != Focus::hostView) {
    const std::shared_ptr<NSView> view =
        GetParam().focus == Focus::text ? std::static_pointer_cast<NSView>(std::make_shared<platform::NSTextView>())
                                        : std::make_shared<FocusableControl>();
    bound.native->contentView()->addSubview(view);
    ASSERT_TRUE(bound.native->makeFirstResponder(view));
  }
  int passed = 0;
  NSApplication::shared().addLocalMonitor(eventMask(platform::EventType::keyDown), [&](const auto& event) {
    ++passed;
    return event;
  });
  desktop.user().key(GetParam().keyCode, "x", GetParam().modifiers);
  EXPECT_EQ(passed, GetParam().passes ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, KeyMonitorTest,
    testing::Values(KeyRow{"HostTakesTyping", KeyCode::kA, 0, true, Focus::hostView, true},
                    KeyRow{"HostTakesNone", KeyCode::kA, 0, false, Focus::hostView, false},
                    KeyRow{"TextHasTheFocus", KeyCode::kA, 0, false, Focus::text, true},
                    KeyRow{"ControlHasTheFocus", KeyCode::kA, 0, false, Focus::control, true},
                    KeyRow{"Escape", KeyCode::kEscape, 0, false, Focus::hostView, true},
                    KeyRow{"ShiftHeld", KeyCode::kA, ModifierFlag::kShift, false, Focus::hostView, true},
                    KeyRow{"CapsLock", KeyCode::kA, ModifierFlag::kCapsLock, false, Focus::hostView, true},
                    KeyRow{"Arrow", KeyCode::kLeftArrow, ModifierFlag::kNumericPad | ModifierFlag::kFunction, false,
                           Focus::hostView, true}),
    [](const auto& row) { return row.param.name; });

TEST_F(MonitorsTest, WithoutADelegateKeysGoOn) {
  const auto bound = show("main");
  bound.helper()->setDelegate({});
  desktop.user().key(KeyCode::kA, "a");
  EXPECT_EQ(bound.view().keys, "a");
}

TEST_F(MonitorsTest, AKeyPressOfTheRightArrowIsMadeFromNothing) {
  const auto bound = show("main");
  std::vector<std::pair<platform::EventType, int>> seen;
  NSApplication::shared().addLocalMonitor(platform::kAnyEventMask, [&](const auto& event) {
    seen.emplace_back(event->type, event->keyCode);
    return event;
  });
  bound.helper()->generateRightArrowKey();
  EXPECT_THAT(seen,
              ElementsAre(std::pair(platform::EventType::keyDown, 124), std::pair(platform::EventType::keyUp, 124)));
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
