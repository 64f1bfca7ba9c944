#include <memory>
#include <string>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/ProcessState.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::DispatchQueue;
using platform::NSApplication;
using platform::NSApplicationDelegate;

namespace {

constexpr double kBecomeActivePostDelay = 0.5;

// The answers that take the place of the host application delegate's own; they run with that delegate as receiver.

bool shouldHandleReopen(NSApplicationDelegate& /*receiver*/, bool /*hasVisibleWindows*/) {
  const auto delegate = ProcessState::current().sharedDelegate.lock();
  return !delegate || delegate->applicationShouldHandleReopen();
}

platform::TerminateReply shouldTerminate(NSApplicationDelegate& /*receiver*/) {
  const auto windows = NSApplication::shared().windows();
  // All marks come first: closing one window may make the host look at another.
  for (const auto& window : windows) window->attached().set(kIsForcedClose, true);
  for (const auto& window : windows) window->close();
  if (const auto delegate = ProcessState::current().sharedDelegate.lock()) delegate->applicationUserTerminate();
  post({}, MireloDistributedNotification::mireloAppWillTerminate);
  return platform::TerminateReply::now;
}

std::shared_ptr<platform::NSMenu> dockMenu(NSApplicationDelegate& /*receiver*/) {
  return ProcessState::current().dockMenu;
}

/// Only where the host's class answers the question itself: nothing is added to it.
template <class Message, class Body>
void takeOver(platform::runtime::Class& hostClass, const Message& message, Body body) {
  if (hostClass.responds(message.selector)) hostClass.replaceMethod(message, body);
}

}  // namespace

void VeltrikAppKit::activeIgnoringOtherApps() {
  NSApplication::shared().activate(true);
}

void VeltrikAppKit::terminate() {
  NSApplication::shared().terminate(nullptr);
}

void VeltrikAppKit::applicationDidFinishLaunching() {
  DispatchQueue::main().async([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    self->takeOverApplicationDelegate();
    self->observeActivation();
  });
}

void VeltrikAppKit::takeOverApplicationDelegate() {
  const auto hostDelegate = NSApplication::shared().delegate();
  if (!hostDelegate) return;
  auto& hostClass = hostDelegate->runtimeClass();
  takeOver(hostClass, platform::kShouldHandleReopen, shouldHandleReopen);
  takeOver(hostClass, platform::kShouldTerminate, shouldTerminate);
  takeOver(hostClass, platform::kDockMenu, dockMenu);
}

void VeltrikAppKit::observeActivation() {
  platform::NotificationCenter::defaultCenter().addObserver(this, platform::kApplicationDidBecomeActive, nullptr,
                                                            [weak = weak_from_this()](const platform::Notification&) {
                                                              if (const auto self = weak.lock())
                                                                self->applicationDidBecomeActive();
                                                            });
}

void VeltrikAppKit::applicationDidBecomeActive() {
  const auto delegate = ProcessState::current().sharedDelegate.lock();
  if (!delegate) return;
  delegate->applicationDidBecomeActive();
  DispatchQueue::main().asyncAfter(kBecomeActivePostDelay, [weak = weak_from_this()] {
    if (!weak.expired()) post({}, MireloDistributedNotification::mireloAppBecomeActive);
  });
}

void VeltrikAppKit::applicationWillTerminate() {
  if (const auto token = std::exchange(keyboardMonitor_, 0)) NSApplication::shared().removeMonitor(token);
  platform::NotificationCenter::defaultCenter().removeObserver(this);
  terminateWebViews();
}

void VeltrikAppKit::openMainWindow() {
  if (const auto delegate = delegate_.lock()) delegate->openMainWindow();
}

}  // namespace veltrik
