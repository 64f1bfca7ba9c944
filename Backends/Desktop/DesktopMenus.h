#pragma once

#include <vector>

#include "Platform/Port/MenuHost.h"

class QMenu;

namespace desktop {

/// The toolkit's menus. Its loop serves the run loop's sink through `DesktopLoop`.
class DesktopMenus final : public platform::port::MenuHost {
 public:
  std::optional<std::size_t> popUp(const std::vector<platform::port::MenuEntry>& entries,
                                   const std::function<platform::Point(platform::Size)>& place) override;
  void closeMenus() override;
  std::optional<platform::Bitmap> snapshot() override;

 private:
  std::vector<QMenu*> open_;
};

}  // namespace desktop
