#include "Platform/AppKit/MenuTracking.h"

#include <algorithm>
#include <optional>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

using Items = std::vector<std::shared_ptr<NSMenuItem>>;

port::MenuMark markOf(MenuItemState state) {
  switch (state) {
    case MenuItemState::off:
      return port::MenuMark::none;
    case MenuItemState::on:
      return port::MenuMark::check;
    case MenuItemState::mixed:
      break;
  }
  return port::MenuMark::dash;
}

/// The menu as it is to be shown; an entry's number is its item's place in `items`.
std::vector<port::MenuEntry> entriesOf(const NSMenu& menu, Items& items) {
  std::vector<port::MenuEntry> entries;
  for (const auto& item : menu.items()) {
    if (item->isHidden()) continue;
    entries.push_back({.number = items.size(),
                       .separator = item->isSeparatorItem(),
                       .title = item->title(),
                       .enabled = item->isEnabled(),
                       .mark = markOf(item->state()),
                       .keyEquivalent = item->keyEquivalent(),
                       .modifiers = item->keyEquivalentModifierMask(),
                       .image = item->image(),
                       .children = {}});
    items.push_back(item);
    if (item->submenu()) entries.back().children = entriesOf(*item->submenu(), items);
  }
  return entries;
}

bool contains(const Rect& rect, Point point) {
  return point.x >= rect.x && point.x <= rect.maxX() && point.y >= rect.y && point.y <= rect.maxY();
}

std::optional<Rect> workAreaAt(Point point) {
  const auto screens = NSScreen::screens();
  if (screens.empty()) return std::nullopt;
  const auto found =
      std::ranges::find_if(screens, [point](const auto& screen) { return contains(screen.frame, point); });
  return (found == screens.end() ? screens.front() : *found).visibleFrame;
}

/// A composition isn't carried over the keys that the menu takes: it becomes text.
void endComposition() {
  const auto key = NSApplication::shared().keyWindow();
  if (!key) return;
  if (const auto text = std::dynamic_pointer_cast<NSTextView>(key->firstResponder())) text->unmarkText();
}

}  // namespace

Point menuOrigin(Point wanted, Size size) {
  const auto area = workAreaAt(wanted);
  if (!area) return wanted;
  const double left = wanted.x + size.width <= area->maxX() ? wanted.x : wanted.x - size.width;
  const double top = wanted.y - size.height >= area->y ? wanted.y : wanted.y + size.height;
  return {std::max(area->x, std::min(left, area->maxX() - size.width)),
          std::min(area->maxY(), std::max(top, area->y + size.height))};
}

MenuTracking& MenuTracking::shared() {
  return *NSApplication::shared().menus_;
}

std::shared_ptr<NSMenuItem> MenuTracking::track(const NSMenu& menu, Point onScreen, const NSWindow* window) {
  auto* const machine = Session::current().backend().menus();
  Items items;
  const auto entries = entriesOf(menu, items);
  if (!machine || entries.empty()) return nullptr;
  closeAll();
  endComposition();

  struct Open {
    std::vector<const NSWindow*>& open;
    Open(std::vector<const NSWindow*>& all, const NSWindow* newest) : open(all) { open.push_back(newest); }
    ~Open() { open.pop_back(); }
  } open(open_, window);
  const auto chosen = machine->popUp(entries, [onScreen](Size size) { return menuOrigin(onScreen, size); });
  // The menu took the release of the button that led to it.
  NSApplication::shared().pointer_.forgetButtons();
  return chosen && *chosen < items.size() ? items[*chosen] : nullptr;
}

void MenuTracking::windowLeft(const NSWindow& window) {
  if (std::ranges::find(open_, &window) != open_.end()) closeAll();
}

void MenuTracking::closeAll() {
  if (!open_.empty()) Session::current().backend().menus()->closeMenus();
}

}  // namespace platform
