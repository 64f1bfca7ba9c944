#include <random>

#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class FlippedView : public NSView {
 public:
  using NSView::NSView;
  bool isFlipped() const override { return true; }
};

/// Random trees of flipped and unflipped views with shifted bounds.
class ViewGeometryTest : public AppKitTest {
 public:
  std::mt19937 random{20261122};
  std::vector<std::shared_ptr<NSView>> views;

  double number(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }
  void grow(const std::shared_ptr<NSView>& root, int count) {
    views = {root};
    for (int i = 0; i < count; ++i) {
      const Rect frame{number(-50, 200), number(-50, 200), number(1, 300), number(1, 300)};
      std::shared_ptr<NSView> view;
      if (random() % 2)
        view = std::make_shared<FlippedView>(frame);
      else
        view = std::make_shared<NSView>(frame);
      if (random() % 3 == 0) view->setBoundsOrigin({number(-40, 40), number(-40, 40)});
      views[random() % views.size()]->addSubview(view);
      views.push_back(view);
    }
  }
  NSView& any() { return *views[random() % views.size()]; }
};

TEST_F(ViewGeometryTest, conversionsGoRoundAndCompose) {
  for (int tree = 0; tree < 20; ++tree) {
    const auto window = makeWindow({number(0, 900), number(0, 900), 500, 400});
    grow(window->contentView(), 30);
    for (int i = 0; i < 100; ++i) {
      const NSView &a = any(), &b = any();
      const Point point{number(-500, 500), number(-500, 500)};
      const Point there = a.convertTo(point, &b);
      const Point back = b.convertTo(there, &a);
      EXPECT_NEAR(back.x, point.x, 1e-6);
      EXPECT_NEAR(back.y, point.y, 1e-6);
      const Point byWindow = b.convertFrom(a.convertTo(point, nullptr), nullptr);
      EXPECT_NEAR(byWindow.x, there.x, 1e-6);
      EXPECT_NEAR(byWindow.y, there.y, 1e-6);
      const Rect rect{point.x, point.y, number(0, 90), number(0, 90)};
      const Rect moved = a.convertTo(rect, &b);
      EXPECT_NEAR(moved.width, rect.width, 1e-6) << "conversion doesn't scale";
      EXPECT_NEAR(moved.height, rect.height, 1e-6);
    }
  }
}

TEST_F(ViewGeometryTest, aHitViewHasThePointInsideAndNoSubviewThatWantsIt) {
  const auto window = makeWindow({0, 0, 500, 400});
  grow(window->contentView(), 40);
  int deep = 0;
  for (int i = 0; i < 2000; ++i) {
    const Point inWindow{number(0, 500), number(0, 400)};
    NSView* hit = window->contentView()->hitTest(inWindow);
    ASSERT_NE(hit, nullptr);
    deep += hit != window->contentView().get();
    EXPECT_TRUE(hit->bounds().contains(hit->convertFrom(inWindow, nullptr)));
    for (const auto& subview : hit->subviews())
      EXPECT_FALSE(subview->bounds().contains(subview->convertFrom(inWindow, nullptr)));
    hit->setHidden(true);
    EXPECT_NE(window->contentView()->hitTest(inWindow), hit) << "a hidden view isn't there";
    hit->setHidden(false);
  }
  EXPECT_GT(deep, 500);
}

TEST_F(ViewGeometryTest, theEdgePixelsBelongToTheViewWhicheverWayItIsFlipped) {
  for (const bool flipped : {false, true}) {
    SCOPED_TRACE(flipped);
    auto view =
        flipped ? std::make_shared<FlippedView>(Rect{10, 10, 20, 20}) : std::make_shared<NSView>(Rect{10, 10, 20, 20});
    NSView root{{0, 0, 100, 100}};
    root.addSubview(view);
    EXPECT_EQ(root.hitTest({10, 30}), view.get()) << "the top left pixel";
    EXPECT_EQ(root.hitTest({29, 11}), view.get()) << "the bottom right pixel";
    EXPECT_EQ(root.hitTest({10, 10}), &root) << "the pixel below";
    EXPECT_EQ(root.hitTest({30, 20}), &root) << "the pixel to the right";
  }
}

TEST_F(ViewGeometryTest, autoresizing) {
  using namespace Autoresizing;
  struct Row {
    const char* name;
    unsigned mask;
    Rect expected;
  };
  // In a superview that grows from 100 x 100 to 160 x 130, a view at (10, 20) of 30 x 40.
  const Row rows[] = {
      {"nothing moves", 0, {10, 20, 30, 40}},
      {"width follows", kWidth, {10, 20, 90, 40}},
      {"both follow", kWidth | kHeight, {10, 20, 90, 70}},
      {"sticks to the far corner", kMinXMargin | kMinYMargin, {70, 50, 30, 40}},
      {"stays centred", kMinXMargin | kMaxXMargin | kMinYMargin | kMaxYMargin, {40, 35, 30, 40}},
      {"all share", kMinXMargin | kWidth | kMaxXMargin, {30, 20, 50, 40}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    NSView outer{{0, 0, 100, 100}};
    auto inner = std::make_shared<NSView>(Rect{10, 20, 30, 40});
    inner->setAutoresizingMask(row.mask);
    outer.addSubview(inner);
    outer.setFrame({0, 0, 160, 130});
    EXPECT_EQ(inner->frame(), row.expected);
    outer.setFrame({0, 0, 1, 1});
    outer.setFrame({0, 0, 100, 100});
    EXPECT_EQ(inner->frame(), (Rect{10, 20, 30, 40})) << "and all the way back";
  }
}

}  // namespace
}  // namespace platform
