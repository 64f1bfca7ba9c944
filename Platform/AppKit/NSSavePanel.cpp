#include "Platform/AppKit/NSSavePanel.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

/// What the model takes for the dialog's size; the desktop has its own.
constexpr Rect kContent{0, 0, 640, 440};

std::string fileName(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](char byte) { return byte == '/' || byte == '\0'; }, '_');
  return name == "." || name == ".." ? std::string() : name;
}

}  // namespace

std::shared_ptr<NSSavePanel> NSSavePanel::make() {
  struct Made : NSSavePanel {};
  auto panel = std::make_shared<Made>();
  introduce(panel);
  return panel;
}

NSSavePanel::NSSavePanel() : NSPanel(kContent, StyleMask::kTitled | StyleMask::kClosable) {}

std::optional<URL> NSSavePanel::url() const {
  return chosen_.empty() ? std::nullopt : std::optional(chosen_.front());
}

port::FilePanelRequest NSSavePanel::request() const {
  return {port::FilePanelRequest::Kind::save, false, fileName(name_), directory_ ? directory_->path() : std::string()};
}

std::unique_ptr<port::Surface> NSSavePanel::makeSurface(port::SurfaceSink& sink, const port::SurfaceState& state) {
  if (auto* panels = Session::current().backend().filePanels())
    return panels->makePanel(sink, state, request(), [this](const auto& paths) { answered(paths); });
  NSLog("A file panel is left at once: this machine has none");
  const auto panel = std::static_pointer_cast<NSSavePanel>(shared_from_this());
  DispatchQueue::main().async([panel] { panel->cancel(); });
  return NSPanel::makeSurface(sink, state);
}

void NSSavePanel::answered(const std::optional<std::vector<std::string>>& paths) {
  for (const std::string& path : paths.value_or(std::vector<std::string>())) chosen_.push_back(URL::fileURL(path));
  close();
}

void NSSavePanel::begin(std::function<void(int response)> completion) {
  requireMainThread("NSSavePanel::begin");
  completion_ = std::move(completion);
  if (isClosed()) return didClose();
  makeKeyAndOrderFront(nullptr);
  belongToMainWindow();
}

void NSSavePanel::didClose() {
  if (const auto completion = std::exchange(completion_, nullptr))
    completion(chosen_.empty() ? ModalResponse::kCancel : ModalResponse::kOK);
}

int NSSavePanel::runModal() {
  const auto panel = std::static_pointer_cast<NSSavePanel>(shared_from_this());
  // However the session ends, the desktop's dialog goes with it.
  struct Closing {
    NSWindow& window;
    ~Closing() { window.close(); }
  } closing{*this};
  NSApplication::shared().runModal(panel);
  return chosen_.empty() ? ModalResponse::kCancel : ModalResponse::kOK;
}

void NSSavePanel::keyDown(const EventPointer& event) {
  if (event->keyCode != KeyCode::kEscape) return NSPanel::keyDown(event);
  const auto alive = shared_from_this();
  cancel();
}

}  // namespace platform
