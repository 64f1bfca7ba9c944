#include "Platform/AppKit/NSLayoutConstraint.h"

#include <algorithm>

#include "Platform/AppKit/NSView.h"

namespace platform {

namespace {

NSView* commonAncestor(NSView& a, const NSView& b) {
  for (NSView* each = &a; each; each = each->superview())
    if (b.isDescendantOf(*each)) return each;
  return nullptr;
}

void layoutAround(NSView& owner) {
  owner.setNeedsLayout();
  if (owner.superview()) owner.superview()->setNeedsLayout();
}

}  // namespace

std::shared_ptr<NSLayoutConstraint> NSLayoutConstraint::make(const std::shared_ptr<NSView>& first,
                                                             LayoutAttribute firstAttribute,
                                                             const std::shared_ptr<NSView>& second,
                                                             LayoutAttribute secondAttribute, double multiplier,
                                                             double constant) {
  std::shared_ptr<NSLayoutConstraint> made(new NSLayoutConstraint());
  made->first_ = first;
  made->second_ = second;
  made->firstAttribute_ = firstAttribute;
  made->secondAttribute_ = second ? secondAttribute : LayoutAttribute::none;
  made->multiplier_ = multiplier;
  made->constant_ = constant;
  return made;
}

void NSLayoutConstraint::setActive(bool active) {
  if (active == isActive()) return;
  if (!active) {
    NSView& owner = *owner_;
    owner_ = nullptr;
    layoutAround(owner);
    const auto self = shared_from_this();  // the owner may hold the last reference
    std::erase(owner.constraints_, self);
    return;
  }
  const auto firstView = first(), secondView = second();
  if (!firstView) return;
  NSView* owner = secondView ? commonAncestor(*firstView, *secondView) : firstView.get();
  if (!owner) return;
  owner_ = owner;
  owner->constraints_.push_back(shared_from_this());
  layoutAround(*owner);
}

void NSLayoutConstraint::setConstant(double constant) {
  if (constant == constant_) return;
  constant_ = constant;
  if (owner_) layoutAround(*owner_);
}

}  // namespace platform
