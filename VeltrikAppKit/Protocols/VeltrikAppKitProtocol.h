#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/URL.h"
#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Value.h"

namespace veltrik {

class VeltrikAppKitDelegateProtocol;
class VeltrikAppKitWindowHelperProtocol;
class VeltrikStatusBarItemProtocol;

/// The plug-in's principal object: all that a host asks of the desktop that isn't about one window. Made by
/// `createVeltrikAppKit` (VeltrikAppKitEntry.h) and owned by the host.
///
/// Main thread only. No member reports an error: what is missing makes it do nothing, and a query answer its default.
/// Texts are UTF-8; an optional argument without a value, and an empty block, stand for "none".
class VeltrikAppKitProtocol {
 public:
  /// Runs when the host window's native window was found; the host keeps the helper and gives it its delegate.
  using WindowBinding = std::function<void(const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& helper)>;

  virtual ~VeltrikAppKitProtocol() = default;

  /// The host's delegate, held weakly; null when none was set or it has gone. May be set at any time; the delegate set
  /// last, on whichever principal object, also answers for the whole application (reopening, terminating, activation).
  virtual std::shared_ptr<VeltrikAppKitDelegateProtocol> delegate() const = 0;
  virtual void setDelegate(std::weak_ptr<VeltrikAppKitDelegateProtocol> delegate) = 0;

  // Life

  /// To be called once, when the host has launched. In a later turn of the main loop it takes over those of the three
  /// questions "applicationShouldHandleReopen:hasVisibleWindows:", "applicationShouldTerminate:" and
  /// "applicationDockMenu:" that the class of the application's delegate answers, and starts to report activation.
  virtual void applicationDidFinishLaunching() = 0;
  /// To be called once, when the host is about to end. Stops watching the keyboard and the application's activation.
  virtual void applicationWillTerminate() = 0;
  /// Brings the application to the front, over other applications.
  virtual void activeIgnoringOtherApps() = 0;
  /// Asks the application to terminate. Once the launch work is done every window is marked as forced to close and
  /// closed, then the delegate hears `applicationUserTerminate`.
  virtual void terminate() = 0;
  /// Whether the application shows itself in full screen.
  virtual bool isFullscreenMode() const = 0;

  // Windows

  /// Has `uiKitBinding` called once, with a new window helper, when some native window's title is set to `uiWindowID`.
  /// Returns at once. A later call for the same identifier takes the place of the earlier one; an empty block takes the
  /// earlier one away. When the title is never set, the block is never called.
  virtual void bindNSWindowWithUIWindowID(const std::string& uiWindowID, WindowBinding uiKitBinding) = 0;

  // Alerts and panels

  /// Whether the key window is a native alert, a sheet or in a modal session, and not one of the host's. Reads the
  /// windows at each call.
  virtual bool isAppKitAlertPresented() const = 0;
  /// Runs an application-modal alert titled "MIRELO"; returns when it has gone. The confirm button alone has the block
  /// called, in the next turn of the main loop. An absent or empty `cancelTitle` makes an alert of one button. Return
  /// presses the button with the focus, at first the confirm button, Escape the cancel button.
  virtual void showAlertWith(const std::string& title, const std::string& message, const std::string& confirmTitle,
                             const std::optional<std::string>& cancelTitle,
                             std::function<void()> confirmCompletion) = 0;
  /// The same as a sheet, and returns at once. It hangs from the window bound to `uiWindowID`, or from the key window
  /// where there is none; without a key window nothing is shown, and the block never called.
  virtual void showSheetAlertWith(const std::string& title, const std::string& message, const std::string& confirmTitle,
                                  const std::optional<std::string>& cancelTitle,
                                  const std::optional<std::string>& uiWindowID,
                                  std::function<void()> confirmCompletion) = 0;
  /// Lets the user choose files, in a modal panel; returns when it has gone. The block gets them in the panel's order,
  /// before the call returns, and isn't called on cancel.
  virtual void showOpenPanelWithCompletion(std::function<void(const std::vector<platform::URL>& files)> completion) = 0;
  /// Lets the user choose where to save, and returns at once. Answers always and once: the place, or nothing when the
  /// panel was left. `targetPath` is the folder it starts in, without one the user's Downloads folder, made if missing.
  virtual void showSavePanel(const std::string& fileName, const std::optional<platform::URL>& targetPath,
                             std::function<void(const std::optional<platform::URL>& place)> completion) = 0;
  /// Lets the user choose the download folder, in a modal panel; returns when it has gone. The block is called before
  /// that, and not on cancel.
  virtual void showDownloadPathSavePanel(const platform::URL& currentFolder,
                                         std::function<void(const platform::URL& folder)> completion) = 0;
  /// The desktop's icon of a file type (an extension, a type's identifier or a MIME type), 32 points square; one of the
  /// plug-in's own where the desktop's icon theme has none.
  virtual std::optional<platform::Bitmap> fileIconForType(const std::string& type) const = 0;

  // System services

  /// A new item in the system's status bar; it is there as long as the host keeps the object.
  virtual std::shared_ptr<VeltrikStatusBarItemProtocol> createStatusBarItemWithImageName(
      const std::string& imageName) = 0;
  /// The badge on the application's dock icon; nothing and an empty label clear it. Docks show a count only: a label
  /// that isn't a whole number ("3", "99+") makes the icon ask for attention.
  virtual void setBadgeLabel(const std::optional<std::string>& label) = 0;
  /// Opens a file with its default application. Every "file://" in the text is left out.
  virtual void openFileAtPath(const std::string& path) = 0;
  /// Shows a file, selected, in the file manager. Every "file://" in the text is left out.
  virtual void openInFinderAtPath(const std::string& path) = 0;
  /// Starts the application at login, or no longer.
  virtual void setAutoLaunchApp(bool enabled) = 0;
  /// Whether an application with this bundle identifier runs.
  virtual bool isAppRunningWith(const std::string& bundleIdentifier) const = 0;
  /// Installs a downloaded update and starts the relauncher; the host quits by itself.
  virtual void restartWithDownloadedUpdateFilePath(const std::string& path) = 0;

  // Web-view companion

  /// Whether the companion application runs.
  virtual bool hasActiveWebView() const = 0;
  /// Starts the companion application on a page; the delegate hears `webViewDownloadCompletedWithResult`.
  virtual void openWebViewWithUrl(const std::string& url, const std::optional<std::string>& customHeader,
                                  const std::optional<std::string>& customUserAgent,
                                  const platform::Dictionary& options) = 0;
};

}  // namespace veltrik
