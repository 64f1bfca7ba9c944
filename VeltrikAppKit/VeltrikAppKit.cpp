#include "VeltrikAppKit/VeltrikAppKit.h"

#include <iostream>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/UserDefaults.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/ProcessState.h"

namespace veltrik {

std::shared_ptr<VeltrikAppKit> VeltrikAppKit::make() {
  platform::requireMainThread("VeltrikAppKit::make");
  std::shared_ptr<VeltrikAppKit> made(new VeltrikAppKit());
  made->prepare();
  return made;
}

void VeltrikAppKit::prepare() {
  platform::UserDefaults::standard().set("NSFullScreenMenuItemEverywhere", false);
  platform::NSWindow::setAllowsAutomaticWindowTabbing(false);
  installWindowMethodExchanges();
  observeScreens();
  observeWebViewFeedback();
  startIdleTimer();
  installKeyboardMonitor();
  buildDockMenu();
}

VeltrikAppKit::~VeltrikAppKit() {
  std::cout << ">>> veltrikAppKit deinit" << std::endl;
  if (!platform::Session::exists()) return;
  platform::NotificationCenter::defaultCenter().removeObserver(this);
  platform::DistributedNotificationCenter::defaultCenter().removeObserver(this);
  platform::NSWorkspace::shared().notificationCenter().removeObserver(this);
}

void VeltrikAppKit::setDelegate(std::weak_ptr<VeltrikAppKitDelegateProtocol> delegate) {
  delegate_ = delegate;
  ProcessState::current().sharedDelegate = std::move(delegate);
}

bool VeltrikAppKit::isFullscreenMode() const {
  return (platform::NSApplication::shared().presentationOptions() & platform::PresentationOption::kFullScreen) != 0;
}

void VeltrikAppKit::bindNSWindowWithUIWindowID(const std::string& uiWindowID, WindowBinding uiKitBinding) {
  ProcessState::current().pendingWindowBindings[uiWindowID] = std::move(uiKitBinding);
}

void VeltrikAppKit::buildDockMenu() {
  auto item = std::make_shared<platform::NSMenuItem>("Mirelo 열기", "openMainWindow:", "");
  item->setTarget(weak_from_this(), [weak = weak_from_this()](platform::NSMenuItem&) {
    if (const auto self = weak.lock()) self->openMainWindow();
  });
  item->setTag(1);
  auto menu = std::make_shared<platform::NSMenu>("MainWindow");
  menu->setAutoenablesItems(false);
  menu->addItem(std::move(item));
  ProcessState::current().dockMenu = std::move(menu);
}

}  // namespace veltrik
