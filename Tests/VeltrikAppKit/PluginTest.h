#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"
#include "Tests/LogCapture.h"
#include "Tests/VeltrikAppKit/TestHost.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::NSApplication;
using platform::NSView;
using platform::NSWindow;
using platform::Point;
using platform::Rect;
using platform::Size;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

inline constexpr unsigned kOrdinaryStyle = platform::StyleMask::kTitled | platform::StyleMask::kClosable |
                                           platform::StyleMask::kMiniaturizable | platform::StyleMask::kResizable;

/// A view that takes the focus, as the compatibility layer's does.
class HostView final : public NSView {
 public:
  using NSView::NSView;
  bool acceptsFirstResponder() override { return true; }
  void mouseDown(const platform::EventPointer&) override { ++mouseDowns; }
  void keyDown(const platform::EventPointer& event) override { keys += event->characters; }
  int mouseDowns = 0;
  std::string keys;
};

/// The host's own application delegate; its class answers the questions that a test adds to it.
class TestApplicationDelegate final : public platform::NSApplicationDelegate {
 public:
  platform::runtime::Class& runtimeClass() const override { return hostClass; }
  mutable platform::runtime::Class hostClass{"TestApplicationDelegate", nullptr};
  std::vector<std::string> asked;

  void answerReopen() {
    hostClass.addMethod(platform::kShouldHandleReopen, [this](platform::NSApplicationDelegate&, bool) {
      asked.emplace_back("reopen");
      return false;
    });
  }
  void answerTerminate() {
    hostClass.addMethod(platform::kShouldTerminate, [this](platform::NSApplicationDelegate&) {
      asked.emplace_back("terminate");
      return platform::TerminateReply::cancel;
    });
  }
  void answerDockMenu() {
    hostClass.addMethod(platform::kDockMenu, [this](platform::NSApplicationDelegate&) {
      asked.emplace_back("dock menu");
      return std::make_shared<platform::NSMenu>("host");
    });
  }
  void answerAll() {
    answerReopen();
    answerTerminate();
    answerDockMenu();
  }
};

/// A host on a fresh desktop with one principal object.
class PluginTest : public testing::Test {
 protected:
  PluginTest() {
    // A desktop of its own, so that applications of other tests that run meanwhile are neither seen nor ended.
    setenv("DBUS_SESSION_BUS_ADDRESS", ("test " + std::to_string(getpid())).c_str(), 1);
    appKit->setDelegate(host);
  }

  /// What the compatibility layer makes: a native window with a view that has the focus.
  static std::shared_ptr<NSWindow> makeNativeWindow(const Rect& content = {100, 100, 800, 600}) {
    auto window = NSWindow::make(content, kOrdinaryStyle);
    window->setContentView(std::make_shared<HostView>());
    window->makeFirstResponder(window->contentView());
    return window;
  }

  struct BoundWindow {
    std::shared_ptr<NSWindow> native;
    std::shared_ptr<TestHostWindow> host;
    const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& helper() const { return host->helper; }
    HostView& view() const { return static_cast<HostView&>(*native->contentView()); }
  };

  /// Binds a native window, not yet shown, to a host window.
  BoundWindow bind(const std::shared_ptr<TestHostWindow>& hostWindow,
                   const std::shared_ptr<NSWindow>& native = makeNativeWindow()) {
    appKit->bindNSWindowWithUIWindowID(hostWindow->id, [hostWindow](const auto& helper) {
      hostWindow->helper = helper;
      helper->setDelegate(hostWindow);
    });
    native->setTitle(hostWindow->id);
    return {native, hostWindow};
  }
  BoundWindow bind(const std::string& id) { return bind(std::make_shared<TestHostWindow>(id)); }

  /// Binds and shows a window, and forgets what was told and posted meanwhile.
  BoundWindow show(const std::shared_ptr<TestHostWindow>& hostWindow) {
    const auto bound = bind(hostWindow);
    bound.native->makeKeyAndOrderFront(nullptr);
    desktop.settle();
    hostWindow->takeCalls();
    desktop.broadcast()->takePosted();
    return bound;
  }
  BoundWindow show(const std::string& id) { return show(std::make_shared<TestHostWindow>(id)); }

  /// Runs when the main loop goes on: inside a modal session.
  static void later(std::function<void()> step) { platform::DispatchQueue::main().async(std::move(step)); }

  headless::HeadlessSurface& surfaceOf(const NSWindow& window) {
    return *desktop.windows().surfaceWithHandle(const_cast<NSWindow&>(window).nativeHandle());
  }
  std::vector<std::string> postedNames() {
    std::vector<std::string> names;
    for (const auto& message : desktop.broadcast()->takePosted()) names.push_back(message.name);
    return names;
  }

  LogCapture capture;  // outlives all that writes to it
  std::vector<std::string>& log = capture.lines;
  headless::HeadlessBackend desktop;
  platform::Session session{desktop};
  std::shared_ptr<TestHost> host = std::make_shared<TestHost>();
  std::shared_ptr<VeltrikAppKit> appKit = VeltrikAppKit::make();
};

}  // namespace veltrik
