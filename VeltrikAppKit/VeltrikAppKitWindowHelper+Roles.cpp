#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Geometry.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/Unavailable.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

void VeltrikAppKitWindowHelper::addChildWindowToParentWindowWith(const std::string&) {
  logUnavailable("addChildWindowToParentWindowWith");
}

void VeltrikAppKitWindowHelper::convertAsSheetWindowWithParentWindowHelper(
    const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>&) {
  logUnavailable("convertAsSheetWindowWithParentWindowHelper");
}

void VeltrikAppKitWindowHelper::updateFrameIfNeeded() {
  logUnavailable("updateFrameIfNeeded");
}

VeltrikAppKitWindowHelper::Scale VeltrikAppKitWindowHelper::hostToNativeScale() const {
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  const auto delegate = delegate_.lock();
  if (!content || !delegate) return {};
  const platform::Size host = delegate->uiWindowBounds().size();
  const platform::Size native = content->bounds().size();
  // A host window without an extent has no scale.
  return {host.width > 0 ? native.width / host.width : 1, host.height > 0 ? native.height / host.height : 1};
}

void VeltrikAppKitWindowHelper::publishFrame(const ParentFrameChangeInfo& change) {
  const auto delegate = delegate_.lock();
  const std::string uiWindowID = delegate ? delegate->uiWindowID() : "";
  if (uiWindowID.empty()) return;
  post({{"parentID", uiWindowID},
        {"parentFrame", platform::NSStringFromRect(change.parentFrame)},
        {"isResized", change.isResized ? "true" : "false"}},
       MireloDistributedNotification::parentWindowFrame);
}

}  // namespace veltrik
