#include "Backends/Desktop/DesktopTray.h"

#include <unistd.h>

#include "Backends/Desktop/StatusNotifierItem.h"

namespace desktop {

std::unique_ptr<platform::port::TrayItem> DesktopTray::makeItem(platform::port::TrayItemSink& sink) {
  const std::string number = std::to_string(++made_);
  return std::make_unique<StatusNotifierItem>(made_ == 1 ? identifier_ : identifier_ + "-" + number,
                                              "org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-" + number,
                                              sink);
}

}  // namespace desktop
