#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace veltrik {

/// An icon with a menu in the system's status bar; there while the host keeps the object. What
/// changes is shown in the next turn of the main loop. Main thread.
class VeltrikStatusBarItemProtocol {
 public:
  virtual ~VeltrikStatusBarItemProtocol() = default;

  /// Appends an item. `keyCode` is its key equivalent, empty for none; `handler` runs when the item is chosen.
  virtual void addMenuItemWithTitle(const std::string& title, std::int32_t tag, const std::string& keyCode,
                                    std::function<void()> handler) = 0;
  virtual void addSeparator() = 0;
  /// Shows the plug-in's image of that name; an unknown name clears the image.
  virtual void updateStatusBarItemWithImageName(const std::string& imageName) = 0;
  /// Enables or disables the first item with the tag; nothing when there is none.
  virtual void updateStatusBarItemEnabled(bool enabled, std::int32_t tag) = 0;
  /// Hides or shows the first item with the tag; nothing when there is none.
  virtual void updateStatusBarItemHidden(bool hidden, std::int32_t tag) = 0;
};

}  // namespace veltrik
