#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace platform {

/// The desktop's clipboard as text. Main thread.
class PLATFORM_EXPORT NSPasteboard {
 public:
  static NSPasteboard& general();
  /// UTF-8; nothing when no text is on it. Any encoding other than UTF-8 the clipboard declares is not read.
  std::optional<std::string> string() const;
  void setString(const std::string& utf8);
};

}  // namespace platform
