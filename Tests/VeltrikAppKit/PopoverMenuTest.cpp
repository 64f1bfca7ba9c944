#include <stdexcept>

#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Protocols/VeltrikPopoverMenuItemProtocol.h"

namespace veltrik {
namespace {

using platform::port::MenuMark;

class Item final : public VeltrikPopoverMenuItemProtocol {
 public:
  explicit Item(std::string title, std::string state = "", std::function<void()> handler = {})
      : title_(std::move(title)), state_(std::move(state)), handler_(std::move(handler)) {}
  std::string title() const override { return title_; }
  std::string state() const override { return state_; }
  bool isSeperator() const override { return title_ == "-"; }
  std::function<void()> handler() const override { return handler_; }

 private:
  std::string title_, state_;
  std::function<void()> handler_;
};

class PopoverMenuTest : public PluginTest {
 protected:
  using Items = std::vector<std::shared_ptr<VeltrikPopoverMenuItemProtocol>>;

  std::shared_ptr<Item> noting(const std::string& title) {
    return std::make_shared<Item>(title, "", [this, title] { chosen.push_back(title); });
  }
  /// The host answers a right click by a menu; `then` is what the user does with it.
  void rightClick(const BoundWindow& bound, const Items& items, Point at, const std::function<void()>& then) {
    bound.host->consumesClicks = true;
    bound.host->reactions["mouseRightClick"] = [&bound, items] { bound.helper()->showPopoverMenuWithItems(items); };
    desktop.user().together([&] {
      desktop.user().click(at, 1, headless::Button::right);
      desktop.user().then(then);
    });
  }
  std::vector<std::string> chosen;
};

TEST_F(PopoverMenuTest, OnlyOnIsACheckMarkAndALineWithoutAHandlerMayBeChosen) {
  const auto bound = show("main");
  const Items items{std::make_shared<Item>("checked", "on"), std::make_shared<Item>("off", "off"),
                    std::make_shared<Item>("upper case", "ON"), std::make_shared<Item>("empty", "")};
  rightClick(bound, items, {300, 350}, [&] {
    std::vector<MenuMark> marks;
    for (const auto& entry : desktop.menus()->open()->entries) marks.push_back(entry.mark);
    EXPECT_THAT(marks, ElementsAre(MenuMark::check, MenuMark::none, MenuMark::none, MenuMark::none));
    EXPECT_TRUE(desktop.menus()->choose("off"));
  });
}

TEST_F(PopoverMenuTest, WithoutAChoiceNothingRunsOrIsLeftBehind) {
  const auto bound = show("main");
  rightClick(bound, {noting("one")}, {300, 350}, [&] { desktop.user().key(platform::KeyCode::kEscape); });
  EXPECT_THAT(bound.view().subviews(), IsEmpty());
  desktop.journal().take();
  bound.helper()->showPopoverMenuWithItems({});
  bound.helper()->showPopoverMenuWithItems({noting("one"), nullptr});
  EXPECT_EQ(desktop.journal().count("menu:"), 0u) << "no lines, or lines of the wrong kind";
  EXPECT_THAT(bound.view().subviews(), IsEmpty());
  EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(PopoverMenuTest, ASecondMenuLeavesNoContainerOfTheFirst) {
  const auto bound = show("main");
  rightClick(bound, {noting("first")}, {300, 350}, [&] {
    desktop.loop().deliver([&] {
      EXPECT_EQ(bound.view().subviews().size(), 1u);
      EXPECT_TRUE(desktop.menus()->choose("second"));
    });
    bound.helper()->showPopoverMenuWithItems({noting("second")});
  });
  EXPECT_THAT(chosen, ElementsAre("second"));
  EXPECT_THAT(bound.view().subviews(), IsEmpty());
}

TEST_F(PopoverMenuTest, WhatIsThrownWhileItIsOpenEndsItAndLeavesNothingBehind) {
  const auto bound = show("main");
  platform::DispatchQueue::main().async([] { throw std::runtime_error("host"); });
  EXPECT_THROW(bound.helper()->showPopoverMenuWithItems({noting("one")}), std::runtime_error);
  EXPECT_EQ(desktop.menus()->open(), nullptr);
  EXPECT_THAT(bound.view().subviews(), IsEmpty());
}

TEST_F(PopoverMenuTest, AHandlerMayCloseItsWindowOrShowTheNextMenu) {
  const auto bound = show("main");
  const auto closing = std::make_shared<Item>("close", "", [&] { bound.helper()->closeWindow(); });
  const auto again = std::make_shared<Item>("again", "", [&] { bound.helper()->showPopoverMenuWithItems({closing}); });
  rightClick(bound, {again}, {300, 350}, [&] {
    desktop.loop().deliver([&] { EXPECT_TRUE(desktop.menus()->choose("close")); });
    EXPECT_TRUE(desktop.menus()->choose("again"));
  });
  EXPECT_TRUE(bound.native->isClosed());
}

}  // namespace
}  // namespace veltrik
