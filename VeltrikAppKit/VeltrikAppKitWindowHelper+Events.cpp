#include <algorithm>
#include <memory>
#include <vector>

#include "Platform/AppKit/Attempts.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::DispatchQueue;
using platform::NSApplication;
using platform::NSWindow;
using platform::Size;

namespace {

void closeChildWindows(const NSWindow& window) {
  for (const auto& child : window.childWindows()) child->close();
}

/// Nothing is posted for a window whose host has gone or doesn't name it.
void postWindowEvent(VeltrikAppKitWindowHelperDelegateProtocol* delegate, MireloDistributedNotification notification) {
  const std::string uiWindowID = delegate ? delegate->uiWindowID() : "";
  if (!uiWindowID.empty()) post({{"parentID", uiWindowID}}, notification);
}

void closeAbandonedPopover(NSWindow& window) {
  if (window.attached().get(kIsPopover) && window.childWindows().empty()) window.close();
}

}  // namespace

// What the window tells. The window keeps its delegate, this helper, alive for the length of each call.

bool VeltrikAppKitWindowHelper::windowShouldClose(NSWindow& window) {
  closeChildWindows(window);
  const auto delegate = delegate_.lock();
  return !delegate || delegate->windowShouldClose();
}

void VeltrikAppKitWindowHelper::windowWillClose(NSWindow& /*window*/) {
  if (const auto window = nsWindow(); window && !window->frameAutosaveName().empty())
    window->saveFrameUsingName(window->frameAutosaveName());
  if (const auto delegate = delegate_.lock()) delegate->windowWillClose();
  postWindowEvent(delegate_.lock().get(), MireloDistributedNotification::parentWindowWillClose);
}

void VeltrikAppKitWindowHelper::windowDidBecomeMain(NSWindow& window) {
  // Whatever the delegate throws, a main window has its monitors.
  platform::Attempts attempt;
  attempt([&] {
    if (const auto delegate = delegate_.lock()) delegate->windowDidBecomeMain();
  });
  // The delegate may have closed the window or made another one main; then nobody would take the monitors away.
  if (window.isMainWindow()) installEventMonitors();
  DispatchQueue::main().async([self = shared_from_this()] {
    postWindowEvent(self->delegate_.lock().get(), MireloDistributedNotification::parentWindowDidBecomeMain);
  });
  attempt.finish();
}

void VeltrikAppKitWindowHelper::windowDidResignMain(NSWindow& /*window*/) {
  removeEventMonitors();
  platform::Attempts attempt;
  attempt([&] {
    if (const auto window = nsWindow(); window && window->isVisible())
      if (const auto delegate = delegate_.lock()) delegate->windowDidResignMain();
  });
  if (closeWithResignMainWindow_)
    DispatchQueue::main().async([weak = weak_from_this()] {
      const auto self = weak.lock();
      if (const auto window = self ? self->nsWindow() : nullptr) closeAbandonedPopover(*window);
    });
  attempt.finish();
}

void VeltrikAppKitWindowHelper::windowDidBecomeKey(NSWindow& /*window*/) {
  if (const auto delegate = delegate_.lock()) delegate->windowDidBecomeKey();
}

void VeltrikAppKitWindowHelper::windowDidResignKey(NSWindow& /*window*/) {
  if (const auto delegate = delegate_.lock()) delegate->windowDidResignKey();
}

Size VeltrikAppKitWindowHelper::windowWillResizeToSize(NSWindow& /*window*/, Size size) {
  if (const auto delegate = delegate_.lock()) delegate->windowWillResize(size);
  return size;
}

void VeltrikAppKitWindowHelper::windowDidResize(NSWindow& /*window*/) {
  const auto window = nsWindow();
  if (!window) return;
  if (const auto delegate = delegate_.lock()) delegate->windowDidResize(window->frame().size());
  windowFrameDidChangeSubject_.send({window->frame(), true});
}

void VeltrikAppKitWindowHelper::windowWillMove(NSWindow& /*window*/) {
  windowMoveOn_ = true;
}

void VeltrikAppKitWindowHelper::windowDidMiniaturize(NSWindow& /*window*/) {
  if (const auto delegate = delegate_.lock()) delegate->windowDidMiniaturize();
}

void VeltrikAppKitWindowHelper::windowDidDeminiaturize(NSWindow& /*window*/) {
  if (const auto delegate = delegate_.lock()) delegate->windowDidDeminiaturize();
}

// What the host asks for.

void VeltrikAppKitWindowHelper::makeMainAndKeyNSWindow() {
  const auto window = nsWindow();
  if (!window) return;
  if (window->canBecomeMain()) window->makeMain();
  window->makeKeyAndOrderFront(nullptr);
}

void VeltrikAppKitWindowHelper::becomeFirstWindow() {
  if (const auto window = nsWindow()) window->makeKeyAndOrderFront(this);
}

void VeltrikAppKitWindowHelper::orderFrontNSWindow() {
  if (const auto window = nsWindow()) window->makeKeyAndOrderFront(nullptr);
}

void VeltrikAppKitWindowHelper::orderFrontBehideCurrentWindows() {
  const auto window = nsWindow();
  if (!window) return;
  window->orderFront();
  // A hidden window has no place in the order to go behind.
  auto bound = NSApplication::shared().windows();
  std::erase_if(bound, [](const auto& each) { return !each->attached().get(kIsHelperBound) || !each->isVisible(); });
  const auto backmost = std::max_element(
      bound.begin(), bound.end(), [](const auto& a, const auto& b) { return a->orderedIndex() < b->orderedIndex(); });
  if (bound.size() >= 2 && *backmost != window)
    window->order(platform::WindowOrdering::below, (*backmost)->windowNumber());
}

void VeltrikAppKitWindowHelper::minimize() {
  if (const auto window = nsWindow()) window->miniaturize();
}

void VeltrikAppKitWindowHelper::maximize() {
  if (const auto window = nsWindow()) window->zoom();
}

void VeltrikAppKitWindowHelper::closeWindow() {
  const auto window = nsWindow();
  if (!window) return;
  if (const auto sheet = window->attachedSheet()) window->endSheet(*sheet);
  closeChildWindows(*window);
  window->close();
}

void VeltrikAppKitWindowHelper::closePopoverWindow() {
  const auto window = nsWindow();
  if (!window || !window->attached().get(kIsPopover)) return;
  closeChildWindows(*window);
  window->close();
}

void VeltrikAppKitWindowHelper::closeSheetWindow() {
  const auto window = nsWindow();
  NSWindow* parent = window ? window->sheetParent() : nullptr;
  if (!parent) return;
  parent->endSheet(*window);
  window->close();
}

void VeltrikAppKitWindowHelper::closeChildAlert() {
  const auto window = nsWindow();
  const auto sheet = window ? window->attachedSheet() : nullptr;
  if (!sheet) return;
  window->endSheet(*sheet);
  sheet->close();
}

}  // namespace veltrik
