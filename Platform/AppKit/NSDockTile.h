#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace platform {

/// The application's icon in the desktop's dock. Main thread.
class PLATFORM_EXPORT NSDockTile {
 public:
  /// The application's own.
  static NSDockTile& shared();

  const std::optional<std::string>& badgeLabel() const { return badgeLabel_; }
  /// Nothing or an empty label takes the badge away. Docks show a count only, so a whole number, also one with a "+"
  /// behind it ("99+"), becomes the count, a larger one than fits the largest that does; any other label makes the icon
  /// ask for attention without a count.
  void setBadgeLabel(std::optional<std::string> label);

 private:
  std::optional<std::string> badgeLabel_;
};

}  // namespace platform
