#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <unordered_map>

#include <fmt/format.h>

#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Log.h"

namespace platform {

namespace {

constexpr double kTolerance = 0.001;

/// What is known of a view in one direction. Any two of the values give the others.
struct Extent {
  enum Value { kStart, kEnd, kLength, kCenter };
  std::optional<double> values[4];

  int known() const {
    return static_cast<int>(std::count_if(std::begin(values), std::end(values), [](const auto& v) { return !!v; }));
  }
  bool complete() const { return values[kStart] && values[kLength]; }

  void set(Value which, double value) {
    values[which] = value;
    if (known() < 2) return;
    if (!values[kLength]) values[kLength] = derivedLength();
    if (!values[kStart]) values[kStart] = derivedStart();
    values[kEnd] = *values[kStart] + *values[kLength];
    values[kCenter] = *values[kStart] + *values[kLength] / 2;
  }

 private:
  double derivedLength() const {
    if (values[kStart] && values[kEnd]) return *values[kEnd] - *values[kStart];
    if (values[kStart]) return 2 * (*values[kCenter] - *values[kStart]);
    return 2 * (*values[kEnd] - *values[kCenter]);
  }
  double derivedStart() const {
    if (values[kEnd]) return *values[kEnd] - *values[kLength];
    return *values[kCenter] - *values[kLength] / 2;
  }
};

struct Slot {
  int direction;  ///< 0 across, 1 down
  Extent::Value value;
};

std::optional<Slot> slotOf(LayoutAttribute attribute) {
  switch (attribute) {
    case LayoutAttribute::left:
    case LayoutAttribute::leading:
      return Slot{0, Extent::kStart};
    case LayoutAttribute::right:
    case LayoutAttribute::trailing:
      return Slot{0, Extent::kEnd};
    case LayoutAttribute::width:
      return Slot{0, Extent::kLength};
    case LayoutAttribute::centerX:
      return Slot{0, Extent::kCenter};
    case LayoutAttribute::top:
      return Slot{1, Extent::kStart};
    case LayoutAttribute::bottom:
      return Slot{1, Extent::kEnd};
    case LayoutAttribute::height:
      return Slot{1, Extent::kLength};
    case LayoutAttribute::centerY:
      return Slot{1, Extent::kCenter};
    case LayoutAttribute::none:
      break;
  }
  return std::nullopt;
}

/// Solves by propagation: whatever constraint has one side known gives the other.
class Solver {
 public:
  Solver(NSView& container, const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints)
      : container_(container) {
    for (const auto& constraint : constraints) {
      Equation equation{constraint, constraint->first(), constraint->second()};
      if (!equation.first || (constraint->secondAttribute() != LayoutAttribute::none && !equation.second)) continue;
      addView(equation.first);
      if (equation.second) addView(equation.second);
      open_.push_back(std::move(equation));
    }
  }

  void run() {
    propagate();
    while (assumeOne()) propagate();
    for (const auto& view : placed_) apply(*view);
  }

 private:
  struct Equation {
    std::shared_ptr<NSLayoutConstraint> constraint;
    std::shared_ptr<NSView> first;
    std::shared_ptr<NSView> second;
  };

  bool isPlacedHere(const NSView& view) const {
    return &view != &container_ && !view.translatesAutoresizingMaskIntoConstraints() && view.isDescendantOf(container_);
  }

  /// The view's frame in the container, measured from its top left.
  Rect present(const NSView& view) const {
    const Rect inContainer = view.convertTo(view.bounds(), &container_);
    const Rect bounds = container_.bounds();
    const double top = container_.isFlipped() ? inContainer.y - bounds.y : bounds.maxY() - inContainer.maxY();
    return {inContainer.x - bounds.x, top, inContainer.width, inContainer.height};
  }

  void addView(const std::shared_ptr<NSView>& view) {
    const auto [found, isNew] = extents_.try_emplace(view.get());
    if (!isNew) return;
    if (isPlacedHere(*view)) {
      placed_.push_back(view);
      return;
    }
    const Rect rect = present(*view);
    set(found->second[0], rect.x, rect.width);
    set(found->second[1], rect.y, rect.height);
  }

