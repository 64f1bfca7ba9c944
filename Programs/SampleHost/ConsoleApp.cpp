#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/HostArguments.h"

namespace samplehost {

using platform::URL;
using platform::Value;
using std::optional;
using std::string;
using veltrik::VeltrikAppKitProtocol;

namespace {

VeltrikAppKitProtocol& appKit(ConsoleContext& context) {
  return context.host.appKit();
}

/// A block of the host's that tells of its being called.
template <class... Arguments>
auto telling(ConsoleContext& context, const char* name) {
  return [&events = context.host.events(), name](const Arguments&... arguments) {
    events.emit({name, "app", {Codec<Arguments>::encode(arguments)...}});
  };
}

void addLife(ConsoleCalls& calls) {
  using A = VeltrikAppKitProtocol;
  calls.add("delegate", [](ConsoleContext& c) { return Value(appKit(c).delegate() ? Value("host") : Value()); });
  calls.add("setDelegate", [](ConsoleContext& c, optional<DelegateName> delegate) {
    appKit(c).setDelegate(delegate ? c.host.appDelegate() : nullptr);
  });
  calls.member("applicationDidFinishLaunching", appKit, &A::applicationDidFinishLaunching);
  calls.member("applicationWillTerminate", appKit, &A::applicationWillTerminate);
  calls.member("activeIgnoringOtherApps", appKit, &A::activeIgnoringOtherApps);
  calls.member("terminate", appKit, &A::terminate);
  calls.member("isFullscreenMode", appKit, &A::isFullscreenMode);
  calls.add("bindNSWindowWithUIWindowID", [](ConsoleContext& c, const string& identifier) { c.host.bind(identifier); });
}

void addAlertsAndPanels(ConsoleCalls& calls) {
  using A = VeltrikAppKitProtocol;
  calls.member("isAppKitAlertPresented", appKit, &A::isAppKitAlertPresented);
  calls.add("showAlertWith", [](ConsoleContext& c, const string& title, const string& message, const string& confirm,
                                const optional<string>& cancel) {
    appKit(c).showAlertWith(title, message, confirm, cancel, telling<>(c, "confirmCompletion"));
  });
  calls.add("showSheetAlertWith",
            [](ConsoleContext& c, const string& title, const string& message, const string& confirm,
               const optional<string>& cancel, const optional<string>& window) {
              appKit(c).showSheetAlertWith(title, message, confirm, cancel, window, telling<>(c, "confirmCompletion"));
            });
  calls.add("showOpenPanelWithCompletion", [](ConsoleContext& c) {
    appKit(c).showOpenPanelWithCompletion(telling<std::vector<URL>>(c, "openPanelCompletion"));
  });
  calls.add("showSavePanel", [](ConsoleContext& c, const string& name, const optional<URL>& folder) {
    appKit(c).showSavePanel(name, folder, telling<optional<URL>>(c, "savePanelCompletion"));
  });
  calls.add("showDownloadPathSavePanel", [](ConsoleContext& c, const URL& folder) {
    appKit(c).showDownloadPathSavePanel(folder, telling<URL>(c, "downloadPathSavePanelCompletion"));
  });
  calls.member("fileIconForType", appKit, &A::fileIconForType);
}

void addServices(ConsoleCalls& calls) {
  using A = VeltrikAppKitProtocol;
  calls.add("createStatusBarItemWithImageName", createStatusItem);
  calls.member("setBadgeLabel", appKit, &A::setBadgeLabel);
  calls.member("openFileAtPath", appKit, &A::openFileAtPath);
  calls.member("openInFinderAtPath", appKit, &A::openInFinderAtPath);
  calls.member("setAutoLaunchApp", appKit, &A::setAutoLaunchApp);
  calls.member("isAppRunningWith", appKit, &A::isAppRunningWith);
  calls.member("restartWithDownloadedUpdateFilePath", appKit, &A::restartWithDownloadedUpdateFilePath);
  calls.member("hasActiveWebView", appKit, &A::hasActiveWebView);
  calls.member("openWebViewWithUrl", appKit, &A::openWebViewWithUrl);
}

}  // namespace

ConsoleCalls appCalls() {
  ConsoleCalls calls;
  addLife(calls);
  addAlertsAndPanels(calls);
  addServices(calls);
  return calls;
}

}  // namespace samplehost
