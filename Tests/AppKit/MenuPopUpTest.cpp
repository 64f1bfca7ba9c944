#include "Platform/AppKit/MenuTracking.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/Foundation/Timer.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

using headless::Button;

TEST_F(AppKitTest, AMenuStaysInTheWorkAreaOfThePointersScreen) {
  // The second screen stands right of the first and lower, with a panel at its bottom.
  desktop.setScreens({{.frame = {0, 0, 1000, 800}, .visibleFrame = {0, 0, 1000, 776}, .scale = 1},
                      {.frame = {1000, -200, 600, 500}, .visibleFrame = {1000, -160, 600, 460}, .scale = 2}});
  struct Row {
    const char* name;
    Point wanted;
    Size size;
    Point topLeft;
  };
  for (const Row& row : {Row{"where it was asked for", {300, 400}, {100, 200}, {300, 400}},
                         Row{"left of the pointer", {950, 400}, {100, 200}, {850, 400}},
                         Row{"above the pointer", {300, 100}, {100, 200}, {300, 300}},
                         Row{"in the corner", {990, 10}, {100, 200}, {890, 210}},
                         Row{"on the other screen", {1005, 200}, {100, 200}, {1005, 200}},
                         Row{"not across the edge", {995, 400}, {100, 100}, {895, 400}},
                         Row{"above the lower panel", {1100, -150}, {100, 50}, {1100, -100}},
                         Row{"below the upper panel", {300, 790}, {100, 200}, {300, 776}},
                         Row{"taller than the screen", {300, 400}, {100, 2000}, {300, 776}},
                         Row{"wider than the screen", {300, 400}, {3000, 100}, {0, 400}}})
    EXPECT_EQ(menuOrigin(row.wanted, row.size), row.topLeft) << row.name;
}

class CloseLog final : public NSMenuDelegate {
 public:
  explicit CloseLog(std::vector<std::string>& lines) : lines_(lines) {}
  void menuDidClose(NSMenu& menu) override { lines_.push_back("closed " + menu.title()); }

 private:
  std::vector<std::string>& lines_;
};

class MenuPopUpTest : public AppKitTest {
 protected:
  std::shared_ptr<NSMenu> makeMenu(const std::string& title, const std::vector<std::string>& items) {
    auto menu = std::make_shared<NSMenu>(title);
    menu->setDelegate(closeLog);
    for (const auto& item : items) menu->addItem(makeItem(item));
    return menu;
  }
  std::shared_ptr<NSMenuItem> makeItem(const std::string& title) {
    auto item = std::make_shared<NSMenuItem>(title, "act:", "");
    item->setTarget(closeLog, [this](NSMenuItem& chosen) { lines.push_back("act " + chosen.title()); });
    return item;
  }
  /// Queues what the user does once the menu is open, and opens it.
  bool popUp(NSMenu& menu, const std::function<void()>& actions) {
    bool chosen = false;
    user().together([&] {
      user().then([&] { chosen = menu.popUp({300, 400}, nullptr); });
      actions();
    });
    EXPECT_EQ(desktop.menus()->open(), nullptr);
    return chosen;
  }
  Point row(std::size_t index) { return desktop.menus()->open()->pointOf(index); }

  std::vector<std::string> lines;
  std::shared_ptr<CloseLog> closeLog = std::make_shared<CloseLog>(lines);
};

TEST_F(MenuPopUpTest, ItCanBeLeftWithoutAChoice) {
  const auto menu = makeMenu("menu", {"one"});
  EXPECT_FALSE(popUp(*menu, [&] { user().key(KeyCode::kEscape); }));
  EXPECT_FALSE(popUp(*menu, [&] { user().press(Point{10, 10}); }));
  user().release();
  EXPECT_FALSE(popUp(*menu, [&] { user().then([&] { application().stop(); }); }));
  EXPECT_THAT(lines, ElementsAre("closed menu", "closed menu", "closed menu"));
}

TEST_F(MenuPopUpTest, TheKeyboardStepsOverWhatCannotBeChosen) {
  const auto menu = makeMenu("menu", {"one"});
  menu->addItem(NSMenuItem::separatorItem());
  const auto dead = std::make_shared<NSMenuItem>("without a target", "act:", "");
  menu->addItem(dead);
  menu->addItem(makeItem("last"));
  EXPECT_TRUE(popUp(*menu, [&] {
    for (int i = 0; i < 2; ++i) user().key(KeyCode::kDownArrow);
    user().key(KeyCode::kReturn);
  }));
  EXPECT_THAT(lines, ElementsAre("closed menu", "act last"));
}

