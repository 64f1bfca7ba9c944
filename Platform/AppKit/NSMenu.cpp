#include "Platform/AppKit/NSMenu.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace platform {

NSMenu::~NSMenu() {
  for (const auto& item : items_) item->menu_ = nullptr;
}

void NSMenu::setAutoenablesItems(bool autoenables) {
  if (std::exchange(autoenables_, autoenables) != autoenables) itemsChanged();
}

void NSMenu::addItem(std::shared_ptr<NSMenuItem> item) {
  if (!item) return;
  if (item->menu_) throw std::logic_error("a menu item belongs to one menu only");
  item->menu_ = this;
  items_.push_back(std::move(item));
  itemsChanged();
}

std::shared_ptr<NSMenuItem> NSMenu::itemWithTag(int tag) const {
  const auto found = std::ranges::find(items_, tag, [](const auto& item) { return item->tag(); });
  return found == items_.end() ? nullptr : *found;
}

void NSMenu::addObserver(std::weak_ptr<NSMenuObserver> observer) {
  observers_.push_back(std::move(observer));
}

void NSMenu::tell(const std::function<void(NSMenuObserver&)>& call) {
  std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
  // An observer may add others, and put the submenu elsewhere.
  const auto observers = observers_;
  NSMenu* const above = superItem_ ? superItem_->menu() : nullptr;
  for (const auto& each : observers)
    if (const auto observer = each.lock()) call(*observer);
  if (above) above->tell(call);
}

void NSMenu::itemsChanged() {
  tell([this](NSMenuObserver& observer) { observer.menuItemsChanged(*this); });
}

}  // namespace platform
