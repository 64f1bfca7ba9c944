#include "Platform/AppKit/NSWorkspace.h"

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"

namespace platform {

NSWorkspace& NSWorkspace::shared() {
  return Session::current().service<NSWorkspace>();
}

NSWorkspace::NSWorkspace() {
  if (auto* presence = Session::current().backend().presence())
    presence->setScreensAsleepChanged([this](bool asleep) {
      notificationCenter_.post({asleep ? kWorkspaceScreensDidSleep : kWorkspaceScreensDidWake, this, {}});
    });
}

NSWorkspace::~NSWorkspace() {
  if (auto* presence = Session::current().backend().presence()) presence->setScreensAsleepChanged(nullptr);
}

void NSWorkspace::openApplication(const URL& url, OpenConfiguration configuration, OpenCompletion completion) {
  requireMainThread("NSWorkspace::openApplication");
  DispatchQueue::global().async([url, configuration = std::move(configuration), completion = std::move(completion)] {
    std::shared_ptr<NSRunningApplication> application;
    std::optional<CocoaError> failure;
    try {
      application = std::make_shared<NSRunningApplication>(
          ApplicationProcess::open(url.path(), configuration.arguments, configuration.createsNewApplicationInstance));
    } catch (const CocoaError& error) {
      failure = error;
    }
    DispatchQueue::main().async([application, failure, completion] { completion(application, failure); });
  });
}

}  // namespace platform
