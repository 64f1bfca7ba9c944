#include "Platform/AppKit/NSLayoutConstraint.h"
#include "Tests/AppKit/AppKitTest.h"
#include "Tests/LogCapture.h"

namespace platform {
namespace {

using Attribute = LayoutAttribute;

class SizedView : public NSView {
 public:
  std::optional<Size> intrinsicContentSize() const override { return Size{40, 20}; }
};

/// A container of 400 x 300 with two subviews; the constraints of a row; expected frames from the top left.
class LayoutTest : public AppKitTest {
 public:
  std::shared_ptr<NSView> container = std::make_shared<NSView>(Rect{0, 0, 400, 300});
  std::shared_ptr<NSView> a, b;
  std::vector<std::shared_ptr<NSLayoutConstraint>> constraints;
  LogCapture capture;
  std::vector<std::string>& logged = capture.lines;

  void startAnew() {
    container = std::make_shared<NSView>(Rect{0, 0, 400, 300});
    a = std::make_shared<SizedView>();
    b = std::make_shared<NSView>(Rect{7, 8, 9, 10});
    for (const auto& view : {a, b}) {
      view->setTranslatesAutoresizingMaskIntoConstraints(false);
      container->addSubview(view);
    }
    constraints.clear();
    logged.clear();
  }
  NSLayoutConstraint& pin(const std::shared_ptr<NSView>& first, Attribute firstAttribute,
                          const std::shared_ptr<NSView>& second, Attribute secondAttribute, double constant = 0,
                          double multiplier = 1) {
    constraints.push_back(
        NSLayoutConstraint::make(first, firstAttribute, second, secondAttribute, multiplier, constant));
    constraints.back()->setActive(true);
    return *constraints.back();
  }
  Rect fromTopLeft(const NSView& view) const {
    const Rect frame = view.frame();
    return {frame.x, container->frame().height - frame.maxY(), frame.width, frame.height};
  }
};

TEST_F(LayoutTest, solvesByPropagation) {
  using enum LayoutAttribute;
  enum Item { kA, kB, kContainer, kNone };
  struct Pin {
    Item first;
    LayoutAttribute firstAttribute;
    Item second;
    LayoutAttribute secondAttribute;
    double constant = 0, multiplier = 1;
  };
  struct Row {
    const char* name;
    std::vector<Pin> pins;
    Rect a;
    std::size_t contradictions = 0;
  };
  const Row rows[] = {
      {"edges of the container",
       {{kA, left, kContainer, left, 10},
        {kA, right, kContainer, right, -20},
        {kA, top, kContainer, top, 5},
        {kA, height, kNone, none, 50}},
       {10, 5, 370, 50}},
      {"the container's edges first, as an input is placed over a window",
       {{kA, height, kNone, none, 40},
        {kContainer, bottom, kA, bottom, 30},
        {kContainer, trailing, kA, trailing, 25},
        {kContainer, leading, kA, leading, -15}},
       {15, 230, 360, 40}},
      {"centred with its own size",
       {{kA, centerX, kContainer, centerX}, {kA, centerY, kContainer, centerY}},
       {180, 140, 40, 20}},
      {"half as wide as the container",
       {{kA, width, kContainer, width, -10, 0.5}, {kA, left, kContainer, left}, {kA, bottom, kContainer, bottom}},
       {0, 280, 190, 20}},
      {"beside a sibling that is placed later in the list",
       {{kA, left, kB, right, 8},
        {kA, top, kB, top},
        {kB, left, kContainer, left, 100},
        {kB, width, kNone, none, 60},
        {kB, top, kContainer, top, 33}},
       {168, 33, 40, 20}},
      {"between centre and edge",
       {{kA, centerX, kContainer, centerX}, {kA, left, kContainer, left, 120}, {kA, top, kContainer, top}},
       {120, 0, 160, 20}},
      {"the earlier of two that contradict wins",
       {{kA, width, kNone, none, 70},
        {kA, left, kContainer, left, 1},
        {kA, left, kContainer, left, 2},
        {kA, top, kContainer, top}},
       {1, 0, 70, 20},
       1},
      {"a width below zero is none",
       {{kA, left, kContainer, left, 300}, {kA, right, kContainer, left, 200}, {kA, top, kContainer, top}},
       {300, 0, 0, 20}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    startAnew();
    const std::shared_ptr<NSView> items[] = {a, b, container, nullptr};
    for (const Pin& each : row.pins)
      pin(items[each.first], each.firstAttribute, items[each.second], each.secondAttribute, each.constant,
          each.multiplier);
    container->layoutSubtreeIfNeeded();
    EXPECT_EQ(fromTopLeft(*a), row.a);
    EXPECT_EQ(logged.size(), row.contradictions);
  }
}

TEST_F(LayoutTest, followsWhatChanges) {
  startAnew();
  const auto window = makeWindow({0, 0, 400, 300});
  window->setContentView(container);
  auto& leading = pin(container, Attribute::leading, a, Attribute::leading, -10);
  pin(container, Attribute::trailing, a, Attribute::trailing, 10);
  pin(container, Attribute::bottom, a, Attribute::bottom, 10);
  pin(a, Attribute::height, nullptr, Attribute::none, 30);
  desktop.settle();
  EXPECT_EQ(fromTopLeft(*a), (Rect{10, 260, 380, 30})) << "laid out at the loop's next turn";
  leading.setConstant(-50);
  desktop.settle();
  EXPECT_EQ(fromTopLeft(*a), (Rect{50, 260, 340, 30}));
  window->setContentSize({600, 500});
  desktop.settle();
  EXPECT_EQ(fromTopLeft(*a), (Rect{50, 460, 540, 30}));
  leading.setActive(false);
  window->setContentSize({400, 300});
  desktop.settle();
  EXPECT_EQ(fromTopLeft(*a).maxX(), 390);
  a->removeFromSuperview();
  EXPECT_FALSE(constraints[1]->isActive()) << "a constraint ends where a view leaves";
  container = nullptr;
  window->setContentView(nullptr);
  constraints[1]->setActive(false);
}

}  // namespace
}  // namespace platform
