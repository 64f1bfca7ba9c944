#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/Export.h"
#include "Platform/Port/Tray.h"

namespace platform {

/// The visible part of a status item.
class PLATFORM_EXPORT NSStatusBarButton {
 public:
  explicit NSStatusBarButton(port::TrayItem* shown) : shown_(shown) {}
  const std::shared_ptr<NSImage>& image() const { return image_; }
  /// Null shows an empty place.
  void setImage(std::shared_ptr<NSImage> image);

 private:
  port::TrayItem* shown_;  // null where the desktop has no status bar
  std::shared_ptr<NSImage> image_;
};

/// An icon with a menu in the desktop's status bar, made by `NSStatusBar` and there as long as somebody keeps it. What
/// changes in the menu is shown in the next turn of the main loop. Main thread.
class PLATFORM_EXPORT NSStatusItem final : public NSMenuObserver,
                                           public std::enable_shared_from_this<NSStatusItem>,
                                           private port::TrayItemSink {
 public:
  static std::shared_ptr<NSStatusItem> make(double length);
  ~NSStatusItem() override;

  double length() const { return length_; }
  NSStatusBarButton* button() { return &button_; }
  const std::shared_ptr<NSMenu>& menu() const { return menu_; }
  void setMenu(std::shared_ptr<NSMenu> menu);

  void menuItemsChanged(NSMenu& menu) override;
  void menuItemChanged(NSMenuItem& item) override;

 private:
  explicit NSStatusItem(double length);
  void trayMenuItemChosen(std::int32_t identifier) override;
  void scheduleUpdate();
  void update();
  std::vector<port::TrayMenuItem> snapshot(const NSMenu& menu, std::map<const NSMenuItem*, std::int32_t>& seen);
  port::TrayMenuItem snapshot(const NSMenuItem& item, std::map<const NSMenuItem*, std::int32_t>& seen);

  double length_;
  std::unique_ptr<port::TrayItem> shown_;
  NSStatusBarButton button_;
  std::shared_ptr<NSMenu> menu_;
  std::map<const NSMenuItem*, std::int32_t> identifiers_;
  std::int32_t lastIdentifier_ = 0;
  bool updateScheduled_ = false;
};

}  // namespace platform
