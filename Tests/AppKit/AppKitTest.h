#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace platform {

using testing::ElementsAre;
using testing::IsEmpty;

/// A fresh desktop and session for each case.
class AppKitTest : public testing::Test {
 public:
  static constexpr unsigned kDocument =
      StyleMask::kTitled | StyleMask::kClosable | StyleMask::kMiniaturizable | StyleMask::kResizable;

  headless::HeadlessBackend desktop;
  Session session{desktop};

  NSApplication& application() { return NSApplication::shared(); }
  headless::HeadlessUser& user() { return desktop.user(); }

  std::shared_ptr<NSWindow> makeWindow(const Rect& content = {100, 100, 400, 300}, unsigned style = kDocument) {
    auto window = NSWindow::make(content, style);
    window->setContentView(std::make_shared<NSView>());
    return window;
  }
  std::shared_ptr<NSWindow> showWindow(const Rect& content = {100, 100, 400, 300}, unsigned style = kDocument) {
    auto window = makeWindow(content, style);
    window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
    return window;
  }
  /// Runs when the main loop goes on: inside a modal session.
  static void later(std::function<void()> step) { DispatchQueue::main().async(std::move(step)); }
  headless::HeadlessSurface& surfaceOf(const NSWindow& window) {
    return *desktop.windows().surfaceWithHandle(const_cast<NSWindow&>(window).nativeHandle());
  }
};

/// Writes down what a window tells its delegate, and does what a test wants meanwhile.
class RecordingDelegate : public NSWindowDelegate {
 public:
  RecordingDelegate(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}
  /// Runs inside every callback; gets the callback's name.
  std::function<void(const std::string&, NSWindow&)> during;
  bool mayClose = true;
  std::function<Size(Size)> resizing;

  bool windowShouldClose(NSWindow& window) override {
    heard("shouldClose", window);
    return mayClose;
  }
  void windowWillClose(NSWindow& window) override { heard("willClose", window); }
  void windowDidBecomeMain(NSWindow& window) override { heard("becameMain", window); }
  void windowDidResignMain(NSWindow& window) override { heard("resignedMain", window); }
  void windowDidBecomeKey(NSWindow& window) override { heard("becameKey", window); }
  void windowDidResignKey(NSWindow& window) override { heard("resignedKey", window); }
  Size windowWillResizeToSize(NSWindow& window, Size size) override {
    heard("willResize", window);
    return resizing ? resizing(size) : size;
  }
  Rect windowWillPositionSheetUsingRect(NSWindow& window, NSWindow&, Rect rect) override {
    heard("positionsSheet", window);
    return rect;
  }
  void windowDidResize(NSWindow& window) override { heard("resized", window); }
  void windowWillMove(NSWindow& window) override { heard("willMove", window); }
  void windowDidMove(NSWindow& window) override { heard("moved", window); }
  void windowDidMiniaturize(NSWindow& window) override { heard("miniaturized", window); }
  void windowDidDeminiaturize(NSWindow& window) override { heard("deminiaturized", window); }

 private:
  void heard(const std::string& what, NSWindow& window) {
    log_.push_back(name_ + " " + what);
    const auto step = during;  // it may drop this delegate
    if (step) step(what, window);
  }
  std::string name_;
  std::vector<std::string>& log_;
};

/// A view that writes down the events it gets.
class RecordingView : public NSView {
 public:
  using NSView::NSView;
  bool focusable = false;
  bool firstMouse = false;
  bool agreesToResign = true;
  port::Cursor cursor = port::Cursor::arrow;
  std::vector<std::string> heard;
  std::function<void(const std::string&, const EventPointer&)> during;

  bool acceptsFirstResponder() override { return focusable; }
  bool resignFirstResponder() override { return agreesToResign; }
  bool acceptsFirstMouse(const EventPointer&) override { return firstMouse; }
  port::Cursor cursorAt(Point) const override { return cursor; }
  void mouseDown(const EventPointer& event) override { note("down" + std::to_string(event->clickCount), event); }
  void mouseUp(const EventPointer& event) override { note("up" + std::to_string(event->clickCount), event); }
  void mouseDragged(const EventPointer& event) override { note("dragged", event); }
  void mouseMoved(const EventPointer& event) override { note("moved", event); }
  void mouseEntered(const EventPointer& event) override { note("entered", event); }
  void mouseExited(const EventPointer& event) override { note("exited", event); }
  void rightMouseDown(const EventPointer& event) override { note("rightDown", event); }
  void rightMouseUp(const EventPointer& event) override { note("rightUp", event); }
  void scrollWheel(const EventPointer& event) override { note("wheel", event); }
  void keyDown(const EventPointer& event) override { note("key " + event->characters, event); }

 private:
  void note(const std::string& what, const EventPointer& event) {
    heard.push_back(what);
    const auto step = during;
    if (step) step(what, event);
  }
};

}  // namespace platform
