#include "Platform/AppKit/NSApplication.h"

#include <limits>

#include "Platform/AppKit/MenuTracking.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

const ReopenMessage kShouldHandleReopen{"applicationShouldHandleReopen:hasVisibleWindows:"};
const ShouldTerminateMessage kShouldTerminate{"applicationShouldTerminate:"};
const DockMenuMessage kDockMenu{"applicationDockMenu:"};

namespace {

template <class Signature>
bool answers(const std::shared_ptr<NSApplicationDelegate>& delegate, const runtime::Message<Signature>& message) {
  return delegate && delegate->runtimeClass().responds(message.selector);
}

}  // namespace

NSApplication& NSApplication::shared() {
  return Session::current().service<NSApplication>();
}

NSApplication::NSApplication() : menus_(std::make_unique<MenuTracking>()) {
  RunLoop::main().addSource([this] { return turn(); });
}

NSApplication::~NSApplication() {
  // Windows that others still hold outlive the machine they were shown on.
  for (const auto& [number, window] : windows_) {
    window->closed_ = true;
    window->visible_ = false;
    window->surface_ = nullptr;
  }
}

int NSApplication::run() {
  stopped_ = false;
  RunLoop::main().runUntil([this] { return stopped_; }, std::numeric_limits<double>::infinity());
  return 0;
}

void NSApplication::stop() {
  stopped_ = true;
  menus_->closeAll();
  Session::current().backend().loop().wake();
}

void NSApplication::terminate(const void* /*sender*/) {
  requireMainThread("NSApplication::terminate");
  if (asking_ || terminating_) return;
  const auto asked = delegate();
  if (answers(asked, kShouldTerminate)) {
    struct Asking {
      bool& flag;
      explicit Asking(bool& asking) : flag(asking) { flag = true; }
      ~Asking() { flag = false; }
    } asking(asking_);
    if (runtime::send(kShouldTerminate, *asked) != TerminateReply::now) return;
  }
  terminating_ = true;
  stop();
}

bool NSApplication::reopen() {
  const auto asked = delegate();
  const bool answer =
      answers(asked, kShouldHandleReopen) ? runtime::send(kShouldHandleReopen, *asked, !ordered_.empty()) : true;
  if (!answer || !ordered_.empty()) return answer;
  std::shared_ptr<NSWindow> shown;
  for (const auto& window : windows())
    if (!shown || (window->isMiniaturized() && !shown->isMiniaturized())) shown = window;
  if (shown) shown->makeKeyAndOrderFront(nullptr);
  return answer;
}

std::shared_ptr<NSMenu> NSApplication::dockMenu() {
  const auto asked = delegate();
  return answers(asked, kDockMenu) ? runtime::send(kDockMenu, *asked) : nullptr;
}

}  // namespace platform
