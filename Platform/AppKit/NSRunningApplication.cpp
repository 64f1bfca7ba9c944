#include "Platform/AppKit/NSRunningApplication.h"

#include "Platform/Foundation/Session.h"

namespace platform {

std::vector<std::shared_ptr<NSRunningApplication>> NSRunningApplication::runningApplications(
    const std::string& bundleIdentifier) {
  std::vector<std::shared_ptr<NSRunningApplication>> found;
  if (bundleIdentifier.empty()) return found;
  for (ApplicationProcess& process : ApplicationProcess::all())
    if (process.bundleIdentifier == bundleIdentifier)
      found.push_back(std::make_shared<NSRunningApplication>(std::move(process)));
  return found;
}

bool NSRunningApplication::activate() const {
  port::Applications* const applications = Session::current().backend().applications();
  return applications && applications->activate(process_.id);
}

}  // namespace platform
