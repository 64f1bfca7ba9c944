#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Timer.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"

namespace veltrik {

class AppRestarter;
struct WebViewRequest;

/// The principal object. There may be several; they share the process's method exchanges, delegate, pending bindings
/// and dock menu. Main thread.
class VeltrikAppKit final : public VeltrikAppKitProtocol, public std::enable_shared_from_this<VeltrikAppKit> {
 public:
  /// Prepares the process (settings, method exchanges, observers, dock menu) and gives the object to the caller.
  static std::shared_ptr<VeltrikAppKit> make();
  /// Writes ">>> veltrikAppKit deinit" to standard output.
  ~VeltrikAppKit() override;

  std::shared_ptr<VeltrikAppKitDelegateProtocol> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<VeltrikAppKitDelegateProtocol> delegate) override;
  bool isFullscreenMode() const override;
  void bindNSWindowWithUIWindowID(const std::string& uiWindowID, WindowBinding uiKitBinding) override;

  // VeltrikAppKit+Lifecycle.cpp
  void activeIgnoringOtherApps() override;
  void terminate() override;
  void applicationDidFinishLaunching() override;
  void applicationWillTerminate() override;

  // VeltrikAppKit+Input.cpp
  /// The workspace's notifications that the screens went to sleep, and woke; others are ignored.
  void notifyWillSleep(const platform::Notification& notification);
  void notifyDidWake(const platform::Notification& notification);

  // VeltrikAppKit+Alerts.cpp
  bool isAppKitAlertPresented() const override;
  void showAlertWith(const std::string& title, const std::string& message, const std::string& confirmTitle,
                     const std::optional<std::string>& cancelTitle, std::function<void()> confirmCompletion) override;
  void showSheetAlertWith(const std::string& title, const std::string& message, const std::string& confirmTitle,
                          const std::optional<std::string>& cancelTitle, const std::optional<std::string>& uiWindowID,
                          std::function<void()> confirmCompletion) override;
  void showOpenPanelWithCompletion(std::function<void(const std::vector<platform::URL>&)> completion) override;
  void showSavePanel(const std::string& fileName, const std::optional<platform::URL>& targetPath,
                     std::function<void(const std::optional<platform::URL>&)> completion) override;
  void showDownloadPathSavePanel(const platform::URL& currentFolder,
                                 std::function<void(const platform::URL&)> completion) override;
  std::optional<platform::Bitmap> fileIconForType(const std::string& type) const override;

  // VeltrikAppKit+System.cpp
  std::shared_ptr<VeltrikStatusBarItemProtocol> createStatusBarItemWithImageName(const std::string& imageName) override;
  void setBadgeLabel(const std::optional<std::string>& label) override;
  void openFileAtPath(const std::string& path) override;
  void openInFinderAtPath(const std::string& path) override;
  void setAutoLaunchApp(bool enabled) override;
  bool isAppRunningWith(const std::string& bundleIdentifier) const override;

  // VeltrikAppKit+Update.cpp
  void restartWithDownloadedUpdateFilePath(const std::string& path) override;

  // VeltrikAppKit+WebView.cpp
  bool hasActiveWebView() const override;
  void openWebViewWithUrl(const std::string& url, const std::optional<std::string>& customHeader,
                          const std::optional<std::string>& customUserAgent,
                          const platform::Dictionary& options) override;

 private:
  VeltrikAppKit() = default;
  void prepare();
  void observeScreens();
  void startIdleTimer();
  void installKeyboardMonitor();
  bool letsKeyGoOn(const platform::NSEvent& event) const;
  bool isCompanionSwitch(const platform::NSEvent& event) const;
  bool isLeftByHost(const platform::NSEvent& event) const;
  void observeWebViewFeedback();
  void buildDockMenu();
  void takeOverApplicationDelegate();
  void observeActivation();
  void applicationDidBecomeActive();
  void openMainWindow();
  void handleWebViewFeedBack(const platform::Dictionary& userInfo);
  void openWebView(const WebViewRequest& request);
  void unzipWebViewApp(const platform::URL& archive, const WebViewRequest& request);
  void launchWebViewApp(const WebViewRequest& request);
  void webViewDidLaunch(bool success, const WebViewRequest& request);
  void tellWebViewDownload(bool completed) const;
  /// All companions that run.
  static void activateWebViews();
  static void terminateWebViews();

  std::weak_ptr<VeltrikAppKitDelegateProtocol> delegate_;
  platform::EventMonitorToken keyboardMonitor_ = 0;
  std::shared_ptr<AppRestarter> appRestarter_;
  /// 1 while the launch of the companion is being tried again.
  int webViewOpeningRetryCount_ = 0;
  std::shared_ptr<platform::Timer> idleTimer_;
};

}  // namespace veltrik
