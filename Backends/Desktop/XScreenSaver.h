#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>
#include <optional>

#include "Backends/Desktop/XServer.h"

namespace desktop {

/// The X server's own screen saver and idle clock (MIT-SCREEN-SAVER extension). Nothing of it counts where the server
/// only serves X programs of another desktop (XWayland): it doesn't see what the user does elsewhere. Main thread.
class XScreenSaver final : public QAbstractNativeEventFilter {
 public:
  /// `changed` is called when the screens are blanked (true) and when they show something again.
  explicit XScreenSaver(std::function<void(bool active)> changed);
  ~XScreenSaver() override;

  /// Milliseconds since the last input of any user's device; nothing where the server can't tell.
  std::optional<std::uint32_t> idleMilliseconds();
  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
  bool servesWholeDesktop();

  XServer x_;
  std::function<void(bool)> changed_;
  std::uint8_t firstEvent_ = 0;
  bool usable_ = false;
};

}  // namespace desktop
