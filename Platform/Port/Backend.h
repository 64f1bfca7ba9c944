#pragma once

#include <filesystem>
#include <vector>

#include "Platform/Port/Applications.h"
#include "Platform/Port/Broadcast.h"
#include "Platform/Port/Clipboard.h"
#include "Platform/Port/Dock.h"
#include "Platform/Port/FileIcons.h"
#include "Platform/Port/FileOpener.h"
#include "Platform/Port/FilePanels.h"
#include "Platform/Port/LoopDriver.h"
#include "Platform/Port/MenuHost.h"
#include "Platform/Port/Presence.h"
#include "Platform/Port/Text.h"
#include "Platform/Port/Tray.h"
#include "Platform/Port/WindowHost.h"

namespace platform::port {

/// The user's folders and the system's, as the XDG base directories name them.
struct Folders {
  std::filesystem::path home;
  std::filesystem::path config;
  std::filesystem::path data;
  std::filesystem::path cache;
  std::filesystem::path downloads;
  /// What the system has for all users, the most important first.
  std::vector<std::filesystem::path> systemConfig;
};

/// What a machine provides, and the owner of it all. A capability that a machine lacks is a null getter.
class Backend {
 public:
  virtual ~Backend() = default;
  virtual LoopDriver& loop() = 0;
  virtual WindowHost& windows() = 0;
  virtual TextMeasure& text() = 0;
  virtual Clipboard& clipboard() = 0;
  virtual Broadcast* broadcast() { return nullptr; }
  virtual Applications* applications() { return nullptr; }
  virtual Dock* dock() { return nullptr; }
  virtual FileOpener* fileOpener() { return nullptr; }
  virtual FilePanels* filePanels() { return nullptr; }
  virtual FileIcons* fileIcons() { return nullptr; }
  virtual Presence* presence() { return nullptr; }
  virtual Tray* tray() { return nullptr; }
  virtual MenuHost* menus() { return nullptr; }
  virtual const Folders& folders() const = 0;
};

}  // namespace platform::port
