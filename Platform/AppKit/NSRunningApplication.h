#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/ApplicationProcess.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// An application of this user's that runs, or has run: found through the process table by the bundle that it was
/// started from. Main thread.
class PLATFORM_EXPORT NSRunningApplication {
 public:
  explicit NSRunningApplication(ApplicationProcess process) : process_(std::move(process)) {}

  /// Those of a bundle identifier that run now; none for an empty one.
  static std::vector<std::shared_ptr<NSRunningApplication>> runningApplications(const std::string& bundleIdentifier);

  pid_t processIdentifier() const { return process_.id; }
  const std::string& bundleIdentifier() const { return process_.bundleIdentifier; }
  URL bundleURL() const { return URL::directoryURL(process_.bundle.native()); }
  bool isTerminated() const { return !process_.isRunning(); }

  /// Has the window manager bring its front-most window to the front and give it the focus. False when it has none or
  /// there is nobody to ask.
  bool activate() const;
  /// Asks it to end. False when it has ended already.
  bool terminate() const { return process_.terminate(); }

 private:
  ApplicationProcess process_;
};

}  // namespace platform
