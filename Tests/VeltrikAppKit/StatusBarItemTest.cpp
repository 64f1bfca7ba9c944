#include <cstdint>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/NSStatusBar.h"
#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Protocols/VeltrikStatusBarItemProtocol.h"

namespace veltrik {
namespace {

using headless::HeadlessTray;
using platform::port::TrayMenuItem;

class StatusBarItemTest : public PluginTest {
 protected:
  HeadlessTray& tray() { return *desktop.tray(); }
  const HeadlessTray::Item& shown(std::size_t index = 0) { return *tray().items().at(index); }
  const std::vector<TrayMenuItem>& menu(std::size_t index = 0) {
    desktop.settle();
    return shown(index).menu;
  }
  /// The user chooses a line; what the host heard.
  std::vector<std::string> choose(const std::string& title, std::size_t index = 0) {
    desktop.settle();
    tray().choose(shown(index), title);
    desktop.settle();
    return std::exchange(heard, {});
  }
  void add(const std::string& title, std::int32_t tag, const std::string& keyCode = "") {
    item->addMenuItemWithTitle(title, tag, keyCode, [this, title] { heard.push_back(title); });
  }

  std::vector<std::string> heard;
  std::shared_ptr<VeltrikStatusBarItemProtocol> item = appKit->createStatusBarItemWithImageName("appKit_statusBar");
};

TEST_F(StatusBarItemTest, TagsFindTheFirstLineOnly) {
  add("first", 7);
  add("second", 7);
  add("other", -7);
  const auto state = [&](std::size_t line) { return std::pair(menu()[line].isEnabled, menu()[line].isVisible); };
  item->updateStatusBarItemEnabled(false, 7);
  EXPECT_EQ(state(0), std::pair(false, true));
  EXPECT_EQ(state(1), std::pair(true, true));
  item->updateStatusBarItemHidden(true, 7);
  EXPECT_EQ(state(0), std::pair(false, false));
  item->updateStatusBarItemEnabled(true, 7);
  item->updateStatusBarItemHidden(false, 7);
  item->updateStatusBarItemHidden(true, -7);
  EXPECT_EQ(state(0), std::pair(true, true));
  EXPECT_EQ(state(1), std::pair(true, true));
  EXPECT_EQ(state(2), std::pair(true, false));
  const auto before = menu();
  item->updateStatusBarItemEnabled(false, 99);
  item->updateStatusBarItemHidden(true, 99);
  EXPECT_EQ(menu(), before);
  // The table keeps the second one's action, so the first one has none left.
  EXPECT_EQ(choose("first"), std::vector<std::string>{});
  EXPECT_EQ(choose("second"), std::vector<std::string>{"second"});
}

TEST_F(StatusBarItemTest, ALineThatWasDisabledOrHiddenMeanwhileIsNotRun) {
  add("line", 1);
  desktop.settle();
  for (const auto update : {&VeltrikStatusBarItemProtocol::updateStatusBarItemEnabled,
                            &VeltrikStatusBarItemProtocol::updateStatusBarItemHidden}) {
    const bool takesAway = update == &VeltrikStatusBarItemProtocol::updateStatusBarItemHidden;
    ASSERT_TRUE(tray().choose(shown(), "line"));
    ((*item).*update)(takesAway, 1);
    desktop.settle();
    EXPECT_EQ(heard, std::vector<std::string>{});
    ((*item).*update)(!takesAway, 1);
    EXPECT_EQ(choose("line"), std::vector<std::string>{"line"});
  }
}

TEST_F(StatusBarItemTest, LinesKeepTheirIdentifierAndAMenuGoesOutOnceATurn) {
  for (int tag = 1; tag <= 20; ++tag) add("line " + std::to_string(tag), tag);
  desktop.settle();
  EXPECT_EQ(desktop.journal().count("tray: menu"), 1U);
  const auto first = menu().front().identifier;
  add("one more", 21);
  item->updateStatusBarItemEnabled(false, 1);
  EXPECT_EQ(menu().front().identifier, first);
  std::vector<std::int32_t> identifiers;
  for (const auto& line : menu()) identifiers.push_back(line.identifier);
  std::ranges::sort(identifiers);
  EXPECT_GT(identifiers.front(), 0);
  EXPECT_EQ(std::ranges::adjacent_find(identifiers), identifiers.end());
}

TEST_F(StatusBarItemTest, EachItemHasItsOwnIconWhichGoesWithIt) {
  auto second = appKit->createStatusBarItemWithImageName("");
  ASSERT_EQ(tray().items().size(), 2U);
  second->addMenuItemWithTitle("second's", 1, "", [&] { heard.emplace_back("second's"); });
  add("first's", 1);
  EXPECT_EQ(choose("second's", 1), std::vector<std::string>{"second's"});
  EXPECT_EQ(choose("first's", 0), std::vector<std::string>{"first's"});
  EXPECT_EQ(choose("second's", 0), std::vector<std::string>{});
  item.reset();
  ASSERT_EQ(tray().items().size(), 1U);
  EXPECT_EQ(menu().front().title, "second's");
}

TEST_F(StatusBarItemTest, AHandlerMayLetGoOfItsItem) {
  item->addMenuItemWithTitle("leave", 1, "", [&] { item.reset(); });
  item->addMenuItemWithTitle("no block", 2, "", {});
  EXPECT_EQ(choose("no block"), std::vector<std::string>{});
  EXPECT_EQ(choose("leave"), std::vector<std::string>{});
  EXPECT_TRUE(tray().items().empty());
}

TEST_F(StatusBarItemTest, WithoutAnImageOfTheNameThePlaceIsEmpty) {
  // Linked into a test the plug-in has no bundle, so no name is known.
  EXPECT_TRUE(shown().pictures.empty());
  const auto native = platform::NSStatusBar::system().statusItem(platform::kSquareStatusItemLength);
  const platform::Bitmap small{1, 1, 1, {0xFF000000}}, large{2, 2, 1, std::vector<std::uint32_t>(4)};
  native->button()->setImage(
      std::make_shared<platform::NSImage>(Size{1, 1}, std::vector<platform::Bitmap>{large, small}));
  ASSERT_EQ(shown(1).pictures.size(), 2U);
  EXPECT_EQ(shown(1).pictures.front().pixels, small.pixels);
  native->button()->setImage(nullptr);
  EXPECT_TRUE(shown(1).pictures.empty());
}

}  // namespace
}  // namespace veltrik
