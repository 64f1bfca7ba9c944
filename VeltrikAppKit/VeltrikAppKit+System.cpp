#include "VeltrikAppKit/Unavailable.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

std::shared_ptr<VeltrikStatusBarItemProtocol> VeltrikAppKit::createStatusBarItemWithImageName(const std::string&) {
  logUnavailable("createStatusBarItemWithImageName");
  return nullptr;
}

void VeltrikAppKit::setBadgeLabel(const std::optional<std::string>&) {
  logUnavailable("setBadgeLabel");
}

void VeltrikAppKit::openFileAtPath(const std::string&) {
  logUnavailable("openFileAtPath");
}

void VeltrikAppKit::openInFinderAtPath(const std::string&) {
  logUnavailable("openInFinderAtPath");
}

void VeltrikAppKit::setAutoLaunchApp(bool) {
  logUnavailable("setAutoLaunchApp");
}

bool VeltrikAppKit::isAppRunningWith(const std::string&) const {
  return false;
}

void VeltrikAppKit::restartWithDownloadedUpdateFilePath(const std::string&) {
  logUnavailable("restartWithDownloadedUpdateFilePath");
}

}  // namespace veltrik
