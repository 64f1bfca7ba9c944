#pragma once

#include <memory>
#include <string>

#include "Platform/Port/Backend.h"

namespace desktop {

struct DesktopOptions {
  /// The desktop file's name without its suffix: every window's class, and the application's name for the desktop.
  std::string identifier = "com.brenholt.mirelo";
};

/// The user's real desktop: Qt 6 on X11 (under Wayland through XWayland), the session bus, the user's folders.
/// Makes the toolkit's application object, or borrows the one that stands. One at a time; main thread, but
/// `LoopDriver::wake`. To be destroyed before `main` returns: one that is still there when the program's globals are
/// destroyed is left as it is, with a word on standard error, and notifications not sent by then are lost.
class DesktopBackend final : public platform::port::Backend {
 public:
  /// Throws std::runtime_error when no X server answers at DISPLAY.
  explicit DesktopBackend(const DesktopOptions& options = {});
  ~DesktopBackend() override;
  DesktopBackend(const DesktopBackend&) = delete;
  DesktopBackend& operator=(const DesktopBackend&) = delete;

  platform::port::LoopDriver& loop() override;
  platform::port::WindowHost& windows() override;
  platform::port::TextMeasure& text() override;
  platform::port::Clipboard& clipboard() override;
  platform::port::Broadcast* broadcast() override;
  platform::port::Applications* applications() override;
  platform::port::Dock* dock() override;
  platform::port::FileOpener* fileOpener() override;
  platform::port::FilePanels* filePanels() override;
  platform::port::FileIcons* fileIcons() override;
  platform::port::Presence* presence() override;
  platform::port::Tray* tray() override;
  platform::port::MenuHost* menus() override;
  const platform::port::Folders& folders() const override;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace desktop
