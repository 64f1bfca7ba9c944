#pragma once

#include <memory>
#include <vector>

#include "Platform/Export.h"

namespace platform {

class NSView;

enum class LayoutAttribute { left, right, top, bottom, leading, trailing, width, height, centerX, centerY, none };

/// `first.attribute = second.attribute × multiplier + constant`, measured in the nearest common ancestor with y
/// downwards. Kept by that ancestor while active; the views are held weakly. Main thread.
class PLATFORM_EXPORT NSLayoutConstraint : public std::enable_shared_from_this<NSLayoutConstraint> {
 public:
  /// `second` null: the attribute equals `constant`.
  static std::shared_ptr<NSLayoutConstraint> make(const std::shared_ptr<NSView>& first, LayoutAttribute firstAttribute,
                                                  const std::shared_ptr<NSView>& second,
                                                  LayoutAttribute secondAttribute, double multiplier, double constant);
  bool isActive() const { return owner_ != nullptr; }
  /// Does nothing for views without a common ancestor.
  void setActive(bool active);
  double constant() const { return constant_; }
  void setConstant(double constant);

  std::shared_ptr<NSView> first() const { return first_.lock(); }
  std::shared_ptr<NSView> second() const { return second_.lock(); }
  LayoutAttribute firstAttribute() const { return firstAttribute_; }
  LayoutAttribute secondAttribute() const { return secondAttribute_; }
  double multiplier() const { return multiplier_; }

 private:
  friend class NSView;
  NSLayoutConstraint() = default;
  std::weak_ptr<NSView> first_;
  std::weak_ptr<NSView> second_;
  LayoutAttribute firstAttribute_ = LayoutAttribute::none;
  LayoutAttribute secondAttribute_ = LayoutAttribute::none;
  double multiplier_ = 1;
  double constant_ = 0;
  NSView* owner_ = nullptr;
};

/// Places `container`'s descendants that don't translate their autoresizing masks, from the constraints it keeps.
/// An edge that nothing determines keeps its place; of two that contradict, the later one is logged and left out.
void solveConstraints(NSView& container, const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);

}  // namespace platform
