#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/NSImage.h"
#include "Platform/AppKit/NSRunningApplication.h"
#include "Platform/Export.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// Posted on the workspace's own notification centre with the workspace as object.
inline constexpr const char* kWorkspaceScreensDidSleep = "NSWorkspaceScreensDidSleepNotification";
inline constexpr const char* kWorkspaceScreensDidWake = "NSWorkspaceScreensDidWakeNotification";

/// What the desktop around the application does for it. Main thread.
class PLATFORM_EXPORT NSWorkspace {
 public:
  static NSWorkspace& shared();
  NSWorkspace();
  ~NSWorkspace();
  NSWorkspace(const NSWorkspace&) = delete;
  NSWorkspace& operator=(const NSWorkspace&) = delete;

  /// What happens to the desktop is posted here and nowhere else.
  NotificationCenter& notificationCenter() { return notificationCenter_; }

  struct OpenConfiguration {
    /// Whether the user may be asked for leave. Nobody asks here.
    bool promptsUserIfNeeded = true;
    /// For the new process; one that runs already doesn't get them.
    std::vector<std::string> arguments;
    /// Starts another process even when one of this bundle runs.
    bool createsNewApplicationInstance = false;
  };
  /// The application, or nothing and why it could not be started.
  using OpenCompletion =
      std::function<void(const std::shared_ptr<NSRunningApplication>&, const std::optional<CocoaError>&)>;

  /// Starts the application bundle at `url`, or finds the process that was started from it. Returns at once;
  /// `completion` runs once, in a later turn of the main loop.
  void openApplication(const URL& url, OpenConfiguration configuration, OpenCompletion completion);

  // Files (NSWorkspace+Files.cpp). A relative path is taken from the working directory. All return at once; what fails
  // is logged.

  /// Opens a file with the application that is the user's default for its type.
  void openFile(const std::string& path);
  /// Shows a file, selected, in the file manager.
  void activateFileViewerSelecting(const URL& file);
  /// The desktop's icon for a type identifier, MIME type or file name extension, 32 points square; one of our own where
  /// the desktop has none.
  std::shared_ptr<NSImage> iconForFileType(const std::string& type) const;

 private:
  NotificationCenter notificationCenter_;
};

}  // namespace platform
