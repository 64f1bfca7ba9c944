#include "Platform/AppKit/NSWorkspace.h"

#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"

namespace platform {

NSWorkspace& NSWorkspace::shared() {
  return Session::current().service<NSWorkspace>();
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
