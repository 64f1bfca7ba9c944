#pragma once

#include <string>

#include "Platform/Port/Tray.h"

namespace desktop {

/// Makes items for the desktop's status bar. Main thread.
class DesktopTray final : public platform::port::Tray {
 public:
  explicit DesktopTray(std::string identifier) : identifier_(std::move(identifier)) {}
  std::unique_ptr<platform::port::TrayItem> makeItem(platform::port::TrayItemSink& sink) override;

 private:
  std::string identifier_;
  int made_ = 0;
};

}  // namespace desktop
