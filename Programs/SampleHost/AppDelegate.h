#pragma once

#include "Programs/SampleHost/Answers.h"
#include "Programs/SampleHost/HostEvent.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"

namespace samplehost {

/// The principal object's delegate: tells what it hears, answers from the table. Main thread.
class AppDelegate : public veltrik::VeltrikAppKitDelegateProtocol {
 public:
  /// Both are borrowed and outlive the delegate.
  AppDelegate(const Answers& answers, const HostEvents& events) : answers_(answers), events_(events) {}

  bool handleFunctionKey(std::int32_t keyCode, const std::vector<veltrik::KeyModifier>& modifiers,
                         std::int32_t eventType) override;
  void notifyWorkspaceEnvironment(std::int32_t environment) override;
  void notifyUserInteraction(std::int32_t interaction) override;
  bool applicationShouldHandleReopen() override;
  void applicationDidBecomeActive() override;
  void applicationUserTerminate() override;
  void openMainWindow() override;
  void handleWebViewFeedBackWithUserInfo(const std::optional<std::string>& json) override;
  void webViewDownloadCompletedWithResult(bool result) override;

 private:
  void tell(const char* name, Value::Array arguments = {}) const;

  const Answers& answers_;
  const HostEvents& events_;
};

}  // namespace samplehost
