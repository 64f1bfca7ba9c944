#include <stdexcept>

#include "Platform/AppKit/NSMenu.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class ChangeLog final : public NSMenuObserver {
 public:
  void menuItemsChanged(NSMenu& menu) override { lines.push_back("items of " + menu.title()); }
  void menuItemChanged(NSMenuItem& item) override { lines.push_back("item " + item.title()); }
  std::vector<std::string> lines;
};

class MenuModelTest : public AppKitTest {
 protected:
  std::shared_ptr<NSMenuItem> addItem(NSMenu& menu, const std::string& title) {
    auto item = std::make_shared<NSMenuItem>(title, "act:", "");
    item->setTarget(target, [this, title](NSMenuItem&) { performed.push_back(title); });
    menu.addItem(item);
    return item;
  }
  std::shared_ptr<int> target = std::make_shared<int>(0);
  std::vector<std::string> performed;
};

TEST_F(MenuModelTest, WhatTheUserCanChoose) {
  struct Row {
    const char* name;
    bool autoenables, hasTarget, hasSubmenu, setEnabled, enabled, acts;
  };
  for (const Row& row : {Row{"by its target", true, true, false, false, true, true},
                         Row{"target gone", true, false, false, true, false, false},
                         Row{"a submenu needs no target", true, false, true, true, true, false},
                         Row{"submenu switched off", true, true, true, false, false, false},
                         Row{"said to be", false, true, false, true, true, true},
                         Row{"said not to be", false, true, false, false, false, false},
                         Row{"without a target it does nothing", false, false, false, true, true, false}}) {
    SCOPED_TRACE(row.name);
    target = std::make_shared<int>(0);
    performed.clear();
    NSMenu menu("menu");
    menu.setAutoenablesItems(row.autoenables);
    const auto item = addItem(menu, "item");
    if (row.hasSubmenu) item->setSubmenu(std::make_shared<NSMenu>("below"));
    item->setEnabled(row.setEnabled);
    if (!row.hasTarget) target.reset();
    EXPECT_EQ(item->isEnabled(), row.enabled);
    EXPECT_EQ(item->perform(), row.acts);
    EXPECT_EQ(performed.size(), row.acts ? 1u : 0u);
  }
}

TEST_F(MenuModelTest, ASeparatorIsNeverChosen) {
  NSMenu menu("menu");
  menu.setAutoenablesItems(false);
  const auto line = NSMenuItem::separatorItem();
  line->setTarget(target, [this](NSMenuItem&) { performed.emplace_back("line"); });
  line->setEnabled(true);
  menu.addItem(line);
  EXPECT_FALSE(line->isEnabled());
  EXPECT_FALSE(line->perform());
  EXPECT_THAT(performed, IsEmpty());
}

TEST_F(MenuModelTest, ObserversHearOfEachChangeOnceFromAnyDepth) {
  const auto menu = std::make_shared<NSMenu>("menu");
  const auto below = std::make_shared<NSMenu>("below");
  const auto log = std::make_shared<ChangeLog>();
  menu->addObserver(log);
  const auto item = addItem(*menu, "top");
  item->setSubmenu(below);
  const auto deep = addItem(*below, "deep");
  EXPECT_THAT(log->lines, ElementsAre("items of menu", "items of menu", "items of below"));
  log->lines.clear();
  for (int twice = 0; twice < 2; ++twice) {
    deep->setTitle("deeper");
    deep->setState(MenuItemState::on);
    item->setHidden(true);
    item->setEnabled(false);
  }
  EXPECT_THAT(log->lines, ElementsAre("item deeper", "item deeper", "item top", "item top"));
  log->lines.clear();
  item->setSubmenu(nullptr);
  deep->setTitle("unheard");
  EXPECT_THAT(log->lines, ElementsAre("items of menu"));
}

TEST_F(MenuModelTest, MenusFormATree) {
  const auto menu = std::make_shared<NSMenu>("menu");
  const auto below = std::make_shared<NSMenu>("below");
  const auto item = addItem(*menu, "item");
  item->setSubmenu(below);
  const auto deep = addItem(*below, "deep");
  const auto other = addItem(*menu, "other");
  EXPECT_THROW(deep->setSubmenu(menu), std::logic_error);   // round in a circle
  EXPECT_THROW(deep->setSubmenu(below), std::logic_error);  // on itself
  EXPECT_THROW(other->setSubmenu(below), std::logic_error);
  EXPECT_THROW(below->addItem(item), std::logic_error);
}

TEST_F(MenuModelTest, AnItemMayChangeItsTargetWhileItActs) {
  NSMenu menu("menu");
  const auto item = std::make_shared<NSMenuItem>("item", "act:", "");
  auto owned = std::make_shared<std::string>("first");
  item->setTarget(owned, [this, owned = std::weak_ptr(owned), kept = std::string(100, 'x')](NSMenuItem& chosen) {
    chosen.setTarget({}, {});
    performed.push_back(kept.substr(0, 1));
  });
  menu.addItem(item);
  EXPECT_TRUE(item->perform());
  EXPECT_FALSE(item->perform());
  EXPECT_THAT(performed, ElementsAre("x"));
}

}  // namespace
}  // namespace platform
