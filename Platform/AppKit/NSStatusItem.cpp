#include "Platform/AppKit/NSStatusItem.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

port::TrayMenuItem::Mark markOf(MenuItemState state) {
  switch (state) {
    case MenuItemState::on:
      return port::TrayMenuItem::Mark::check;
    case MenuItemState::mixed:
      return port::TrayMenuItem::Mark::dash;
    case MenuItemState::off:
      break;
  }
  return port::TrayMenuItem::Mark::none;
}

NSMenuItem* findItem(const NSMenu& menu, const std::function<bool(const NSMenuItem&)>& wanted) {
  for (const auto& item : menu.items()) {
    if (wanted(*item)) return item.get();
    if (NSMenuItem* inside = item->submenu() ? findItem(*item->submenu(), wanted) : nullptr) return inside;
  }
  return nullptr;
}

}  // namespace

void NSStatusBarButton::setImage(std::shared_ptr<NSImage> image) {
  image_ = std::move(image);
  if (shown_) shown_->setPictures(image_ ? image_->representations() : std::vector<Bitmap>());
}

std::shared_ptr<NSStatusItem> NSStatusItem::make(double length) {
  requireMainThread("NSStatusItem::make");
  return std::shared_ptr<NSStatusItem>(new NSStatusItem(length));
}

NSStatusItem::NSStatusItem(double length)
    : length_(length),
      shown_([this]() -> std::unique_ptr<port::TrayItem> {
        port::Tray* tray = Session::current().backend().tray();
        return tray ? tray->makeItem(*this) : nullptr;
      }()),
      button_(shown_.get()) {}

NSStatusItem::~NSStatusItem() = default;

void NSStatusItem::setMenu(std::shared_ptr<NSMenu> menu) {
  menu_ = std::move(menu);
  if (menu_) menu_->addObserver(weak_from_this());
  scheduleUpdate();
}

void NSStatusItem::menuItemsChanged(NSMenu&) {
  scheduleUpdate();
}

void NSStatusItem::menuItemChanged(NSMenuItem&) {
  scheduleUpdate();
}

/// A menu that is built item by item goes out once.
void NSStatusItem::scheduleUpdate() {
  if (!shown_ || std::exchange(updateScheduled_, true)) return;
  DispatchQueue::main().async([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->update();
  });
}

void NSStatusItem::update() {
  updateScheduled_ = false;
  std::map<const NSMenuItem*, std::int32_t> seen;
  auto items = menu_ ? snapshot(*menu_, seen) : std::vector<port::TrayMenuItem>();
  identifiers_ = std::move(seen);
  shown_->setMenu(std::move(items));
}

std::vector<port::TrayMenuItem> NSStatusItem::snapshot(const NSMenu& menu,
                                                       std::map<const NSMenuItem*, std::int32_t>& seen) {
  std::vector<port::TrayMenuItem> items;
  for (const auto& item : menu.items()) items.push_back(snapshot(*item, seen));
  return items;
}

port::TrayMenuItem NSStatusItem::snapshot(const NSMenuItem& item, std::map<const NSMenuItem*, std::int32_t>& seen) {
  const auto known = identifiers_.find(&item);
  port::TrayMenuItem line;
  line.identifier = known == identifiers_.end() ? ++lastIdentifier_ : known->second;
  seen.emplace(&item, line.identifier);
  line.isSeparator = item.isSeparatorItem();
  line.isVisible = !item.isHidden();
  if (line.isSeparator) return line;
  line.title = item.title();
  line.isEnabled = item.isEnabled();
  line.mark = markOf(item.state());
  line.keyEquivalent = item.keyEquivalent();
  line.modifiers = line.keyEquivalent.empty() ? 0 : item.keyEquivalentModifierMask();
  if (item.submenu()) line.children = snapshot(*item.submenu(), seen);
  return line;
}

/// The line may have changed or gone since the user saw it, so the model has the last word.
void NSStatusItem::trayMenuItemChosen(std::int32_t identifier) {
  const auto self = shared_from_this();
  NSMenuItem* chosen = menu_ ? findItem(*menu_,
                                        [&](const NSMenuItem& item) {
                                          const auto known = identifiers_.find(&item);
                                          return known != identifiers_.end() && known->second == identifier;
                                        })
                             : nullptr;
  if (chosen && !chosen->isHidden()) chosen->perform();
}

}  // namespace platform
