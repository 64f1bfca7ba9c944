#include <algorithm>
#include <any>
#include <functional>
#include <memory>
#include <utility>

#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSWindow.h"
#include "VeltrikAppKit/CustomViews.h"
#include "VeltrikAppKit/Protocols/VeltrikPopoverMenuItemProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::MenuItemState;
using platform::NSMenu;
using platform::NSMenuItem;

namespace {

using Handler = std::function<void()>;

}  // namespace

void VeltrikAppKitWindowHelper::showPopoverMenuWithItems(
    const std::vector<std::shared_ptr<VeltrikPopoverMenuItemProtocol>>& items) {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content || std::ranges::find(items, nullptr) != items.end()) return;
  const auto self = shared_from_this();  // what the user and the host do meanwhile may drop it
  const auto container = std::make_shared<FlipedNSView>(content->bounds());
  content->addSubview(container);
  if (const auto before = std::exchange(contextMenuContainer_, container)) before->removeFromSuperview();

  const auto menu = std::make_shared<NSMenu>("");
  menu->setDelegate(weak_from_this());
  for (const auto& item : std::vector(items)) menu->addItem(makeMenuItem(*item));
  const platform::Point inWindow = window->convertPointFromScreen(platform::NSEvent::mouseLocation());
  menu->popUp(container->convertFrom(inWindow, nullptr), container.get());
}

std::shared_ptr<NSMenuItem> VeltrikAppKitWindowHelper::makeMenuItem(const VeltrikPopoverMenuItemProtocol& item) {
  if (item.isSeperator()) return NSMenuItem::separatorItem();
  auto made = std::make_shared<NSMenuItem>(item.title(), "popoverMenuActionWithSender:", "");
  made->setTarget(weak_from_this(), [weak = weak_from_this()](const NSMenuItem& sender) {
    if (const auto self = weak.lock()) self->popoverMenuAction(sender);
  });
  made->setRepresentedObject(item.handler());
  if (const std::string state = item.state(); !state.empty())
    made->setState(state == "on" ? MenuItemState::on : MenuItemState::off);
  return made;
}

void VeltrikAppKitWindowHelper::popoverMenuAction(const NSMenuItem& sender) {
  const auto* handler = std::any_cast<Handler>(&sender.representedObject());
  if (handler && *handler) (*handler)();
}

void VeltrikAppKitWindowHelper::menuDidClose(NSMenu& /*menu*/) {
  if (const auto container = std::exchange(contextMenuContainer_, nullptr)) container->removeFromSuperview();
}

}  // namespace veltrik
