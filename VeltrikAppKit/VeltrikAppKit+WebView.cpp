#include "Platform/Foundation/Log.h"
#include "VeltrikAppKit/DictionaryText.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/ProcessState.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/Unavailable.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::Dictionary;

bool VeltrikAppKit::hasActiveWebView() const {
  return false;
}

void VeltrikAppKit::openWebViewWithUrl(const std::string&, const std::optional<std::string>&,
                                       const std::optional<std::string>&, const Dictionary&) {
  logUnavailable("openWebViewWithUrl");
}

void VeltrikAppKit::observeWebViewFeedback() {
  addObserver(this, MireloDistributedNotification::webViewFeedback,
              [weak = weak_from_this()](const Dictionary& userInfo) {
                if (const auto self = weak.lock()) self->handleWebViewFeedBack(userInfo);
              });
}

void VeltrikAppKit::handleWebViewFeedBack(const Dictionary& userInfo) {
  platform::NSLog("WebView >>>> notification userInfo = " + textualForm(userInfo));
  // On the bus a notification without user info and one with an empty dictionary are the same.
  const auto json = userInfo.empty() ? std::nullopt : jsonString(userInfo);
  if (const auto delegate = ProcessState::current().sharedDelegate.lock())
    delegate->handleWebViewFeedBackWithUserInfo(json);
}

}  // namespace veltrik
