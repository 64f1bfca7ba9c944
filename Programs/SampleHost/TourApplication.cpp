#include "Platform/AppKit/NSMenu.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Programs/SampleHost/Tour.h"

namespace samplehost {

using platform::DistributedNotificationCenter;
using platform::NSApplication;

void Tour::notifications() {
  auto& center = DistributedNotificationCenter::defaultCenter();
  platform::Dictionary seen;
  center.addObserver(&seen, "mirelo_tour", "", DistributedNotificationCenter::kSuspensionDeliverImmediately,
                     [&seen](const std::string&, const platform::Dictionary& userInfo) { seen = userInfo; });
  const platform::Dictionary sent = {{"text", "안녕"}, {"number", 3}, {"list", platform::Value::Array{true, 0.5}}};
  center.post("mirelo_tour", "", sent, DistributedNotificationCenter::kDeliverImmediately);
  transcript_.expectTrue("an own notification comes back whole", wait([&] { return seen == sent; }));
  center.removeObserver(&seen);
  center.post("mirelo_webViewFeedback", "", {{"event", "loaded"}}, DistributedNotificationCenter::kDeliverImmediately);
  transcript_.expectTrue("the companion's feedback reaches the host",
                         wait([&] { return heard("handleWebViewFeedBackWithUserInfo", "app") == 1; }));
}

void Tour::dockMenu() {
  transcript_.expectTrue("the launch work was done", wait([] {
                           const auto menu = NSApplication::shared().dockMenu();
                           return menu && menu->title() == "MainWindow";
                         }));
  const auto menu = NSApplication::shared().dockMenu();
  transcript_.expect("one item", 1, static_cast<int>(menu->items().size()));
  transcript_.expect("its title", "Mirelo 열기", menu->items().front()->title());
  menu->items().front()->perform();
  transcript_.expect("the host is asked for its main window", 1, heard("openMainWindow", "app"));
}

void Tour::reopen() {
  transcript_.expect("the answer is the host's", true, NSApplication::shared().reopen());
  transcript_.expect("the host was asked", 1, heard("applicationShouldHandleReopen", "app"));
  transcript_.expect("its own application delegate wasn't", 0,
                     heard("applicationShouldHandleReopen:hasVisibleWindows:", "application"));
}

void Tour::terminate() {
  const HelperPointer helper = host_.helperOf("main");
  const auto window = mainWindow();
  host_.appKit().terminate();
  transcript_.expect("the windows were closed", true, window->isClosed());
  transcript_.expect("the host hears that its window closes", 1, heard("windowWillClose", "window:main"));
  transcript_.expect("and that the user terminates", 1, heard("applicationUserTerminate", "app"));
  transcript_.expect("the companion is told", 1, posted("mirelo_mireloAppWillTerminate"));
  transcript_.expect("without its window the helper answers defaults", platform::Rect{}, helper->nsWindowFrame());
  transcript_.expect("the application ends", true, NSApplication::shared().isTerminating());
}

}  // namespace samplehost
