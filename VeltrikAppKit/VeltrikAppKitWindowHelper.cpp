#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Log.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/TextInputNSView.h"

namespace veltrik {

using platform::NSApplication;
using platform::NSWindow;

VeltrikAppKitWindowHelper::~VeltrikAppKitWindowHelper() {
  platform::NSLog("[🍀VERBOSE] deinit VeltrikAppKitWindowHelper");
}

void VeltrikAppKitWindowHelper::setDelegate(std::weak_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate) {
  delegate_ = std::move(delegate);
}

std::shared_ptr<NSWindow> VeltrikAppKitWindowHelper::nsWindow() const {
  return windowNumber_ ? NSApplication::shared().windowWithNumber(*windowNumber_) : nullptr;
}

double VeltrikAppKitWindowHelper::alpha() const {
  const auto window = nsWindow();
  return window ? window->alphaValue() : 0.0;
}

void VeltrikAppKitWindowHelper::setAlpha(double alpha) {
  if (const auto window = nsWindow()) window->setAlphaValue(alpha);
}

bool VeltrikAppKitWindowHelper::alwaysOnTop() const {
  const auto window = nsWindow();
  return window && window->level() == platform::WindowLevel::kFloating;
}

void VeltrikAppKitWindowHelper::setAlwaysOnTop(bool onTop) {
  if (const auto window = nsWindow())
    window->setLevel(onTop ? platform::WindowLevel::kFloating : platform::WindowLevel::kNormal);
}

bool VeltrikAppKitWindowHelper::isWindowHidden() const {
  const auto window = nsWindow();
  return !window || !window->isVisible();
}

void VeltrikAppKitWindowHelper::setIsWindowHidden(bool hidden) {
  if (const auto window = nsWindow()) window->setIsVisible(!hidden);
}

bool VeltrikAppKitWindowHelper::isWindowRestorable() const {
  const auto window = nsWindow();
  return window && window->isRestorable();
}

void VeltrikAppKitWindowHelper::setIsWindowRestorable(bool restorable) {
  if (const auto window = nsWindow()) window->setRestorable(restorable);
}

platform::Rect VeltrikAppKitWindowHelper::nsWindowFrame() const {
  const auto window = nsWindow();
  return window ? window->frame() : platform::Rect();
}

double VeltrikAppKitWindowHelper::titleBarHeight() const {
  return standardTitleBarHeight();
}

bool VeltrikAppKitWindowHelper::hasChildWindow() const {
  const auto window = nsWindow();
  return window && !window->childWindows().empty();
}

bool VeltrikAppKitWindowHelper::isCapsLockKeyDown() const {
  const auto event = NSApplication::shared().currentEvent();
  return event && (event->modifierFlags & platform::ModifierFlag::kCapsLock) != 0;
}

bool VeltrikAppKitWindowHelper::isPopoverWindow() const {
  const auto window = nsWindow();
  return window && window->attached().get(kIsPopover);
}

bool VeltrikAppKitWindowHelper::isSheetWindow() const {
  const auto window = nsWindow();
  return window && window->isSheet();
}

bool VeltrikAppKitWindowHelper::isMainNSWindow() const {
  const auto window = nsWindow();
  return window && window->isMainWindow();
}

bool VeltrikAppKitWindowHelper::isKeyNSWindow() const {
  const auto window = nsWindow();
  return window && window->isKeyWindow();
}

bool VeltrikAppKitWindowHelper::isForcedClose() const {
  const auto window = nsWindow();
  return window && window->attached().get(kIsForcedClose);
}

}  // namespace veltrik
