#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Export.h"

namespace platform {

class Bundle;

/// Blocks until the process has ended. Returns at once for a number that no process has. Any thread.
PLATFORM_EXPORT void waitUntilEnded(pid_t process);

/// A process of this user's that runs an application bundle's executable.
struct PLATFORM_EXPORT ApplicationProcess {
  pid_t id = 0;
  /// When it started, in the kernel's own clock: with `id` it names a process for good, since numbers come again.
  std::uint64_t startTime = 0;
  std::filesystem::path bundle;
  std::string bundleIdentifier;

  /// Those that run now on this desktop, which is to say with this process's session bus, by number. A process whose
  /// parent runs the same bundle is a part of that application and left out. `table` is the kernel's process table. Any
  /// thread.
  static std::vector<ApplicationProcess> all(const std::filesystem::path& table = "/proc");
  /// Starts the bundle's executable on its own, with "/" as working folder. Throws `CocoaError`. Any thread.
  static ApplicationProcess launch(const Bundle& bundle, std::vector<std::string> arguments);

  /// The process that was started from the bundle at `path`; where none runs, or `anotherInstance` is wanted, starts it
  /// with `arguments`. Throws `CocoaError`, also when there is no bundle. Any thread.
  static ApplicationProcess open(const std::filesystem::path& path, std::vector<std::string> arguments,
                                 bool anotherInstance = false);

  bool isRunning() const;
  /// Asks it to end (SIGTERM). False when it has ended already or isn't ours to end.
  bool terminate() const;
};

}  // namespace platform
