#include "VeltrikAppKit/NSWindow+Veltrik.h"

#include <memory>
#include <utility>

#include "Platform/Foundation/ProcessInfo.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::NSWindow;
using platform::Rect;
using platform::runtime::send;

namespace {

void setTitle(NSWindow& window, const std::string& title) {
  const auto alive = window.shared_from_this();  // the host hears of the window inside
  if (VeltrikAppKitWindowHelper::bindPendingWindow(window, title))
    send(kSetVeltrikTitle, window, std::string());
  else
    send(kSetVeltrikTitle, window, title);
}

void makeKeyAndOrderFront(NSWindow& window, const void* sender) {
  const auto alive = window.shared_from_this();  // any of both steps may lead to its closing
  send(kVeltrikMakeKeyAndOrderFront, window, sender);
  const auto handler = window.attached().get(kFirstOrderFrontHandler);
  if (!handler) return;
  window.attached().set(kFirstOrderFrontHandler, std::function<void(NSWindow&)>());
  handler(window);
}

Rect withoutTopInset(const NSWindow& window, const Rect& frame) {
  const double inset = window.attached().get(kContentTopInset).value_or(0);
  return {frame.x, frame.y, frame.width, frame.height - inset};
}

Rect contentRectForFrameRect(NSWindow& window, const Rect& frame, unsigned styleMask) {
  if (window.attached().get(kIsPopover)) return frame;
  if (window.attached().get(kIsHelperBound) || window.isSheet()) return withoutTopInset(window, frame);
  return send(kVeltrikContentRectForFrameRect, window, frame, styleMask);
}

Rect frameRectForContentRect(NSWindow& window, const Rect& content, unsigned styleMask) {
  if (window.attached().get(kIsPopover)) return content;
  // Unlike the other direction, a sheet gets the system's answer here even when it is bound.
  if (!window.attached().get(kIsHelperBound) || window.isSheet())
    return send(kVeltrikFrameRectForContentRect, window, content, styleMask);
  const double inset = window.attached().get(kContentTopInset).value_or(0);
  return {content.x, content.y, content.width, content.height + inset};
}

/// The class itself remembers that an exchange was made: a second one would undo the first.
template <class Message, class Body>
void exchangeOnce(const Message& original, const Message& replacement, Body body) {
  auto& windowClass = NSWindow::staticClass();
  if (windowClass.addMethod(replacement, body)) windowClass.exchange(original, replacement);
}

}  // namespace

void installWindowMethodExchanges() {
  exchangeOnce(platform::kSetTitle, kSetVeltrikTitle, setTitle);
  exchangeOnce(platform::kMakeKeyAndOrderFront, kVeltrikMakeKeyAndOrderFront, makeKeyAndOrderFront);
  exchangeOnce(platform::kContentRectForFrameRect, kVeltrikContentRectForFrameRect, contentRectForFrameRect);
  exchangeOnce(platform::kFrameRectForContentRect, kVeltrikFrameRectForContentRect, frameRectForContentRect);
}

double standardTitleBarHeight() {
  return platform::operatingSystemVersion() >= 11 ? 29.0 : 23.0;
}

double measuredTitleBarHeight(NSWindow& window) {
  const Rect frame = window.frame();
  return frame.height - window.contentRectForFrameRect(frame).height;
}

}  // namespace veltrik
