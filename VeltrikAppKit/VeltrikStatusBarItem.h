#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSStatusItem.h"
#include "VeltrikAppKit/Protocols/VeltrikStatusBarItemProtocol.h"

namespace veltrik {

/// Runs the host's block when its menu item is chosen.
class StatusItemMenuAction {
 public:
  explicit StatusItemMenuAction(std::function<void()> handler) : handler_(std::move(handler)) {}
  void metnod() const {
    if (handler_) handler_();
  }

 private:
  std::function<void()> handler_;
};

/// The host's icon in the status bar, with its menu. Main thread.
class VeltrikStatusBarItem final : public VeltrikStatusBarItemProtocol {
 public:
  explicit VeltrikStatusBarItem(const std::string& imageName);

  void addMenuItemWithTitle(const std::string& title, std::int32_t tag, const std::string& keyCode,
                            std::function<void()> handler) override;
  void addSeparator() override;
  void updateStatusBarItemWithImageName(const std::string& imageName) override;
  void updateStatusBarItemEnabled(bool enabled, std::int32_t tag) override;
  void updateStatusBarItemHidden(bool hidden, std::int32_t tag) override;

 private:
  std::shared_ptr<platform::NSStatusItem> statusItem_;
  std::shared_ptr<platform::NSMenu> statusMenu_;
  /// A menu item only works while its action lives: of two with one tag the later one's.
  std::map<std::int32_t, std::shared_ptr<StatusItemMenuAction>> statusMenuActions_;
};

}  // namespace veltrik
