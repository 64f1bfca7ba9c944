#pragma once

#include <string>

#include "Platform/Export.h"

namespace platform {

/// Where the system's tools are when they aren't at the paths that programs know them by.
class PLATFORM_EXPORT SystemTools {
 public:
  /// The path to run for `launchPath`: that of the "open" beside this program for "/usr/bin/open" (what other systems
  /// have there opens documents), what a test has put in a tool's place, or `launchPath` itself. Any thread.
  static std::string locationOf(const std::string& launchPath);

  /// Puts another program in a tool's place for as long as it lives.
  class PLATFORM_EXPORT Replacement {
   public:
    Replacement(std::string launchPath, std::string location);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

   private:
    std::string launchPath_;
  };
};

}  // namespace platform
