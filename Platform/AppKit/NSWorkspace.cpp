#include "Platform/AppKit/NSWorkspace.h"

#include <algorithm>

#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

ApplicationProcess startedOrFound(const URL& url, const NSWorkspace::OpenConfiguration& configuration) {
  const auto bundle = Bundle::read(url.path());
  if (!bundle) throw CocoaError(CocoaError::Code::fileReadNoSuchFile, url.path(), "not an application bundle");
  if (!configuration.createsNewApplicationInstance) {
    const auto running = ApplicationProcess::all();
    const auto found = std::ranges::find(running, bundle->path(), &ApplicationProcess::bundle);
    if (found != running.end()) return *found;
  }
  return ApplicationProcess::launch(*bundle, configuration.arguments);
}

}  // namespace

NSWorkspace& NSWorkspace::shared() {
  return Session::current().service<NSWorkspace>();
}

void NSWorkspace::openApplication(const URL& url, OpenConfiguration configuration, OpenCompletion completion) {
  requireMainThread("NSWorkspace::openApplication");
  DispatchQueue::global().async([url, configuration = std::move(configuration), completion = std::move(completion)] {
    std::shared_ptr<NSRunningApplication> application;
    std::optional<CocoaError> failure;
    try {
      application = std::make_shared<NSRunningApplication>(startedOrFound(url, configuration));
    } catch (const CocoaError& error) {
      failure = error;
    }
    DispatchQueue::main().async([application, failure, completion] { completion(application, failure); });
  });
}

}  // namespace platform
