#pragma once

#include <functional>
#include <string>

namespace veltrik {

/// One item of a context menu; implemented by the host. Read once, when the menu is shown. Main thread.
class VeltrikPopoverMenuItemProtocol {
 public:
  virtual ~VeltrikPopoverMenuItemProtocol() = default;

  virtual std::string title() const = 0;
  /// "on" shows a check mark, any other text shows none; empty leaves the item as items are.
  virtual std::string state() const = 0;
  /// A separator line; the other members are not read.
  virtual bool isSeperator() const = 0;
  /// Runs when the item is chosen; empty for none.
  virtual std::function<void()> handler() const = 0;
};

}  // namespace veltrik
