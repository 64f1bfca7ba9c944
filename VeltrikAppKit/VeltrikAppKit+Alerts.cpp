#include <utility>

#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "VeltrikAppKit/Unavailable.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::URL;

bool VeltrikAppKit::isAppKitAlertPresented() const {
  return false;
}

void VeltrikAppKit::showAlertWith(const std::string&, const std::string&, const std::string&,
                                  const std::optional<std::string>&, std::function<void()>) {
  logUnavailable("showAlertWith");
}

void VeltrikAppKit::showSheetAlertWith(const std::string&, const std::string&, const std::string&,
                                       const std::optional<std::string>&, const std::optional<std::string>&,
                                       std::function<void()>) {
  logUnavailable("showSheetAlertWith");
}

void VeltrikAppKit::showOpenPanelWithCompletion(std::function<void(const std::vector<URL>&)>) {
  logUnavailable("showOpenPanelWithCompletion");
}

void VeltrikAppKit::showSavePanel(const std::string&, const std::optional<URL>&,
                                  std::function<void(const std::optional<URL>&)> completion) {
  logUnavailable("showSavePanel");
  // Its contract is to answer always, so that a host never waits for nothing.
  if (completion) platform::DispatchQueue::main().async([block = std::move(completion)] { block(std::nullopt); });
}

void VeltrikAppKit::showDownloadPathSavePanel(const URL&, std::function<void(const URL&)>) {
  logUnavailable("showDownloadPathSavePanel");
}

std::optional<platform::Bitmap> VeltrikAppKit::fileIconForType(const std::string& type) const {
  return platform::NSWorkspace::shared().iconForFileType(type)->bestRepresentation(1);
}

}  // namespace veltrik
