#include "VeltrikAppKit/VeltrikStatusBarItem.h"

#include <utility>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/NSStatusBar.h"
#include "VeltrikAppKit/ProcessState.h"

namespace veltrik {

using platform::NSMenuItem;

namespace {

std::shared_ptr<platform::NSImage> imageNamed(const std::string& name) {
  const auto bundle = appKitBundle();
  return bundle ? platform::NSImage::forResource(*bundle, name) : nullptr;
}

}  // namespace

VeltrikStatusBarItem::VeltrikStatusBarItem(const std::string& imageName)
    : statusItem_(platform::NSStatusBar::system().statusItem(platform::kSquareStatusItemLength)),
      statusMenu_(std::make_shared<platform::NSMenu>("")) {
  updateStatusBarItemWithImageName(imageName);
  statusMenu_->setAutoenablesItems(false);
  statusItem_->setMenu(statusMenu_);
}

void VeltrikStatusBarItem::addMenuItemWithTitle(const std::string& title, std::int32_t tag, const std::string& keyCode,
                                                std::function<void()> handler) {
  const auto action = std::make_shared<StatusItemMenuAction>(std::move(handler));
  statusMenuActions_[tag] = action;
  auto item = std::make_shared<NSMenuItem>(title, "metnod:", keyCode);
  item->setTag(tag);
  item->setTarget(action, [weak = std::weak_ptr(action)](NSMenuItem&) {
    if (const auto target = weak.lock()) target->metnod();
  });
  statusMenu_->addItem(std::move(item));
}

void VeltrikStatusBarItem::addSeparator() {
  statusMenu_->addItem(NSMenuItem::separatorItem());
}

void VeltrikStatusBarItem::updateStatusBarItemWithImageName(const std::string& imageName) {
  if (auto* button = statusItem_->button()) button->setImage(imageNamed(imageName));
}

void VeltrikStatusBarItem::updateStatusBarItemEnabled(bool enabled, std::int32_t tag) {
  if (const auto item = statusMenu_->itemWithTag(tag)) item->setEnabled(enabled);
}

void VeltrikStatusBarItem::updateStatusBarItemHidden(bool hidden, std::int32_t tag) {
  if (const auto item = statusMenu_->itemWithTag(tag)) item->setHidden(hidden);
}

}  // namespace veltrik
