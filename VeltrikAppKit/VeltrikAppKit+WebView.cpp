#include "Platform/AppKit/NSRunningApplication.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Log.h"
#include "VeltrikAppKit/DictionaryText.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/ProcessState.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKit.h"
#include "VeltrikAppKit/WebViewRequest.h"

namespace veltrik {

using platform::Dictionary;
using platform::DispatchQueue;
using platform::NSLog;
using platform::NSRunningApplication;
using platform::NSWorkspace;
using platform::URL;

namespace {

constexpr double kPageParametersDelay = 0.5;

bool unpacked(const URL& archive) {
  try {
    unpackWebViewArchive(archive);
    return true;
  } catch (const std::exception&) {
    return false;  // the completion writes the line for it
  }
}

void removeArchive(const URL& archive) {
  try {
    platform::FileManager().removeItem(archive);
  } catch (const platform::CocoaError&) {
    NSLog("WebView >>>> failed to remove zip file");
  }
}

}  // namespace

bool VeltrikAppKit::hasActiveWebView() const {
  return !NSRunningApplication::runningApplications(kWebViewBundleIdentifier).empty();
}

void VeltrikAppKit::activateWebViews() {
  for (const auto& application : NSRunningApplication::runningApplications(kWebViewBundleIdentifier))
    application->activate();
}

void VeltrikAppKit::terminateWebViews() {
  for (const auto& application : NSRunningApplication::runningApplications(kWebViewBundleIdentifier))
    application->terminate();
}

void VeltrikAppKit::openWebViewWithUrl(const std::string& url, const std::optional<std::string>& customHeader,
                                       const std::optional<std::string>& customUserAgent, const Dictionary& options) {
  openWebView({url, customHeader.value_or(""), customUserAgent.value_or(""), options});
}

void VeltrikAppKit::tellWebViewDownload(bool completed) const {
  if (const auto delegate = delegate_.lock()) delegate->webViewDownloadCompletedWithResult(completed);
}

void VeltrikAppKit::openWebView(const WebViewRequest& request) {
  const platform::FileManager files;
  const auto application = webViewAppURL();
  if (!application) {
    NSLog("WebView >>>>> webViewAppUrl invalid");
    return tellWebViewDownload(false);
  }
  NSLog("WebView >>>>> now will find webViewApp url = " + application->absoluteString());
  NSLog("WebView >>>>> now will find webViewApp path = " + application->path());
  if (files.fileExists(application->path())) {
    launchWebViewApp(request);
    return tellWebViewDownload(true);
  }
  const auto archive = webViewArchiveURL();
  NSLog("WebView >>>>> now will find webViewApp zipFile url = " + (archive ? archive->absoluteString() : "none"));
  if (archive && files.fileExists(archive->path())) return unzipWebViewApp(*archive, request);
  NSLog("WebView >>>>> no app or app.zip file");
  tellWebViewDownload(false);
}

void VeltrikAppKit::unzipWebViewApp(const URL& archive, const WebViewRequest& request) {
  NSLog("WebView >>>> start unzip " + archive.absoluteString());
  const auto completion = [weak = weak_from_this(), archive, request](bool success) {
    if (!success) {
      NSLog("WebView >>>>> unzip failed");
      if (const auto self = weak.lock()) self->tellWebViewDownload(false);
      return;
    }
    if (const auto self = weak.lock()) self->launchWebViewApp(request);
    if (const auto self = weak.lock()) self->tellWebViewDownload(true);
    removeArchive(archive);
  };
  DispatchQueue::global().async([archive, completion] {
    const bool success = unpacked(archive);
    DispatchQueue::main().async([completion, success] { completion(success); });
  });
}

void VeltrikAppKit::launchWebViewApp(const WebViewRequest& request) {
  const auto opener = platform::Bundle::main();
  if (opener->bundleIdentifier().empty()) return NSLog("WebView >>>>> invalid opener bundle id");
  const auto application = webViewAppURL();
  if (!application) return NSLog("WebView >>>>> webViewAppUrl invalid2");
  NSWorkspace::OpenConfiguration configuration;
  configuration.promptsUserIfNeeded = false;
  const auto argument = request.launchArgument(opener->url().absoluteString(), opener->bundleIdentifier());
  if (const auto json = jsonString(argument)) configuration.arguments = {*json};
  NSWorkspace::shared().openApplication(*application, configuration,
                                        [weak = weak_from_this(), request](const auto& running, const auto& failure) {
                                          NSLog("WebView >>>>> application open");
                                          if (!failure && running) running->activate();
                                          if (const auto self = weak.lock()) self->webViewDidLaunch(!failure, request);
                                        });
}

void VeltrikAppKit::webViewDidLaunch(bool success, const WebViewRequest& request) {
  if (success) {
    webViewOpeningRetryCount_ = 0;
    return DispatchQueue::main().asyncAfter(kPageParametersDelay, [weak = weak_from_this(), request] {
      if (!weak.expired()) post(request.pageParameters(), MireloDistributedNotification::webViewLoading);
    });
  }
  if (webViewOpeningRetryCount_ != 0) {
    webViewOpeningRetryCount_ = 0;
    return;
  }
  ++webViewOpeningRetryCount_;
  NSLog("WebView >>>>> webview open failed with error, just retry once");
  openWebView(request);
}

void VeltrikAppKit::observeWebViewFeedback() {
  addObserver(this, MireloDistributedNotification::webViewFeedback,
              [weak = weak_from_this()](const Dictionary& userInfo) {
                if (const auto self = weak.lock()) self->handleWebViewFeedBack(userInfo);
              });
}

void VeltrikAppKit::handleWebViewFeedBack(const Dictionary& userInfo) {
  NSLog("WebView >>>> notification userInfo = " + textualForm(userInfo));
  // On the bus a notification without user info and one with an empty dictionary are the same.
  const auto json = userInfo.empty() ? std::nullopt : jsonString(userInfo);
  if (const auto delegate = ProcessState::current().sharedDelegate.lock())
    delegate->handleWebViewFeedBackWithUserInfo(json);
}

}  // namespace veltrik
