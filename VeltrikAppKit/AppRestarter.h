#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Foundation/URL.h"

namespace platform {
struct Notification;
class Process;
}  // namespace platform

namespace veltrik {

class BundleInstallation;

/// Installs a downloaded update in the place of the running application's bundle and starts the relauncher, which
/// waits for this process to end and starts the application anew. Every step is a line in the log; nobody is told the
/// outcome. A step that is still to come when the object goes is left out. Main thread.
class AppRestarter final : public std::enable_shared_from_this<AppRestarter> {
 public:
  /// The tool tells of each file; one that says nothing for `unzipSilence` seconds hangs, and is ended.
  static std::shared_ptr<AppRestarter> make(double unzipSilence = 120) {
    return std::shared_ptr<AppRestarter>(new AppRestarter(unzipSilence));
  }

  /// `downloadLocation` is a file URL's text or an absolute path; nothing happens for another text. Unpacks the archive
  /// into the folder that holds it, blocking until the tool has ended; goes on in a later turn of the main loop.
  void restart(const std::string& downloadLocation);
  /// Starts this program once more, without arguments.
  void appDidTerminated(const platform::Notification& notification);

 private:
  using Unpacked = std::function<void(const std::optional<platform::URL>& application)>;
  /// `output` only after a success.
  using Ran = std::function<void(bool success, const std::optional<std::string>& output)>;

  explicit AppRestarter(double unzipSilence) : unzipSilence_(unzipSilence) {}
  static void logRestarter(const std::string& message);
  void unzipDownloadedFile(const platform::URL& downloadLocation, Unpacked completion);
  static void runProcess(platform::Process& process, Ran completion);
  /// Nothing in the folder is accepted unless all of the archive was unpacked. Throws `CocoaError` when something
  /// can't be looked at.
  static std::optional<platform::URL> findApp(const platform::URL& downloadLocation);
  static void installAndRestart(const platform::URL& newBundle);
  static void relaunch(const std::string& bundlePath, const std::string& relauncherFolder);
  static void rollback(BundleInstallation& installation, const platform::URL& installed, const platform::URL& backup);
  static void removeBackup(BundleInstallation& installation, const platform::URL& backup);

  double unzipSilence_;
};

}  // namespace veltrik
