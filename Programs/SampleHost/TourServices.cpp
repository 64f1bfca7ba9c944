#include "Programs/SampleHost/Tour.h"
#include "VeltrikAppKit/Protocols/VeltrikStatusBarItemProtocol.h"

namespace samplehost {

void Tour::statusBarItem() {
  bool opened = false;
  const auto item = host_.appKit().createStatusBarItemWithImageName("appKit_statusBarUnread");
  item->addMenuItemWithTitle("Mirelo 열기", 1, "o", [&opened] { opened = true; });
  item->addSeparator();
  item->addMenuItemWithTitle("Quit", 2, "q", [] {});
  item->updateStatusBarItemEnabled(false, 2);
  host_.appKit().setBadgeLabel("3");
  if (machine_.headless) {
    auto& tray = *machine_.headless->tray();
    transcript_.expectTrue("the menu is shown", wait([&] { return tray.items().front()->menu.size() == 3; }));
    transcript_.expect("the picture has all its sizes", 7, static_cast<int>(tray.items().front()->pictures.size()));
    transcript_.expectTrue("a disabled line can't be chosen", !tray.choose(*tray.items().front(), "Quit"));
    tray.choose(*tray.items().front(), "Mirelo 열기");
    transcript_.expectTrue("a chosen line runs the host's block", wait([&] { return opened; }));
    transcript_.expectTrue("the dock shows the count", machine_.headless->dock()->badge().count == 3);
  }
  host_.appKit().setBadgeLabel(std::nullopt);
  for (const char* type : {"png", "com.adobe.pdf", "hwp", "public.folder"}) {
    const auto icon = host_.appKit().fileIconForType(type);
    transcript_.expectTrue(std::string("an icon for ") + type, icon && icon->width >= 32);
  }
}

}  // namespace samplehost
