#include <algorithm>

#include "Platform/AppKit/NSAnimation.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextInputClient.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

void NSWindow::setIsVisible(bool visible) {
  visible ? orderFront() : orderOut();
}

void NSWindow::orderFront() {
  order(WindowOrdering::above, 0);
}

void NSWindow::orderOut() {
  if (closed_ || (!visible_ && !miniaturized_)) return;
  const auto alive = self();
  miniaturized_ = false;
  hiddenWithParent_ = false;
  hideSelf();
  hideChildren();
  NSApplication::shared().passFocusOn();
}

void NSWindow::order(WindowOrdering place, std::int64_t relativeTo) {
  requireMainThread("NSWindow::order");
  if (place == WindowOrdering::out) return orderOut();
  if (closed_) return;
  const auto alive = self();
  if (miniaturized_) deminiaturize();
  if (closed_) return;
  NSApplication& application = NSApplication::shared();
  const auto relative = application.windowWithNumber(relativeTo);
  if (parent_ && place == WindowOrdering::above && !relative) {
    // The newest of the siblings lies on top.
    auto& siblings = parent_->children_;
    std::erase(siblings, alive);
    siblings.push_back(alive);
  }
  NSWindow* anchor = relative && relative->visible_ ? relative.get() : nullptr;
  if (anchor && &anchor->familyRoot() == &familyRoot()) {
    // Members of a family have their places in it by how they were added.
    if (visible_) return;
    anchor = nullptr;
    place = WindowOrdering::above;
  }
  if (!visible_) {
    hiddenWithParent_ = false;
    showSelf();
    showChildren();
  }
  application.placeFamily(*this, place, anchor);
}

void NSWindow::showSelf() {
  visible_ = true;
  placeContent();
  ensureSurface();
  updateSurface();
}

void NSWindow::hideSelf() {
  visible_ = false;
  NSApplication::shared().removeFromOrder(*this);
  updateSurface();
}

void NSWindow::showChildren() {
  for (const auto& child : children_) {
    if (!std::exchange(child->hiddenWithParent_, false)) continue;
    child->showSelf();
    child->showChildren();
  }
}

void NSWindow::hideChildren() {
  for (const auto& child : children_) {
    if (!child->visible_) continue;
    child->hiddenWithParent_ = true;
    child->hideSelf();
    child->hideChildren();
  }
}

void NSWindow::makeKeyAndOrderFront(const void* sender) {
  const auto alive = self();
  runtime::send(kMakeKeyAndOrderFront, *this, sender);
}

void NSWindow::makeKey() {
  requireMainThread("NSWindow::makeKey");
  NSApplication::shared().focus(*this);
}

void NSWindow::makeMain() {
  requireMainThread("NSWindow::makeMain");
  NSApplication::shared().focusMain(*this);
}

bool NSWindow::isKeyWindow() const {
  return NSApplication::shared().key_ == this;
}

bool NSWindow::isMainWindow() const {
  return NSApplication::shared().main_ == this;
}

bool NSWindow::canBecomeKey() const {
  return !closed_ && (isSheet() || (styleMask_ & (StyleMask::kTitled | StyleMask::kResizable)) != 0);
}

bool NSWindow::canBecomeMain() const {
  return visible_ && !isSheet() && canBecomeKey();
}

std::size_t NSWindow::orderedIndex() const {
  const auto& ordered = NSApplication::shared().ordered_;
  return static_cast<std::size_t>(std::find(ordered.begin(), ordered.end(), this) - ordered.begin());
}

void NSWindow::setLevel(int level) {
  if (level == level_) return;
  level_ = level;
  updateSurface();
  for (const auto& child : children_) child->updateSurface();
  if (visible_) NSApplication::shared().placeFamily(*this, WindowOrdering::above, nullptr);
}

int NSWindow::effectiveLevel() const {
  if (!parent_) return level_;
  const int parents = parent_->effectiveLevel();
  return placeInFamily_ == WindowOrdering::below ? std::min(level_, parents) : std::max(level_, parents);
}

void NSWindow::setAlphaValue(double alpha) {
  fade_.reset();
  applyAlphaValue(alpha);
}

void NSWindow::animateAlphaValue(double alpha, double duration) {
  if (closed_) return;
  fade_ = std::make_unique<NSAnimation>(duration, [this, from = alpha_, change = alpha - alpha_](double progress) {
    applyAlphaValue(from + change * progress);
  });
}

void NSWindow::applyAlphaValue(double alpha) {
  alpha_ = std::clamp(alpha, 0.0, 1.0);
  updateSurface();
}

void NSWindow::miniaturize() {
  changeMiniaturized(true, false);
}

void NSWindow::deminiaturize() {
  changeMiniaturized(false, false);
}

void NSWindow::surfaceMinimised(bool minimised) {
  // A family leaves the screen as one, also when the machine begins with a child.
  if (minimised && visible_ && parent_) return familyRoot().changeMiniaturized(true, false);
  changeMiniaturized(minimised, true);
}

void NSWindow::changeMiniaturized(bool miniaturized, bool reported) {
  if (closed_ || miniaturized == miniaturized_ || (miniaturized && !visible_)) return;
  const auto alive = self();
  NSApplication& application = NSApplication::shared();
  miniaturized_ = miniaturized;
  if (miniaturized) {
    hideSelf();
    hideChildren();
    if (!reported && surface_) surface_->setMinimised(true);
    application.passFocusOn();
  } else {
    showSelf();
    if (!reported) surface_->setMinimised(false);
    showChildren();
    application.placeFamily(*this, WindowOrdering::above, nullptr);
    application.focus(*this);
  }
  if (!closed_)
    tell(miniaturized ? &NSWindowDelegate::windowDidMiniaturize : &NSWindowDelegate::windowDidDeminiaturize);
}

void NSWindow::zoom() {
  if (closed_) return;
  zoomed_ = !zoomed_;
  if (surface_) surface_->setZoomed(zoomed_);
}

void NSWindow::surfaceZoomed(bool zoomed) {
  zoomed_ = zoomed;
}

void NSWindow::surfaceKeptAbove(bool above) {
  setLevel(above ? WindowLevel::kFloating : WindowLevel::kNormal);
}

void NSWindow::surfaceActivated(bool active) {
  const auto alive = self();
  NSApplication::shared().surfaceActivated(*this, active);
}

void NSWindow::surfaceCloseRequested() {
  performClose();
}

void NSWindow::keyChanged(bool key) {
  invalidate({{}, frame_.size()});
  const auto responder = firstResponder_.lock();
  if (auto* client = dynamic_cast<NSTextInputClient*>(responder.get())) client->windowKeyChanged(key);
  if (key && closed_) return;
  tell(key ? &NSWindowDelegate::windowDidBecomeKey : &NSWindowDelegate::windowDidResignKey);
}

}  // namespace platform
