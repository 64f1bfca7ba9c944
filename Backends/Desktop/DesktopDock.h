#pragma once

#include <optional>
#include <string>

#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/Dock.h"

namespace desktop {

/// The launcher-entry signal of the session bus (com.canonical.Unity.LauncherEntry), which docks and taskbars listen
/// to. Sent at every change, and again when a dock takes its well-known name or the bus comes back.
class DesktopDock final : public platform::port::Dock {
 public:
  /// `identifier` is the desktop file's name without its suffix. The bus is borrowed and outlives this.
  DesktopDock(SessionBus& bus, const std::string& identifier);

  void showBadge(const platform::port::DockBadge& badge) override;

 private:
  void send();
  void warnWithoutDesktopFile() const;

  SessionBus& bus_;
  std::string desktopFile_;
  std::string applicationURI_;
  std::string path_;
  std::optional<platform::port::DockBadge> badge_;
};

}  // namespace desktop
