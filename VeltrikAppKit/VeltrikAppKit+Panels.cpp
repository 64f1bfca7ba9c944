#include <utility>

#include "Platform/AppKit/NSOpenPanel.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/UserDirectories.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::NSOpenPanel;
using platform::NSSavePanel;
using platform::URL;
namespace ModalResponse = platform::ModalResponse;

namespace {

std::optional<URL> rebuilt(const std::optional<URL>& url) {
  return url ? URL::fromString(url->absoluteString()) : std::nullopt;
}

}  // namespace

void VeltrikAppKit::showOpenPanelWithCompletion(std::function<void(const std::vector<URL>&)> completion) {
  const auto panel = NSOpenPanel::make();
  panel->setAllowsMultipleSelection(true);
  if (panel->runModal() == ModalResponse::kOK && completion) completion(panel->urls());
}

void VeltrikAppKit::showSavePanel(const std::string& fileName, const std::optional<URL>& targetPath,
                                  std::function<void(const std::optional<URL>&)> completion) {
  const auto panel = NSSavePanel::make();
  panel->setLevel(platform::WindowLevel::kModalPanel);
  panel->setNameFieldStringValue(fileName);
  panel->setDirectoryURL(targetPath ? targetPath : platform::downloadsDirectory());
  panel->begin([weak = std::weak_ptr(panel), completion = std::move(completion)](int response) {
    if (!completion) return;
    const auto alive = weak.lock();
    const auto chosen = alive && response == ModalResponse::kOK ? alive->url() : std::nullopt;
    const auto place = rebuilt(chosen);
    if (place || !chosen) completion(place);
  });
}

void VeltrikAppKit::showDownloadPathSavePanel(const URL& currentFolder, std::function<void(const URL&)> completion) {
  const auto panel = NSOpenPanel::make();
  panel->setAllowsMultipleSelection(false);
  panel->setCanChooseDirectories(true);
  panel->setCanChooseFiles(false);
  panel->setLevel(platform::WindowLevel::kModalPanel);
  panel->setNameFieldStringValue(currentFolder.lastPathComponent());
  panel->setDirectoryURL(currentFolder);
  if (panel->runModal() != ModalResponse::kOK) return;
  if (const auto folder = rebuilt(panel->url()); folder && completion) completion(*folder);
}

std::optional<platform::Bitmap> VeltrikAppKit::fileIconForType(const std::string& type) const {
  return platform::NSWorkspace::shared().iconForFileType(type)->bestRepresentation(1);
}

}  // namespace veltrik
