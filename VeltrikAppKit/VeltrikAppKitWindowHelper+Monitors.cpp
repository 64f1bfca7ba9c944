#include <memory>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/RunLoop.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/TextInputNSView.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::EventPointer;
using platform::EventType;
using platform::NSApplication;
using platform::NSEvent;
using platform::Point;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

namespace {

/// A point of a window whose usable part is `height` high, in the host's points; the host draws at 77 % of native size.
Point hostPoint(Point inWindow, double height) {
  return {inWindow.x * 100 / 77, (height - inWindow.y) * 100 / 77};
}

bool takesTyping(const NSEvent& event) {
  const auto window = event.window();
  const auto responder = window ? window->firstResponder() : nullptr;
  return std::dynamic_pointer_cast<platform::NSControl>(responder) ||
         std::dynamic_pointer_cast<platform::NSText>(responder);
}

EventPointer rightArrow(EventType type) {
  const auto key = NSApplication::shared().keyWindow();
  auto event = std::make_shared<NSEvent>();
  event->type = type;
  event->modifierFlags = ModifierFlag::kPlainKey | ModifierFlag::kNumericPad | ModifierFlag::kFunction;
  event->timestamp = platform::RunLoop::main().now();
  event->windowNumber = key ? key->windowNumber() : 0;
  event->keyCode = KeyCode::kRightArrow;
  event->characters = event->charactersIgnoringModifiers = "\uF703";
  return event;
}

}  // namespace

void VeltrikAppKitWindowHelper::installEventMonitors() {
  auto& application = NSApplication::shared();
  const auto weak = weak_from_this();
  if (mouseMonitor_ == 0)
    mouseMonitor_ = application.addLocalMonitor(
        eventMask(EventType::leftMouseDown) | eventMask(EventType::rightMouseDown) | eventMask(EventType::leftMouseUp),
        [weak](const EventPointer& event) {
          const auto self = weak.lock();
          return self ? self->handleMouse(event) : event;
        });
  if (keyboardMonitor_ == 0)
    keyboardMonitor_ = application.addLocalMonitor(eventMask(EventType::keyDown), [weak](const EventPointer& event) {
      const auto self = weak.lock();
      return self ? self->handleKey(event) : event;
    });
}

void VeltrikAppKitWindowHelper::removeEventMonitors() {
  for (auto* token : {&mouseMonitor_, &keyboardMonitor_})
    if (const auto installed = std::exchange(*token, 0)) NSApplication::shared().removeMonitor(installed);
}

EventPointer VeltrikAppKitWindowHelper::handleMouse(const EventPointer& event) {
  if (event->type == EventType::leftMouseDown && event->clickCount == 2) {
    if (isDoubleClickConsumed(*event)) return nullptr;
  } else if (event->type == EventType::leftMouseDown && event->clickCount == 1) {
    moveFocusForClick(*event);
  } else if (event->type == EventType::rightMouseDown) {
    if (isRightClickConsumed(*event)) return nullptr;
  } else if (event->type == EventType::leftMouseUp && std::exchange(windowMoveOn_, false)) {
    windowFrameDidChangeSubject_.send({nsWindowFrame(), false});
  }
  return event;
}

bool VeltrikAppKitWindowHelper::isDoubleClickConsumed(const NSEvent& event) {
  const auto window = nsWindow();
  const auto delegate = delegate_.lock();
  if (!window || !delegate || event.windowNumber != window->windowNumber()) return false;
  const double contentHeight = window->frame().height - measuredTitleBarHeight(*window);
  return delegate->mouseDoubleTapped(hostPoint(event.locationInWindow, contentHeight));
}

bool VeltrikAppKitWindowHelper::isRightClickConsumed(const NSEvent& event) {
  const auto window = nsWindow();
  const auto delegate = delegate_.lock();
  if (!window || !delegate || event.windowNumber != window->windowNumber()) return false;
  // The full height: unlike a double click, a right click is not measured from below the title bar.
  return delegate->mouseRightClick(hostPoint(event.locationInWindow, window->frame().height));
}

void VeltrikAppKitWindowHelper::moveFocusForClick(const NSEvent& event) {
  if (!inputView_ || inputView_->inputType() != InputType::common) return;
  const auto window = nsWindow();
  const auto content = window ? window->contentView() : nullptr;
  if (!content) return;
  makeTextViewFirstResponder(inputView_->frame().contains(content->convertTo(event.locationInWindow, nullptr)));
}

EventPointer VeltrikAppKitWindowHelper::handleKey(const EventPointer& event) {
  if (event->modifierFlags != ModifierFlag::kPlainKey || event->keyCode == KeyCode::kEscape) return event;
  const auto key = NSApplication::shared().keyWindow();
  if (key && key->isPanel() && key->performKeyEquivalent(event)) return nullptr;
  const auto delegate = delegate_.lock();
  if (delegate && !delegate->isInputableIosResponder() && !takesTyping(*event)) return nullptr;
  return event;
}

void VeltrikAppKitWindowHelper::generateRightArrowKey() {
  NSApplication::shared().sendEvent(rightArrow(EventType::keyDown));
  NSApplication::shared().sendEvent(rightArrow(EventType::keyUp));
}

platform::Color VeltrikAppKitWindowHelper::nsColorFromHex(std::int32_t hex, double alpha) const {
  const auto component = [hex](int shift) { return ((hex >> shift) & 0xFF) / 255.0; };
  return {component(16), component(8), component(0), alpha};
}

}  // namespace veltrik