TEST_F(MenuPopUpTest, HiddenItemsAreLeftOutAndSubmenusComeAlong) {
  const auto menu = makeMenu("menu", {"hidden", "shown", "parent"});
  menu->items()[0]->setHidden(true);
  menu->items()[1]->setState(MenuItemState::on);
  menu->items()[2]->setSubmenu(makeMenu("below", {"deep"}));
  EXPECT_TRUE(popUp(*menu, [&] {
    user().then([&] {
      const auto& shown = desktop.menus()->open()->entries;
      ASSERT_EQ(shown.size(), 2u);
      EXPECT_EQ(shown[0].title, "shown");
      EXPECT_EQ(shown[0].mark, port::MenuMark::check);
      ASSERT_EQ(shown[1].children.size(), 1u);
      EXPECT_FALSE(desktop.menus()->choose("hidden"));
      EXPECT_TRUE(desktop.menus()->choose("deep"));
    });
  }));
  EXPECT_THAT(lines, ElementsAre("closed menu", "act deep"));
}

TEST_F(MenuPopUpTest, TheReleaseOfTheOpeningPressChoosesNothing) {
  const auto window = showWindow();
  const auto menu = makeMenu("menu", {"one", "two"});
  application().addLocalMonitor(eventMask(EventType::rightMouseDown), [&](const EventPointer& event) {
    menu->popUp(event->locationInWindow, window->contentView().get());
    return EventPointer();
  });
  std::vector<EventType> moves;
  application().addLocalMonitor(kAnyEventMask, [&](const EventPointer& event) {
    moves.push_back(event->type);
    return event;
  });
  user().together([&] {
    user().press({200, 200}, Button::right);
    user().then([&] { user().moveTo(row(0)); });
    user().release(Button::right);
    user().then([&] {
      EXPECT_NE(desktop.menus()->open(), nullptr);
      user().press(row(1));
      user().release();
    });
  });
  EXPECT_THAT(lines, ElementsAre("closed menu", "act two"));
  moves.clear();
  user().moveTo({210, 210});
  EXPECT_THAT(moves, ElementsAre(EventType::mouseMoved)) << "no button is down any more";
}

TEST_F(MenuPopUpTest, TheQueueAndTimersAreServedMeanwhile) {
  const auto menu = makeMenu("menu", {"one"});
  DispatchQueue::main().async([&] { lines.emplace_back("block"); });
  const auto timer = Timer::scheduledTimer(0.2, false, [&](Timer&) {
    lines.emplace_back("timer");
    desktop.menus()->leave();
  });
  EXPECT_FALSE(popUp(*menu, [] {}));
  EXPECT_THAT(lines, ElementsAre("block", "timer", "closed menu"));
}

TEST_F(MenuPopUpTest, ItGoesWithItsWindow) {
  struct Row {
    const char* name;
    void (*leave)(NSWindow&);
  };
  for (const Row& way : {Row{"closed", [](NSWindow& window) { window.close(); }},
                         Row{"hidden", [](NSWindow& window) { window.orderOut(); }},
                         Row{"minimised", [](NSWindow& window) { window.miniaturize(); }}}) {
    SCOPED_TRACE(way.name);
    lines.clear();
    const auto window = showWindow();
    auto menu = makeMenu("menu", {"one"});
    DispatchQueue::main().async([&] { way.leave(*window); });
    menu->popUp({10, 10}, window->contentView().get());
    EXPECT_THAT(lines, ElementsAre("closed menu"));
  }
}

TEST_F(MenuPopUpTest, WhatCannotBeShownClosesAtOnce) {
  const auto hidden = makeWindow();
  NSView loose;
  makeMenu("empty", {})->popUp({1, 1}, nullptr);
  makeMenu("in a hidden window", {"one"})->popUp({1, 1}, hidden->contentView().get());
  makeMenu("in no window", {"one"})->popUp({1, 1}, &loose);
  EXPECT_THAT(lines, ElementsAre("closed empty", "closed in a hidden window", "closed in no window"));
}

TEST_F(MenuPopUpTest, ASyllableInTheMakingBecomesTextOnce) {
  const auto window = showWindow();
  const auto text = std::make_shared<NSTextView>(Rect{0, 0, 200, 100});
  window->contentView()->addSubview(text);
  window->makeFirstResponder(text);
  desktop.inputMethod().compose(u"한");
  ASSERT_TRUE(text->hasMarkedText());
  const auto menu = makeMenu("menu", {"one"});
  popUp(*menu, [&] { user().key(KeyCode::kEscape); });
  EXPECT_FALSE(text->hasMarkedText());
  EXPECT_EQ(text->textStorage().string(), u"한");
  user().type("a");
  EXPECT_EQ(text->textStorage().string(), u"한a");
}

TEST(MenuWithoutMachineTest, ClosesAtOnce) {
  headless::HeadlessBackend desktop({.hasMenus = false});
  const Session session(desktop);
  std::vector<std::string> lines;
  const auto log = std::make_shared<CloseLog>(lines);
  const auto menu = std::make_shared<NSMenu>("menu");
  menu->setDelegate(log);
  menu->addItem(std::make_shared<NSMenuItem>("one", "act:", ""));
  EXPECT_FALSE(menu->popUp({1, 1}, nullptr));
  EXPECT_THAT(lines, ElementsAre("closed menu"));
}

}  // namespace
}  // namespace platform
