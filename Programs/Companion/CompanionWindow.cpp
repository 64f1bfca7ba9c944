#include "Programs/Companion/CompanionWindow.h"

#include <utility>

#include "Platform/AppKit/NSScreen.h"

namespace companion {

using platform::NSScreen;
using platform::NSWindow;
using platform::Rect;
using platform::Size;

namespace {

constexpr double kGap = 8;
constexpr unsigned kStyle = platform::StyleMask::kTitled | platform::StyleMask::kClosable |
                            platform::StyleMask::kMiniaturizable | platform::StyleMask::kResizable;

Rect centred(Size size) {
  const Rect screen = NSScreen::screens().front().visibleFrame;
  return {screen.x + (screen.width - size.width) / 2, screen.y + (screen.height - size.height) / 2, size.width,
          size.height};
}

/// The right edge of the screen that the frame is on.
double screenEnd(const Rect& frame) {
  for (const auto& screen : NSScreen::screens())
    if (screen.frame.contains(frame.center())) return screen.visibleFrame.maxX();
  return NSScreen::screens().front().visibleFrame.maxX();
}

}  // namespace

std::shared_ptr<CompanionWindow> CompanionWindow::make(std::function<void()> closed) {
  std::shared_ptr<CompanionWindow> made(new CompanionWindow());
  made->closed_ = std::move(closed);
  made->view_ = std::make_shared<PageView>();
  made->window_ = NSWindow::make(centred({420, 680}), kStyle);
  made->window_->setContentView(made->view_);
  made->window_->setDelegate(made);
  made->window_->setTitle("Mirelo 웹 보기");
  return made;
}

void CompanionWindow::show(const Page& page) {
  view_->setPage(page);
  window_->setContentSize(page.windowSize);
  window_->orderFront();
}

void CompanionWindow::hide() {
  window_->orderOut();
}

void CompanionWindow::follow(const Rect& parentFrame) {
  const Size size = window_->frame().size();
  const bool fits = parentFrame.maxX() + kGap + size.width <= screenEnd(parentFrame);
  const double x = fits ? parentFrame.maxX() + kGap : parentFrame.x - kGap - size.width;
  window_->setFrameOrigin({x, parentFrame.maxY() - size.height});
}

void CompanionWindow::comeForward() {
  if (window_->isVisible()) window_->orderFront();
}

bool CompanionWindow::windowShouldClose(NSWindow&) {
  if (closed_) closed_();
  return true;
}

}  // namespace companion
