#include "Programs/SampleHost/CompatibilityLayer.h"

#include "Platform/AppKit/NSWindowController.h"

namespace samplehost {

using platform::NSView;
using platform::NSWindow;
using platform::Rect;

std::shared_ptr<NSWindow> CompatibilityLayer::makeWindow(const std::string& identifier, const Rect& frame,
                                                         const std::optional<std::string>& title, unsigned styleMask) {
  auto window = NSWindow::make(frame, styleMask);
  window->setWindowController(std::make_shared<platform::NSWindowController>(window));
  window->setFrame(frame, false);
  const auto content = std::make_shared<NSView>(Rect{{}, window->contentRectForFrameRect(frame).size()});
  window->setContentView(content);
  auto view = std::make_shared<HostView>(content->bounds());
  content->addSubview(view);
  window->makeFirstResponder(view);
  entries_[identifier] = {window, view};
  window->setTitle(title.value_or(identifier));
  return window;
}

std::shared_ptr<NSWindow> CompatibilityLayer::window(const std::string& identifier) const {
  const auto found = entries_.find(identifier);
  const auto window = found == entries_.end() ? nullptr : found->second.window.lock();
  return window && !window->isClosed() ? window : nullptr;
}

std::shared_ptr<HostView> CompatibilityLayer::hostView(const std::string& identifier) const {
  const auto found = entries_.find(identifier);
  return found == entries_.end() ? nullptr : found->second.view.lock();
}

}  // namespace samplehost
