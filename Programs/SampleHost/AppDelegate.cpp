#include "Programs/SampleHost/AppDelegate.h"

#include <utility>

namespace samplehost {

namespace {
constexpr const char* kName = "app";
}

void AppDelegate::tell(const char* name, Value::Array arguments) const {
  events_.emit({name, kName, std::move(arguments)});
}

bool AppDelegate::handleFunctionKey(std::int32_t keyCode, const std::vector<veltrik::KeyModifier>& modifiers,
                                    std::int32_t eventType) {
  Value::Array codes;
  for (const veltrik::KeyModifier modifier : modifiers) codes.push_back(static_cast<std::int64_t>(modifier));
  tell("handleFunctionKey", {keyCode, codes, eventType});
  return answers_.get<bool>(kName, "handleFunctionKey");
}

void AppDelegate::notifyWorkspaceEnvironment(std::int32_t environment) {
  tell("notifyWorkspaceEnvironment", {environment});
}

void AppDelegate::notifyUserInteraction(std::int32_t interaction) {
  tell("notifyUserInteraction", {interaction});
}

bool AppDelegate::applicationShouldHandleReopen() {
  tell("applicationShouldHandleReopen");
  return answers_.get<bool>(kName, "applicationShouldHandleReopen");
}

void AppDelegate::applicationDidBecomeActive() {
  tell("applicationDidBecomeActive");
}

void AppDelegate::applicationUserTerminate() {
  tell("applicationUserTerminate");
}

void AppDelegate::openMainWindow() {
  tell("openMainWindow");
}

void AppDelegate::handleWebViewFeedBackWithUserInfo(const std::optional<std::string>& json) {
  tell("handleWebViewFeedBackWithUserInfo", {Codec<std::optional<std::string>>::encode(json)});
}

void AppDelegate::webViewDownloadCompletedWithResult(bool result) {
  tell("webViewDownloadCompletedWithResult", {result});
}

}  // namespace samplehost
