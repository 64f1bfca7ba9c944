#pragma once

#include <string>

#include "Platform/Export.h"

namespace platform {

/// A program that the desktop starts when the user logs in.
struct LoginItem {
  /// Names the entry; a file name's characters.
  std::string identifier;
  /// For the desktop's settings, UTF-8.
  std::string name;
  /// An absolute path. Bytes that aren't UTF-8 can't stand in an entry.
  std::string executable;
};

/// Has the item started at login from now on, or no longer, by the desktops' autostart folder (freedesktop.org
/// autostart). On replaces whatever entry was there. Off takes it away, and overrules one that the system has for all
/// users. An entry is whole or as before. Throws CocoaError when it can't be written. Main thread.
PLATFORM_EXPORT void setLoginItemEnabled(const LoginItem& item, bool enabled);

/// The executable that runs in this process, or the image it was started from (AppImage).
PLATFORM_EXPORT std::string mainExecutablePath();

}  // namespace platform
