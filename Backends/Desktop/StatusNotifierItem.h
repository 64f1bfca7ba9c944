#pragma once

#include <string>
#include <vector>

#include "Backends/Desktop/DBusMenu.h"
#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/Tray.h"

namespace desktop {

/// An icon in the status bar by the interface org.kde.StatusNotifierItem. Told to every watcher that takes the
/// well-known name, now or later, once each. Every item has a connection of its own, since watchers know an item by
/// that.
class StatusNotifierItem final : public platform::port::TrayItem {
 public:
  static constexpr const char* kPath = "/StatusNotifierItem";

  /// `identifier` stays the same from one start of the application to the next. The sink is borrowed.
  StatusNotifierItem(std::string identifier, std::string wellKnownName, platform::port::TrayItemSink& sink);
  StatusNotifierItem(const StatusNotifierItem&) = delete;
  StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

  void setPictures(std::vector<platform::Bitmap> pictures) override;
  void setMenu(std::vector<platform::port::TrayMenuItem> items) override { menu_.show(items); }

 private:
  struct Handlers;
  friend struct Handlers;
  void offer();
  void watcherChanged(const std::string& owner);

  std::string identifier_;
  std::string wellKnownName_;
  std::vector<platform::Bitmap> pictures_;
  SessionBus bus_;
  DBusMenu menu_;
};

}  // namespace desktop
