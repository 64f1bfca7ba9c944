#include <algorithm>
#include <charconv>
#include <cmath>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/UserDefaults.h"

namespace platform {

struct NSWindow::FrameChange {
  std::shared_ptr<NSWindow> window;
  bool moved;
  bool resized;
};

namespace {

/// Room for the title bar's buttons: no user makes a window smaller.
constexpr Size kSmallestUserSize{76, 29};

std::string autosaveKey(const std::string& name) {
  return "NSWindow Frame " + name;
}

/// The four numbers of "{{x, y}, {width, height}}"; nothing for any other text.
std::optional<Rect> rectFromText(const std::string& text) {
  double numbers[4] = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (double& number : numbers) {
    while (at != end && (*at == '{' || *at == '}' || *at == ',' || *at == ' ')) ++at;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc{} || !std::isfinite(number)) return std::nullopt;
    at = next;
  }
  if (numbers[2] < 0 || numbers[3] < 0) return std::nullopt;
  return Rect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

/// A frame saved on screens that are no more comes back where the user can reach it.
Rect reachable(const Rect& frame) {
  const auto screens = NSScreen::screens();
  if (screens.empty() || NSScreen::screenFor(frame)) return frame;
  const Rect& visible = screens.front().visibleFrame;
  return {visible.x, std::max(visible.y, visible.maxY() - frame.height), frame.width, frame.height};
}

}  // namespace

Rect NSWindow::contentRectForFrameRect(const Rect& frame) {
  return runtime::send(kContentRectForFrameRect, *this, frame, styleMask_);
}

Rect NSWindow::frameRectForContentRect(const Rect& content) {
  return runtime::send(kFrameRectForContentRect, *this, content, styleMask_);
}

void NSWindow::placeContent() {
  themeFrame_->setFrame({{}, frame_.size()});
  if (const auto content = contentView())
    content->setFrame(contentRectForFrameRect(frame_).offsetBy({-frame_.x, -frame_.y}));
}

void NSWindow::setFrame(const Rect& frame, bool display) {
  requireMainThread("NSWindow::setFrame");
  const auto alive = self();
  Rect wanted = frame;
  if (contentMinSize_.width > 0 || contentMinSize_.height > 0) {
    const Rect least = frameRectForContentRect({{}, contentMinSize_});
    wanted.width = std::max(wanted.width, least.width);
    wanted.height = std::max(wanted.height, least.height);
  }
  if (zoomed_ && wanted != frame_) {
    zoomed_ = false;
    if (surface_) surface_->setZoomed(false);
  }
  applyFrame(wanted, false);
  if (display && !closed_) this->display();
}

void NSWindow::moveFamily(const Rect& frame, bool reported, std::vector<FrameChange>& changes) {
  const Rect old = frame_;
  const Point moved = frame.origin() - old.origin();
  if (frame == old) return;
  frame_ = frame;
  // A frame that the machine reports is what it already shows.
  if (!reported) updateSurface();
  changes.push_back({self(), moved != Point{}, frame.size() != old.size()});
  if (moved == Point{}) return;
  for (const auto& child : children_) child->moveFamily(child->frame_.offsetBy(moved), false, changes);
}

void NSWindow::applyFrame(const Rect& frame, bool reported) {
  std::vector<FrameChange> changes;
  moveFamily(frame, reported, changes);
  if (changes.empty()) placeContent();
  for (const FrameChange& change : changes) {
    change.window->placeContent();
    if (change.resized) change.window->invalidate({{}, change.window->frame_.size()});
    change.window->autosaveFrame();
  }
  for (const FrameChange& change : changes) {
    if (change.moved && !change.window->closed_) change.window->tell(&NSWindowDelegate::windowDidMove);
    if (!change.resized || change.window->closed_) continue;
    change.window->hangSheet();
    if (change.window->parent_ && change.window->isSheet()) change.window->parent_->hangSheet();
    change.window->tell(&NSWindowDelegate::windowDidResize);
  }
}

void NSWindow::surfaceFrameChanged(const Rect& frame) {
  // While the model moves the window itself, what the machine reports is a step that lies behind.
  if (userChangesFrame_ > 0) return;
  const auto alive = self();
  const bool isMove = frame.size() == frame_.size() && frame.origin() != frame_.origin();
  if (isMove && !movedByMachine_) tell(&NSWindowDelegate::windowWillMove);
  if (!closed_) applyFrame(frame, true);
}

void NSWindow::setContentSize(Size size) {
  const Rect content = contentRectForFrameRect(frame_);
  const Rect wanted = frameRectForContentRect({content.origin(), size});
  // The title bar stays where it is: the window grows downwards.
  setFrame({frame_.x, frame_.maxY() - wanted.height, wanted.width, wanted.height}, true);
}

void NSWindow::setContentMinSize(Size size) {
  contentMinSize_ = size;
  setFrame(frame_, false);
}

void NSWindow::setMinSize(Size size) {
  minSize_ = size;
}

Size NSWindow::smallestUserSize() {
  const Rect content = frameRectForContentRect({{}, contentMinSize_});
  return {std::max({kSmallestUserSize.width, minSize_.width, content.width}),
          std::max({kSmallestUserSize.height, minSize_.height, content.height})};
}

std::optional<port::ScreenInfo> NSWindow::screen() const {
  return NSScreen::screenFor(frame_);
}

void NSWindow::center() {
  const auto screens = NSScreen::screens();
  if (screens.empty()) return;
  const Rect visible = screen().value_or(screens.front()).visibleFrame;
  // A little above the middle looks centred.
  setFrameOrigin({std::round(visible.x + (visible.width - frame_.width) / 2),
                  std::round(visible.y + (visible.height - frame_.height) * 2 / 3)});
}

bool NSWindow::setFrameAutosaveName(const std::string& name) {
  if (name == frameAutosaveName_) return true;
  if (!name.empty())
    for (const auto& other : NSApplication::shared().windows())
      if (other.get() != this && other->frameAutosaveName_ == name) return false;
  frameAutosaveName_ = name;
  setFrameUsingName(name);
  return true;
}

void NSWindow::saveFrameUsingName(const std::string& name) const {
  if (!name.empty()) UserDefaults::standard().set(autosaveKey(name), NSStringFromRect(frame_));
}

bool NSWindow::setFrameUsingName(const std::string& name) {
  if (name.empty()) return false;
  const Value saved = UserDefaults::standard().get(autosaveKey(name));
  const auto* text = saved.get<std::string>();
  const auto frame = text ? rectFromText(*text) : std::nullopt;
  if (!frame) return false;
  setFrame(reachable(*frame), true);
  return true;
}

void NSWindow::autosaveFrame() const {
  if (userChangesFrame_ == 0) saveFrameUsingName(frameAutosaveName_);
}

}  // namespace platform
