#include <memory>
#include <vector>

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "VeltrikAppKit/CustomViews.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::Rect;

void VeltrikAppKitWindowHelper::setTitleBarTransparentAndTitleHidden() {
  const auto window = nsWindow();
  if (!window) return;
  window->setTitlebarAppearsTransparent(true);
  window->setTitleHidden(true);
}

void VeltrikAppKitWindowHelper::setCloseButtonHidden(bool hidden) {
  if (const auto window = nsWindow()) window->setButtonHidden(platform::WindowButton::close, hidden);
}

void VeltrikAppKitWindowHelper::setContentSize(const Rect& bounds) {
  if (const auto window = nsWindow()) window->setContentSize(bounds.size());
}

void VeltrikAppKitWindowHelper::addMovableBounds(const Rect& bounds) {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content) return;
  Rect native = bounds;
  if (const auto delegate = delegate_.lock()) native.y = delegate->uiWindowBounds().height - bounds.maxY();
  const Scale scale = hostToNativeScale();
  native = {native.x * scale.x, native.y * scale.y, native.width * scale.x, native.height * scale.y};

  const auto region = std::make_shared<DraggerNSView>();
  content->addSubview(region);
  region->setWantsLayer(true);
  region->setFrame(native);
}

void VeltrikAppKitWindowHelper::resetAllMovableBounds() {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content) return;
  const auto views = content->subviews();  // a copy: the list shrinks
  for (const auto& view : views)
    if (std::dynamic_pointer_cast<DraggerNSView>(view)) view->removeFromSuperview();
}

}  // namespace veltrik
