#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Geometry.h"

namespace platform::port {

enum class MenuMark { none, check, dash };

/// One line of a menu as it is to be shown.
struct MenuEntry {
  std::size_t number = 0;  ///< what `popUp` answers when this one is chosen
  bool separator = false;  ///< a line; the rest is not read
  std::string title;       ///< UTF-8
  bool enabled = true;
  MenuMark mark = MenuMark::none;
  std::string keyEquivalent;    ///< the shortcut's key, empty for none; for show
  std::uint64_t modifiers = 0;  ///< the shortcut's, as event modifier flags
  std::shared_ptr<const Bitmap> image;
  std::vector<MenuEntry> children;  ///< the submenu; empty for none
};

/// Shows native menus. Main thread.
class MenuHost {
 public:
  virtual ~MenuHost() = default;
  /// Shows a menu over everything, with the keyboard and the pointer in its hands, and runs a loop of its own (the
  /// loop's sink is served) until the user has chosen an entry or left the menu, or `closeMenus` was called. `place`
  /// answers where on the screen the top left corner of a menu of that size goes; screen points, bottom-left origin.
  /// The press that may have led here chooses nothing when its button comes up near where it went down. Answers the
  /// chosen entry's number; nothing when none was.
  virtual std::optional<std::size_t> popUp(const std::vector<MenuEntry>& entries,
                                           const std::function<Point(Size)>& place) = 0;
  /// All open menus leave the screen with nothing chosen; each `popUp` returns when the ones inside of it have.
  virtual void closeMenus() = 0;
  /// What the newest open menu shows; nothing when none is open, or where a machine can't tell.
  virtual std::optional<Bitmap> snapshot() = 0;
};

}  // namespace platform::port
