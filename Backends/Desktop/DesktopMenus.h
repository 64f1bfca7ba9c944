#pragma once

#include <vector>

#include "Platform/Port/MenuHost.h"

class QMenu;

namespace desktop {

class SessionBus;

/// The toolkit's menus. Its loop serves the run loop's sink through `DesktopLoop`.
class DesktopMenus final : public platform::port::MenuHost {
 public:
  /// Borrowed; outlives this.
  explicit DesktopMenus(const SessionBus& bus) : bus_(bus) {}

  std::optional<std::size_t> popUp(const std::vector<platform::port::MenuEntry>& entries,
                                   const std::function<platform::Point(platform::Size)>& place) override;
  void closeMenus() override;
  std::optional<platform::Bitmap> snapshot() override;

 private:
  const SessionBus& bus_;
  std::vector<QMenu*> open_;
};

}  // namespace desktop
