#include "Platform/AppKit/NSDockTile.h"
#include "Platform/AppKit/NSRunningApplication.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/LoginItem.h"
#include "VeltrikAppKit/VeltrikAppKit.h"
#include "VeltrikAppKit/VeltrikStatusBarItem.h"

namespace veltrik {

namespace {

constexpr const char* kLoginItemIdentifier = "com.brenholt.macos.mirelo.startuplauncher";
constexpr const char* kLoginItemName = "Mirelo";

/// Every occurrence goes, wherever it stands in the text.
std::string withoutFileScheme(std::string text) {
  constexpr std::string_view kScheme = "file://";
  for (std::size_t at = text.find(kScheme); at != std::string::npos; at = text.find(kScheme, at))
    text.erase(at, kScheme.size());
  return text;
}

}  // namespace

std::shared_ptr<VeltrikStatusBarItemProtocol> VeltrikAppKit::createStatusBarItemWithImageName(
    const std::string& imageName) {
  return std::make_shared<VeltrikStatusBarItem>(imageName);
}

void VeltrikAppKit::setBadgeLabel(const std::optional<std::string>& label) {
  platform::NSDockTile::shared().setBadgeLabel(label);
}

void VeltrikAppKit::openFileAtPath(const std::string& path) {
  platform::NSWorkspace::shared().openFile(withoutFileScheme(path));
}

void VeltrikAppKit::openInFinderAtPath(const std::string& path) {
  platform::NSWorkspace::shared().activateFileViewerSelecting(platform::URL::fileURL(withoutFileScheme(path)));
}

void VeltrikAppKit::setAutoLaunchApp(bool enabled) {
  try {
    platform::setLoginItemEnabled({kLoginItemIdentifier, kLoginItemName, platform::mainExecutablePath()}, enabled);
  } catch (const platform::CocoaError& error) {
    platform::NSLog(std::string("The login item can't be set: ") + error.what());
  }
}

bool VeltrikAppKit::isAppRunningWith(const std::string& bundleIdentifier) const {
  return !platform::NSRunningApplication::runningApplications(bundleIdentifier).empty();
}

}  // namespace veltrik
