#include <limits>

#include "Platform/AppKit/NSAlert.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSViewController.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

constexpr std::uint16_t kReturn = 36, kEscape = 53;

class AlertsTest : public PluginTest {
 public:
  using PluginTest::appKit;
  using PluginTest::desktop;
  int confirmed = 0;
  std::function<void()> confirm = [this] {
    ++confirmed;
    EXPECT_FALSE(appKit && appKit->isAppKitAlertPresented()) << "the alert has gone before";
  };

  static std::shared_ptr<NSWindow> key() { return NSApplication::shared().keyWindow(); }
  static std::vector<std::shared_ptr<NSWindow>> windows() { return NSApplication::shared().windows(); }
  void showSheet(const std::optional<std::string>& identifier, const std::string& message = "message") {
    appKit->showSheetAlertWith("title", message, "확인", "취소", identifier, confirm);
    desktop.advance(1);
  }
};

double lowestText(NSWindow& window) {
  double lowest = std::numeric_limits<double>::max();
  for (const auto& view : window.contentView()->subviews())
    if (const auto* text = dynamic_cast<platform::NSTextField*>(view.get()); text && !text->stringValue().empty())
      lowest = std::min(lowest, text->frame().minY());
  return lowest;
}

double firstButtonTop(NSWindow& window) {
  for (const auto& view : window.contentView()->subviews())
    if (dynamic_cast<platform::NSButton*>(view.get())) return view->frame().maxY();
  return 0;
}

TEST_F(AlertsTest, TheConfirmButtonAloneHasTheBlockCalled) {
  struct Row {
    const char* name;
    std::optional<std::string> cancelTitle;
    std::function<void()> act;
    int confirmed;
  };
  const auto press = [this](std::vector<std::uint16_t> codes) {
    return [this, codes] { std::ranges::for_each(codes, [this](auto code) { desktop.user().key(code); }); };
  };
  const Row rows[] = {
      {"confirm", "취소", press({kReturn}), 1},
      {"cancel", "취소", press({kEscape}), 0},
      {"an empty title makes no second button", "", press({kEscape, kReturn}), 1},
      {"no title makes none either", std::nullopt, press({kEscape, kReturn}), 1},
      {"closed in another way", "취소", [] { key()->close(); }, 0},
  };
  const auto main = show("main");
  for (const Row& row : rows) {
    for (const bool isSheet : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.name << (isSheet ? ", a sheet" : ", modal"));
      confirmed = 0;
      const auto act = [&] {
        EXPECT_TRUE(appKit->isAppKitAlertPresented());
        EXPECT_EQ(key()->title(), isSheet ? "" : "MIRELO");
        desktop.user().together(row.act);
      };
      if (isSheet) {
        appKit->showSheetAlertWith("title", "message", "확인", row.cancelTitle, "main", confirm);
        desktop.advance(1);
        act();
      } else {
        later(act);
        appKit->showAlertWith("title", "message", "확인", row.cancelTitle, confirm);
        EXPECT_EQ(confirmed, 0) << "only in the next turn";
      }
      desktop.settle();
      EXPECT_EQ(confirmed, row.confirmed);
      EXPECT_THAT(windows(), ElementsAre(main.native));
    }
  }
}

TEST_F(AlertsTest, AnEmptyBlockIsFine) {
  show("main");
  later([&] { desktop.user().key(kReturn); });
  appKit->showAlertWith("", "", "", std::nullopt, nullptr);
  appKit->showSheetAlertWith("", "", "", std::nullopt, std::nullopt, nullptr);
  desktop.user().key(kReturn);
  EXPECT_EQ(windows().size(), 1U);
}

TEST_F(AlertsTest, ASheetFindsItsWindow) {
  const auto first = show("first"), second = show("second");
  struct Row {
    const char* name;
    std::optional<std::string> identifier;
    NSWindow* parent;
  };
  for (const Row& row : {Row{"by its identifier", "first", first.native.get()},
                         Row{"none of the identifier: the key window", "third", second.native.get()},
                         Row{"no identifier: the key window", std::nullopt, second.native.get()}}) {
    SCOPED_TRACE(row.name);
    second.native->makeKey();
    showSheet(row.identifier);
    const auto sheet = row.parent->attachedSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(first.native->isInputBlocked(), row.parent == first.native.get());
    EXPECT_EQ(second.native->isInputBlocked(), row.parent == second.native.get());
    sheet->makeKey();
    desktop.user().key(kEscape);
    desktop.settle();
    EXPECT_FALSE(row.parent->isInputBlocked());
  }
}

TEST_F(AlertsTest, WithoutAnyWindowForItASheetIsNotShown) {
  showSheet("nobody");
  EXPECT_THAT(windows(), IsEmpty());
  desktop.user().key(kReturn);
  desktop.settle();
  EXPECT_EQ(confirmed, 0);
}

