#pragma once

#include "Platform/AppKit/NSScrollView.h"
#include "Tests/AppKit/TextFixture.h"

namespace platform {

/// A key window of 200 by 100 points at (100, 100) whose content is a scroll view around the fixture's text view, which
/// has the focus.
class TextWindowFixture : public TextFixture {
 protected:
  TextWindowFixture() : window(NSWindow::make({100, 100, 200, 100}, StyleMask::kBorderless | StyleMask::kResizable)) {
    scrollView = std::make_shared<NSScrollView>(Rect{0, 0, 200, 100});
    scrollView->setHasVerticalScroller(true);
    scrollView->verticalScroller()->setScrollerStyle(ScrollerStyle::overlay);
    view->setAutoresizingMask(Autoresizing::kWidth);
    scrollView->setDocumentView(view);
    window->setContentView(scrollView);
    window->makeKeyAndOrderFront(nullptr);
    window->makeFirstResponder(view);
    desktop.settle();
  }

  headless::HeadlessInputMethod& inputMethod() { return desktop.inputMethod(); }
  /// The screen point of a point in the text view.
  Point onScreen(Point inView) const { return window->convertPointToScreen(view->convertTo(inView, nullptr)); }
  /// The screen point in the middle of a character.
  Point character(std::uint64_t at) const { return onScreen(view->rectForRange({at, 1}).center()); }

  std::shared_ptr<NSWindow> window;
  std::shared_ptr<NSScrollView> scrollView;
};

}  // namespace platform
