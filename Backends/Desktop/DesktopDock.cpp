#include "Backends/Desktop/DesktopDock.h"

#include <QStandardPaths>
#include <cstdint>
#include <string_view>

#include "Platform/Foundation/Log.h"

namespace desktop {

using platform::port::DockBadge;

namespace {

constexpr const char* kInterface = "com.canonical.Unity.LauncherEntry";
constexpr const char* kDockName = "com.canonical.Unity";

/// djb2, as the launcher-entry library has it; any number would do as long as it stays the same.
std::uint32_t hashOf(std::string_view text) {
  std::uint32_t hash = 5381;
  for (const char character : text) hash = hash * 33 + static_cast<unsigned char>(character);
  return hash;
}

BusMessage update(sd_bus* bus, const std::string& path, const std::string& applicationURI, const DockBadge& badge) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_signal(bus, &made, path.c_str(), kInterface, "Update") < 0) return nullptr;
  BusMessage message(made);
  const int appended =
      sd_bus_message_append(made, "sa{sv}", applicationURI.c_str(), 3, "count", "x", badge.count.value_or(0),
                            "count-visible", "b", badge.count ? 1 : 0, "urgent", "b", badge.needsAttention ? 1 : 0);
  return appended < 0 ? nullptr : std::move(message);
}

}  // namespace

DesktopDock::DesktopDock(SessionBus& bus, const std::string& identifier)
    : bus_(bus),
      desktopFile_(identifier + ".desktop"),
      applicationURI_("application://" + desktopFile_),
      path_("/com/canonical/unity/launcherentry/" + std::to_string(hashOf(applicationURI_))) {
  bus_.onConnection([this] { send(); });
  bus_.watchOwner(kDockName, [this](const std::string& owner) {
    if (!owner.empty()) send();
  });
}

void DesktopDock::showBadge(const DockBadge& badge) {
  if (!badge_) warnWithoutDesktopFile();
  badge_ = badge;
  send();
}

void DesktopDock::send() {
  if (badge_ && bus_.connection()) bus_.send(update(bus_.connection(), path_, applicationURI_, *badge_));
}

/// Docks know an application by its desktop file and leave out the badge of one without.
void DesktopDock::warnWithoutDesktopFile() const {
  const auto file = QString::fromStdString(desktopFile_);
  if (QStandardPaths::locate(QStandardPaths::ApplicationsLocation, file).isEmpty())
    platform::NSLog("Docks won't show the badge: " + desktopFile_ + " is not installed");
}

}  // namespace desktop
