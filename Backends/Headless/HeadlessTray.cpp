#include "Backends/Headless/HeadlessTray.h"

#include <algorithm>
#include <utility>

namespace headless {

using platform::port::TrayMenuItem;

class HeadlessTray::Shown final : public platform::port::TrayItem {
 public:
  Shown(HeadlessTray& tray, platform::port::TrayItemSink& sink) : tray_(tray), item_{&sink, {}, {}} {
    tray_.items_.push_back(&item_);
    tray_.journal_.write("tray: item comes");
  }
  ~Shown() override {
    std::erase(tray_.items_, &item_);
    tray_.journal_.write("tray: item goes");
  }
  void setPictures(std::vector<platform::Bitmap> pictures) override {
    item_.pictures = std::move(pictures);
    tray_.journal_.write("tray: picture of " + std::to_string(item_.pictures.size()) + " sizes");
  }
  void setMenu(std::vector<TrayMenuItem> items) override {
    item_.menu = std::move(items);
    tray_.journal_.write("tray: menu of " + std::to_string(item_.menu.size()));
  }

 private:
  HeadlessTray& tray_;
  Item item_;
};

namespace {

const TrayMenuItem* find(const std::vector<TrayMenuItem>& items, std::string_view title) {
  for (const TrayMenuItem& item : items) {
    if (!item.isVisible || item.isSeparator) continue;
    if (item.title == title) return &item;
    if (const TrayMenuItem* inside = item.isEnabled ? find(item.children, title) : nullptr) return inside;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<platform::port::TrayItem> HeadlessTray::makeItem(platform::port::TrayItemSink& sink) {
  return std::make_unique<Shown>(*this, sink);
}

bool HeadlessTray::choose(const Item& item, std::string_view title) {
  const TrayMenuItem* found = find(item.menu, title);
  if (!found || !found->isEnabled || !found->children.empty()) return false;
  loop_.deliver([this, shown = &item, identifier = found->identifier] {
    if (std::ranges::count(items_, shown)) shown->sink->trayMenuItemChosen(identifier);
  });
  return true;
}

}  // namespace headless
