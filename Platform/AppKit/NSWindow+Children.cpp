#include <algorithm>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

void NSWindow::addChildWindow(const std::shared_ptr<NSWindow>& child, WindowOrdering place) {
  requireMainThread("NSWindow::addChildWindow");
  if (!child || closed_ || child->closed_ || child.get() == this || child->isAncestorOf(*this)) return;
  if (child->parent_) child->parent_->removeChildWindow(*child);
  children_.push_back(child);
  child->parent_ = this;
  child->placeInFamily_ = place;
  if (child->surface_) {
    child->updateSurface();
    child->surface_->setParent(surface_.get());
  }
  if (visible_ || child->visible_) NSApplication::shared().placeFamily(*this, WindowOrdering::above, nullptr);
}

void NSWindow::removeChildWindow(NSWindow& child) {
  if (child.parent_ != this) return;
  const auto alive = child.self();
  child.parent_ = nullptr;
  child.hiddenWithParent_ = false;
  std::erase(children_, alive);
  if (!child.surface_) return;
  child.updateSurface();
  child.surface_->setParent(nullptr);
}

std::vector<std::shared_ptr<NSWindow>> NSWindow::childWindows() const {
  return children_;
}

bool NSWindow::isAncestorOf(const NSWindow& window) const {
  const auto above = [](const NSWindow& each) { return each.parent_ ? each.parent_ : each.sheetParent_; };
  for (const NSWindow* each = above(window); each; each = above(*each))
    if (each == this) return true;
  return false;
}

NSWindow& NSWindow::familyRoot() {
  NSWindow* each = this;
  while (each->parent_) each = each->parent_;
  return *each;
}

void NSWindow::appendFamily(std::vector<NSWindow*>& members) {
  for (auto child = children_.rbegin(); child != children_.rend(); ++child)
    if ((*child)->placeInFamily_ == WindowOrdering::above) (*child)->appendFamily(members);
  if (visible_) members.push_back(this);
  for (auto child = children_.rbegin(); child != children_.rend(); ++child)
    if ((*child)->placeInFamily_ == WindowOrdering::below) (*child)->appendFamily(members);
}

}  // namespace platform
