#include "Platform/AppKit/NSMenuItem.h"

#include <stdexcept>
#include <utility>

#include "Platform/AppKit/NSMenu.h"

namespace platform {

namespace {

bool holds(const NSMenu& menu, const NSMenuItem& item) {
  for (const NSMenu* each = item.menu(); each; each = each->superItem() ? each->superItem()->menu() : nullptr)
    if (each == &menu) return true;
  return false;
}

}  // namespace

NSMenuItem::~NSMenuItem() {
  if (submenu_) submenu_->superItem_ = nullptr;
}

std::shared_ptr<NSMenuItem> NSMenuItem::separatorItem() {
  auto item = std::make_shared<NSMenuItem>("", "", "");
  item->separator_ = true;
  return item;
}

void NSMenuItem::setTitle(std::string title) {
  if (std::exchange(title_, std::move(title)) != title_) changed();
}

void NSMenuItem::setKeyEquivalent(std::string keyEquivalent) {
  if (std::exchange(keyEquivalent_, std::move(keyEquivalent)) != keyEquivalent_) changed();
}

void NSMenuItem::setKeyEquivalentModifierMask(std::uint64_t modifiers) {
  if (std::exchange(keyEquivalentModifiers_, modifiers) != modifiers) changed();
}

void NSMenuItem::setState(MenuItemState state) {
  if (std::exchange(state_, state) != state) changed();
}

void NSMenuItem::setImage(std::shared_ptr<const Bitmap> image) {
  if (std::exchange(image_, std::move(image)) != image_) changed();
}

void NSMenuItem::setHidden(bool hidden) {
  if (std::exchange(hidden_, hidden) != hidden) changed();
}

bool NSMenuItem::isEnabled() const {
  if (separator_) return false;
  if (submenu_ || !menu_ || !menu_->autoenablesItems()) return enabled_;
  return handler_ && !target_.expired();
}

void NSMenuItem::setEnabled(bool enabled) {
  if (std::exchange(enabled_, enabled) != enabled) changed();
}

void NSMenuItem::setSubmenu(std::shared_ptr<NSMenu> submenu) {
  if (submenu == submenu_) return;
  if (submenu && submenu->superItem_) throw std::logic_error("a menu hangs on one item only");
  if (submenu && holds(*submenu, *this)) throw std::logic_error("a menu can't hang on an item of its own");
  if (submenu_) submenu_->superItem_ = nullptr;
  submenu_ = std::move(submenu);
  if (submenu_) submenu_->superItem_ = this;
  if (menu_) menu_->itemsChanged();
}

void NSMenuItem::setTarget(std::weak_ptr<void> target, Handler handler) {
  const bool wasEnabled = isEnabled();
  target_ = std::move(target);
  handler_ = std::move(handler);
  if (isEnabled() != wasEnabled) changed();
}

bool NSMenuItem::perform() {
  const auto target = target_.lock();
  if (!target || !handler_ || submenu_ || !isEnabled()) return false;
  const Handler handler = handler_;  // which may give the item another one
  handler(*this);
  return true;
}

void NSMenuItem::changed() {
  if (menu_) menu_->tell([this](NSMenuObserver& observer) { observer.menuItemChanged(*this); });
}

}  // namespace platform