TEST_F(AlertsTest, ASheetIsAsMuchHigherAsItsTextRunsIntoItsButtons) {
  const auto main = show("main");
  struct Row {
    const char* line;
    int times;
    bool overlaps;
  };
  for (const Row& row : {Row{"한 줄", 1, false}, Row{"글자가 많아서 여러 줄이 되는 설명입니다. ", 12, true}}) {
    SCOPED_TRACE(row.line);
    std::string message;
    for (int i = 0; i < row.times; ++i) message += row.line;
    const auto same = platform::NSAlert::make();
    same->setMessageText("title");
    same->setInformativeText(message);
    same->addButton("확인");
    same->addButton("취소");
    NSWindow& lone = *same->window();
    const double overlap = std::max(0.0, firstButtonTop(lone) - lowestText(lone));
    const double height = lone.frame().height;
    showSheet("main", message);
    NSWindow& sheet = *main.native->attachedSheet();
    EXPECT_EQ(sheet.frame().height, height + overlap);
    EXPECT_GE(lowestText(sheet), firstButtonTop(sheet));
    EXPECT_EQ(overlap > 0, row.overlaps);
    sheet.close();
  }
}

TEST_F(AlertsTest, TellsAlertsFromTheHostsOwnWindows) {
  const auto main = show("main");
  const auto modal = [&](const std::shared_ptr<NSWindow>& window) {
    bool presented = false;
    later([&] {
      presented = appKit->isAppKitAlertPresented();
      window->orderOut();
    });
    NSApplication::shared().runModal(window);
    return presented;
  };
  EXPECT_FALSE(appKit->isAppKitAlertPresented()) << "an ordinary window";
  showSheet("main");
  EXPECT_TRUE(appKit->isAppKitAlertPresented()) << "a sheet";
  desktop.windows().userDeactivatesAll();
  desktop.advance(1);
  EXPECT_FALSE(appKit->isAppKitAlertPresented()) << "no key window";
  main.native->attachedSheet()->close();
  const auto plain = makeNativeWindow();
  EXPECT_TRUE(modal(plain)) << "a modal window";
  plain->setContentViewController(std::make_shared<platform::NSViewController>(plain->contentView()));
  EXPECT_FALSE(modal(plain)) << "one with a content view controller";
  const auto bound = bind("bound");
  EXPECT_FALSE(modal(bound.native)) << "one that a helper manages";
  main.native->makeKeyAndOrderFront(nullptr);
  bound.helper()->convertAsSheetWindowWithParentWindowHelper(main.helper());
  desktop.advance(1);
  EXPECT_EQ(main.native->attachedSheet(), bound.native);
  EXPECT_FALSE(appKit->isAppKitAlertPresented()) << "a sheet that a helper manages";
}

TEST_F(AlertsTest, WhateverEndsASheetNothingIsConfirmedAndNothingStays) {
  struct Row {
    const char* name;
    std::function<void(AlertsTest&, BoundWindow&)> end;
  };
  const Row rows[] = {
      {"its parent closes", [](AlertsTest&, BoundWindow& main) { main.native->close(); }},
      {"the host closes it", [](AlertsTest&, BoundWindow& main) { main.helper()->closeChildAlert(); }},
      {"the host closes it while another waits",
       [](AlertsTest& t, BoundWindow& main) {
         t.showSheet("main");
         main.helper()->closeChildAlert();
         t.desktop.advance(1);
         main.helper()->closeChildAlert();
       }},
      {"the host lets go of the plug-in, then cancels",
       [](AlertsTest& t, BoundWindow&) {
         t.appKit.reset();
         t.desktop.user().key(kEscape);
       }},
      {"the parent closes as it loses the keyboard to it",
       [](AlertsTest& t, BoundWindow& main) {
         main.helper()->closeChildAlert();
         main.host->reactions["windowDidResignKey"] = [&] { main.native->close(); };
         t.showSheet("main");
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    if (!appKit) appKit = VeltrikAppKit::make();
    auto main = show("main");
    showSheet("main");
    row.end(*this, main);
    desktop.advance(1);
    main.native->close();
    desktop.settle();
    EXPECT_THAT(windows(), IsEmpty());
    EXPECT_EQ(confirmed, 0);
  }
}

TEST_F(AlertsTest, ABlockMayShowTheNextAlert) {
  show("main");
  std::vector<std::string> steps;
  later([&] { desktop.user().key(kReturn); });
  appKit->showAlertWith("1", "", "OK", "Cancel", [&] {
    steps.push_back("first");
    later([&] { desktop.user().key(kReturn); });
    appKit->showAlertWith("2", "", "OK", "Cancel", [&] {
      steps.push_back("second");
      appKit.reset();
    });
  });
  desktop.settle();
  desktop.settle();
  EXPECT_THAT(steps, ElementsAre("first", "second"));
  EXPECT_EQ(windows().size(), 1U);
}

}  // namespace
}  // namespace veltrik