  static void set(Extent& extent, double start, double length) {
    extent.set(Extent::kStart, start);
    extent.set(Extent::kLength, length);
  }

  std::optional<double>& valueOf(const NSView& view, Slot slot) {
    return extents_.at(&view)[slot.direction].values[slot.value];
  }

  /// Takes the first equation that can be decided; from the start each time, so that the earlier of two wins.
  void propagate() {
    for (auto each = open_.begin(); each != open_.end();) {
      if (!decide(*each)) {
        ++each;
        continue;
      }
      open_.erase(each);
      each = open_.begin();
    }
  }

  bool decide(const Equation& equation) {
    const auto& constraint = *equation.constraint;
    const auto left = slotOf(constraint.firstAttribute());
    if (!left) return true;
    const auto& leftValue = valueOf(*equation.first, *left);
    if (!equation.second) return settle(equation, leftValue, constraint.constant(), *left);
    const auto right = slotOf(constraint.secondAttribute());
    if (!right) return true;
    const auto& rightValue = valueOf(*equation.second, *right);
    if (rightValue)
      return settle(equation, leftValue, *rightValue * constraint.multiplier() + constraint.constant(), *left);
    if (!leftValue || constraint.multiplier() == 0) return false;
    extents_.at(equation.second.get())[right->direction].set(
        right->value, (*leftValue - constraint.constant()) / constraint.multiplier());
    return true;
  }

  bool settle(const Equation& equation, const std::optional<double>& standing, double wanted, Slot slot) {
    if (!standing) {
      extents_.at(equation.first.get())[slot.direction].set(slot.value, wanted);
    } else if (std::abs(*standing - wanted) > kTolerance) {
      NSLog(fmt::format("layout: a constraint of attribute {} wants {} where others gave {}; left out",
                        static_cast<int>(equation.constraint->firstAttribute()), wanted, *standing));
    }
    return true;
  }

  /// Fills one gap that no constraint closes: with the intrinsic size first, then with what the view has now.
  bool assumeOne() {
    for (const bool intrinsicOnly : {true, false})
      for (const auto& view : placed_)
        for (const int direction : {0, 1})
          if (assume(*view, direction, intrinsicOnly)) return true;
    return false;
  }

  bool assume(const NSView& view, int direction, bool intrinsicOnly) {
    Extent& extent = extents_.at(&view)[direction];
    if (extent.complete()) return false;
    const auto intrinsic = view.intrinsicContentSize();
    if (intrinsicOnly && !intrinsic) return false;
    const Rect now = present(view);
    if (!extent.values[Extent::kLength]) {
      const Size size = intrinsic ? *intrinsic : now.size();
      extent.set(Extent::kLength, direction == 0 ? size.width : size.height);
    } else if (!intrinsicOnly) {
      extent.set(Extent::kStart, direction == 0 ? now.x : now.y);
    } else {
      return false;
    }
    return true;
  }

  void apply(NSView& view) {
    if (!view.superview()) return;
    const auto& [across, down] = extents_.at(&view);
    const Rect bounds = container_.bounds();
    const double width = std::max(0.0, *across.values[Extent::kLength]);
    const double height = std::max(0.0, *down.values[Extent::kLength]);
    const double top = *down.values[Extent::kStart];
    const double y = container_.isFlipped() ? bounds.y + top : bounds.maxY() - top - height;
    view.setFrame(
        container_.convertTo(Rect{bounds.x + *across.values[Extent::kStart], y, width, height}, view.superview()));
  }

  NSView& container_;
  std::vector<Equation> open_;
  std::vector<std::shared_ptr<NSView>> placed_;
  std::unordered_map<const NSView*, std::array<Extent, 2>> extents_;
};

}  // namespace

void solveConstraints(NSView& container, const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
  Solver(container, constraints).run();
}

}  // namespace platform
