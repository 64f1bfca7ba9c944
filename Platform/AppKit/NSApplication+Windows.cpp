#include <algorithm>

#include "Platform/AppKit/MenuTracking.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Session.h"

namespace platform {

std::int64_t NSApplication::addWindow(const std::shared_ptr<NSWindow>& window) {
  windows_.emplace(++lastWindowNumber_, window);
  return lastWindowNumber_;
}

void NSApplication::forgetWindow(NSWindow& window) {
  removeFromOrder(window);
  if (activeSurface_ == &window) {
    activeSurface_ = nullptr;
    resignDue_ = true;
  }
  if (pendingSurface_ == &window) pendingSurface_ = nullptr;
  windows_.erase(window.windowNumber());
}

std::vector<std::shared_ptr<NSWindow>> NSApplication::windows() const {
  std::vector<std::shared_ptr<NSWindow>> all;
  all.reserve(windows_.size());
  for (const auto& [number, window] : windows_) all.push_back(window);
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a->windowNumber() < b->windowNumber(); });
  return all;
}

std::shared_ptr<NSWindow> NSApplication::windowWithNumber(std::int64_t number) const {
  const auto found = windows_.find(number);
  return found == windows_.end() ? nullptr : found->second;
}

std::shared_ptr<NSWindow> NSApplication::keyWindow() const {
  return key_ ? key_->self() : nullptr;
}

std::shared_ptr<NSWindow> NSApplication::mainWindow() const {
  return main_ ? main_->self() : nullptr;
}

void NSApplication::removeFromOrder(NSWindow& window) {
  std::erase(ordered_, &window);
  menus_->windowLeft(window);
}

void NSApplication::placeFamily(NSWindow& window, WindowOrdering place, NSWindow* relative) {
  NSWindow& root = window.familyRoot();
  std::vector<NSWindow*> family;
  root.appendFamily(family);
  std::erase_if(ordered_,
                [&](NSWindow* each) { return std::find(family.begin(), family.end(), each) != family.end(); });
  std::stable_sort(family.begin(), family.end(),
                   [](const NSWindow* a, const NSWindow* b) { return a->effectiveLevel() > b->effectiveLevel(); });
  for (auto first = family.begin(); first != family.end();) {
    const int level = (*first)->effectiveLevel();
    const auto last =
        std::find_if(first, family.end(), [&](const NSWindow* each) { return each->effectiveLevel() != level; });
    ordered_.insert(insertionPoint(level, place, relative), first, last);
    first = last;
  }
  restackSurfaces(family, place, relative);
  keepModalInFront(window);
}

std::vector<NSWindow*>::iterator NSApplication::insertionPoint(int level, WindowOrdering place,
                                                               const NSWindow* relative) {
  const auto front = std::find_if(ordered_.begin(), ordered_.end(),
                                  [&](const NSWindow* each) { return each->effectiveLevel() <= level; });
  if (!relative && place != WindowOrdering::below) return front;
  const auto back =
      std::find_if(front, ordered_.end(), [&](const NSWindow* each) { return each->effectiveLevel() < level; });
  const auto sibling = relative ? std::find(front, back, relative) : back;
  if (sibling == back) return place == WindowOrdering::below ? back : front;
  return place == WindowOrdering::below ? sibling + 1 : sibling;
}

// The root takes its place first, since a machine may take along what belongs to it; the others line up from there.
void NSApplication::restackSurfaces(const std::vector<NSWindow*>& family, WindowOrdering place, NSWindow* relative) {
  if (family.empty()) return;
  const auto base = std::find_if(family.begin(), family.end(), [](const NSWindow* each) { return !each->parent_; });
  const auto root = base == family.end() ? family.end() - 1 : base;
  const bool sameLevel = relative && relative->effectiveLevel() == (*root)->effectiveLevel();
  (*root)->surface_->restack(place != WindowOrdering::below, sameLevel ? relative->surface_.get() : nullptr);
  for (auto each = root; each != family.begin(); --each)
    (*(each - 1))->surface_->restack(true, (*each)->surface_.get());
  for (auto each = root; each + 1 != family.end(); ++each)
    (*(each + 1))->surface_->restack(false, (*each)->surface_.get());
}

void NSApplication::needsLayout(std::weak_ptr<NSWindow> window) {
  layoutNeeded_.push_back(std::move(window));
  if (layoutNeeded_.size() == 1) Session::current().backend().loop().wake();
}

bool NSApplication::layoutWindows() {
  if (layoutNeeded_.empty()) return false;
  const auto windows = std::exchange(layoutNeeded_, {});
  for (const auto& each : windows)
    if (const auto window = each.lock(); window && !window->isClosed()) window->layoutIfNeeded();
  return true;
}

}  // namespace platform
