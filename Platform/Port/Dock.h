#pragma once

#include <cstdint>
#include <optional>

namespace platform::port {

/// What a dock shows on the application's icon.
struct DockBadge {
  std::optional<std::int64_t> count;
  bool needsAttention = false;
  friend bool operator==(const DockBadge&, const DockBadge&) = default;
};

/// The application's icon in the desktop's dock or taskbar. Main thread.
class Dock {
 public:
  virtual ~Dock() = default;
  /// Shown by every dock that is there or appears later, until the next call.
  virtual void showBadge(const DockBadge& badge) = 0;
};

}  // namespace platform::port
