#include "Platform/Foundation/Geometry.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

/// A parent window on a screen of 1440 x 900 points, all of it free but 24 at the top.
class RolesTest : public PluginTest {
 protected:
  BoundWindow showAt(const std::string& id, const Rect& frame) {
    const auto shown = show(id);
    shown.native->setFrame(frame, true);
    shown.host->takeCalls();
    desktop.broadcast()->takePosted();
    return shown;
  }
  /// Bound to a native window of that frame, with a host view in its content; not yet shown.
  BoundWindow bindAt(const std::shared_ptr<TestHostWindow>& hostWindow, const Rect& frame) {
    const auto native = makeNativeWindow();
    native->setFrame(frame, false);
    const auto bound = bind(hostWindow, native);
    const auto hostView = std::make_shared<HostView>(Rect{{}, frame.size()});
    native->contentView()->addSubview(hostView);
    return bound;
  }
  void shown(const BoundWindow& bound) {
    bound.native->makeKeyAndOrderFront(nullptr);
    desktop.settle();
  }
  /// A popover of 100 x 80 host points, just shown.
  BoundWindow beginPopover(const BoundWindow& parent) {
    const auto hostWindow = std::make_shared<TestHostWindow>("popover");
    hostWindow->bounds = {0, 0, 100, 80};
    hostWindow->popover = PopoverWindowDescription{Rect{10, 20, 100, 80}, parent.helper(), std::nullopt};
    const auto bound = bindAt(hostWindow, {0, 0, 100, 80});
    shown(bound);
    return bound;
  }
  /// One that has faded in.
  BoundWindow showPopover(const BoundWindow& parent) {
    const auto bound = beginPopover(parent);
    desktop.advance(0.5);
    return bound;
  }
};

TEST_F(RolesTest, APopoverGoesWhereItsDescriptionSays) {
  struct Row {
    const char* name;
    Rect parent;
    Rect target;
    Size hostSize;
    std::optional<std::vector<int>> attachments;
    Rect expected;
  };
  const Rect parent{200, 200, 400, 300}, target{10, 20, 100, 80};
  const Rect atTarget{210, 400, 100, 80};
  const Row rows[] = {
      {"from the parent's top left corner", parent, target, {100, 100}, {}, atTarget},
      {"scaled", parent, {10, 20, 30, 40}, {50, 200}, {}, {220, 470, 60, 20}},
      {"left of the screen", {-150, 300, 200, 300}, {10, 0, 100, 80}, {100, 100}, {}, {54, 520, 100, 80}},
      {"below the screen", {200, -100, 400, 300}, {10, 250, 100, 80}, {100, 100}, {}, {210, 20, 100, 80}},
      {"both", {-150, -100, 200, 150}, {0, 100, 100, 80}, {100, 100}, {}, {54, 20, 100, 80}},
      {"of a parent on no screen", {-900, -700, 400, 300}, target, {100, 100}, {}, {-496, 20, 100, 80}},
      {"beside the parent", parent, target, {100, 100}, {{2, 1}}, {604, 420, 100, 80}},
      {"edges that name no place", parent, target, {100, 100}, {{1, 2}}, atTarget},
      {"no edges", parent, target, {100, 100}, {{}}, atTarget},
      {"numbers that are no edges", parent, target, {100, 100}, {{2, 9}}, atTarget},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto main = showAt("main", row.parent);
    const auto hostWindow = std::make_shared<TestHostWindow>("popover");
    hostWindow->bounds = Rect{{}, row.hostSize};
    hostWindow->popover = PopoverWindowDescription{row.target, main.helper(), row.attachments};
    const auto popover = bindAt(hostWindow, {700, 700, 100, 100});
    shown(popover);
    EXPECT_EQ(popover.helper()->nsWindowFrame(), row.expected);
    main.helper()->closeWindow();
    EXPECT_TRUE(popover.native->isClosed());
  }
}

TEST_F(RolesTest, APopoverIsABorderlessSurfaceThatFadesIn) {
  const auto main = showAt("main", {200, 200, 400, 300});
  const auto popover = beginPopover(main);
  EXPECT_EQ(popover.helper()->alpha(), 0);
  desktop.advance(0.15);
  EXPECT_NEAR(popover.helper()->alpha(), 0.5, 0.1);
  desktop.advance(0.15);
  EXPECT_EQ(popover.helper()->alpha(), 1);

  const NSWindow& window = *popover.native;
  EXPECT_EQ(window.styleMask() & platform::StyleMask::kResizable, 0U);
  EXPECT_TRUE(window.titlebarAppearsTransparent());
  for (const auto button : {platform::WindowButton::close, platform::WindowButton::miniaturize})
    EXPECT_TRUE(popover.native->standardWindowButton(button)->hidden);
  EXPECT_FALSE(window.isMovable());
  EXPECT_FALSE(window.hasShadow());
  const auto& state = surfaceOf(window).state();
  EXPECT_TRUE(state.transparent);
  EXPECT_EQ(state.cornerRadius, 4);
  EXPECT_FALSE(state.resizable);
  EXPECT_TRUE(popover.helper()->alwaysOnTop());
  EXPECT_TRUE(popover.helper()->isPopoverWindow());
  EXPECT_THAT(popover.host->calls, Contains("windowDidConvertedAsPopover").Times(1));
  EXPECT_THAT(main.native->childWindows(), ElementsAre(popover.native));
  EXPECT_TRUE(main.helper()->hasChildWindow());
  EXPECT_TRUE(window.isMainWindow());

  main.native->setFrameOrigin({300, 100});
  EXPECT_EQ(popover.helper()->nsWindowFrame(), Rect(310, 300, 100, 80));
}

TEST_F(RolesTest, APopoverWithoutATargetOrAParentIsAnOrdinaryWindow) {
  const auto main = showAt("main", {200, 200, 400, 300});
  const PopoverWindowDescription rows[] = {{std::nullopt, main.helper(), std::nullopt},
                                           {Rect{10, 20, 100, 80}, nullptr, std::nullopt}};
  for (const auto& description : rows) {
    const auto hostWindow = std::make_shared<TestHostWindow>("child");
    hostWindow->popover = description;
    hostWindow->edges = {2, 1};
    hostWindow->parentHelper = main.helper();
    const auto child = bindAt(hostWindow, {0, 0, 100, 80});
    shown(child);
    EXPECT_EQ(child.helper()->nsWindowFrame(), Rect(604, 420, 100, 80));
    EXPECT_THAT(child.host->calls, Not(Contains("windowDidConvertedAsPopover")));
    child.helper()->closeWindow();
  }
}

TEST_F(RolesTest, APopoverThatLosesMainClosesInALaterTurn) {
  struct Row {
    const char* name;
    bool isPopover, closesWithMain, hasChild, closed;
  };
  const auto main = showAt("main", {200, 200, 400, 300});
  for (const Row& row :
       {Row{"alone", true, true, false, true}, Row{"told not to", true, false, false, false},
        Row{"with a child window", true, true, true, false}, Row{"no popover", false, true, false, false}}) {
    SCOPED_TRACE(row.name);
    const auto bound = row.isPopover ? showPopover(main) : show("ordinary");
    bound.helper()->setCloseWithResignMainWindow(row.closesWithMain);
    if (row.hasChild) bound.native->addChildWindow(makeNativeWindow(), platform::WindowOrdering::above);
    main.helper()->becomeFirstWindow();
    EXPECT_TRUE(main.helper()->isMainNSWindow());
    EXPECT_FALSE(bound.native->isClosed());
    desktop.settle();
    EXPECT_EQ(bound.native->isClosed(), row.closed);
    EXPECT_EQ(bound.host->was("windowWillClose"), row.closed);
    bound.helper()->closePopoverWindow();
    EXPECT_EQ(bound.native->isClosed(), row.isPopover);
  }
}

TEST_F(RolesTest, AnOrdinaryWindowIsPlacedByItsEdges) {
  struct Row {
    const char* name;
    std::vector<int> edges;
    Rect parent;
    Point origin;
    bool isChild = true;
    bool withoutAppending = false;
  };
  const Rect parent{200, 200, 400, 300};
  const Point unchanged{700, 600};
  const Row rows[] = {
      {"centred, and never a child", {0, 2, 1, 3}, parent, {350, 310}, false},
      {"right and top", {2, 1}, parent, {604, 420}},
      {"right and bottom", {2, 3}, parent, {604, 200}},
      {"left and bottom", {0, 3}, parent, {96, 200}},
      {"left and top", {0, 1}, parent, {96, 420}},
      {"right, but there the screen ends", {2, 1}, {1000, 200, 400, 300}, {896, 420}},
      {"right, and it just fits", {2, 1}, {936, 200, 400, 300}, {1340, 420}},
      {"left, but there the screen ends", {0, 3}, {50, 200, 400, 300}, {454, 200}},
      {"left, and it just fits", {0, 3}, {104, 200, 400, 300}, {0, 200}},
      {"right of a parent on no screen", {2, 1}, {3000, 200, 400, 300}, {3404, 420}},
      {"left of a parent on no screen", {0, 3}, {-900, 200, 400, 300}, {-496, 200}},
      {"another order of the same edges", {1, 2}, parent, unchanged},
      {"numbers that are no edges are left out", {0, 7, 1, -1}, parent, {96, 420}},
      {"none but such", {7}, parent, unchanged},
      {"placed only", {2, 1}, parent, {604, 420}, false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto main = showAt("main", row.parent);
    const auto hostWindow = std::make_shared<TestHostWindow>("child");
    hostWindow->edges = row.edges;
    hostWindow->parentHelper = main.helper();
    hostWindow->withoutAppendingAsChild = row.withoutAppending;
    const auto child = bindAt(hostWindow, {unchanged.x, unchanged.y, 100, 80});
    shown(child);
    EXPECT_EQ(child.helper()->nsWindowFrame(), Rect(row.origin, Size(100, 80)));
    EXPECT_EQ(child.native->parentWindow(), row.isChild ? main.native.get() : nullptr);
    main.native->setFrameOrigin(main.native->frame().origin() + Point{10, 20});
    const Point follows = row.isChild ? Point{10, 20} : Point{};
    EXPECT_EQ(child.native->frame().origin(), row.origin + follows);
    child.helper()->closeWindow();
    main.helper()->closeWindow();
  }
}

TEST_F(RolesTest, WhatIsMissingLeavesTheWindowAsItIs) {
  const auto main = showAt("main", {200, 200, 400, 300});
  const auto gone = show("gone");
  gone.helper()->closeWindow();
  const auto alone = std::make_shared<TestHostWindow>("child");
  alone->edges = {2, 1};
  const auto ofGone = std::make_shared<TestHostWindow>("ofGone");
  ofGone->edges = {2, 1};
  ofGone->parentHelper = gone.helper();
  const auto popoverOfGone = std::make_shared<TestHostWindow>("popoverOfGone");
  popoverOfGone->popover = PopoverWindowDescription{Rect{0, 0, 10, 10}, gone.helper(), std::nullopt};
  for (const auto& hostWindow : {alone, ofGone, popoverOfGone}) {
    const auto bound = bindAt(hostWindow, {700, 600, 100, 80});
    shown(bound);
    EXPECT_EQ(bound.helper()->nsWindowFrame(), Rect(700, 600, 100, 80));
    EXPECT_EQ(bound.native->parentWindow(), nullptr);
    EXPECT_EQ(bound.native->level(), 0);
  }
  // A popover's look needs the host's view; without one nothing is changed.
  const auto hostWindow = std::make_shared<TestHostWindow>("bare");
  hostWindow->popover = PopoverWindowDescription{Rect{0, 0, 10, 10}, main.helper(), std::nullopt};
  const auto bare = bind(hostWindow);
  const Rect before = bare.native->frame();
  shown(bare);
  EXPECT_EQ(bare.native->frame(), before);
  EXPECT_THAT(main.native->childWindows(), IsEmpty());
}

TEST_F(RolesTest, AChildIsAddedByItsParentsIdentifier) {
  const auto main = show("main"), child = show("child");
  const Rect before = child.helper()->nsWindowFrame();
  const auto unbound = makeNativeWindow();
  for (const char* name : {"nobody", "", "child"}) {
    child.helper()->addChildWindowToParentWindowWith(name);
    EXPECT_EQ(child.native->parentWindow(), nullptr) << name;
  }
  child.helper()->addChildWindowToParentWindowWith("main");
  EXPECT_EQ(child.native->parentWindow(), main.native.get());
  EXPECT_EQ(child.helper()->nsWindowFrame(), before);
  main.helper()->becomeFirstWindow();
  EXPECT_EQ(NSApplication::shared().orderedWindows().front(), child.native.get());
}

TEST_F(RolesTest, ASheetHangsBelowTheTopOfItsParent) {
  struct Row {
    const char* name;
    double margin;
    bool onPopover;
    double top;  ///< below the parent's
  };
  const Row rows[] = {{"the title bar's height", 0, false, 29},
                      {"a negative margin is none", -3, false, 29},
                      {"the host's margin", 52, false, 52},
                      {"on a popover where the system hangs it", 52, true, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto main = showAt("main", {200, 200, 400, 300});
    const auto parent = row.onPopover ? showPopover(main) : main;
    parent.helper()->setCloseWithResignMainWindow(false);
    parent.helper()->setSheetWindowTopMargin(row.margin);
    const auto sheet = showAt("sheet", {0, 0, 60, 40});
    sheet.helper()->convertAsSheetWindowWithParentWindowHelper(parent.helper());
    desktop.settle();
    const Rect above = parent.native->frame();
    EXPECT_TRUE(sheet.helper()->isSheetWindow());
    EXPECT_EQ(sheet.helper()->nsWindowFrame(),
              Rect(above.x + above.width / 2 - 30, above.maxY() - row.top - 40, 60, 40));
    EXPECT_FALSE(parent.native->titlebarAppearsTransparent());
    EXPECT_FALSE(parent.native->isTitleHidden());
    EXPECT_TRUE(sheet.helper()->isKeyNSWindow());
    row.onPopover ? parent.helper()->closeChildAlert() : sheet.helper()->closeSheetWindow();
    EXPECT_TRUE(sheet.native->isClosed());
    EXPECT_TRUE(parent.native->titlebarAppearsTransparent());
    EXPECT_TRUE(parent.native->isTitleHidden());
    EXPECT_TRUE(sheet.host->was("windowWillClose"));
    main.helper()->closeWindow();
  }
}

TEST_F(RolesTest, ASheetSlidesIn) {
  const auto main = show("main"), sheet = show("sheet");
  sheet.helper()->convertAsSheetWindowWithParentWindowHelper(main.helper());
  desktop.settle();
  EXPECT_EQ(surfaceOf(*sheet.native).state().revealed, 0);
  EXPECT_EQ(surfaceOf(*sheet.native).state().frame, sheet.native->frame());
  desktop.advance(0.1);
  EXPECT_NEAR(surfaceOf(*sheet.native).state().revealed, 0.5, 0.1);
  desktop.advance(0.1);
  EXPECT_EQ(surfaceOf(*sheet.native).state().revealed, 1);
}

TEST_F(RolesTest, WithoutASheetNothingEnds) {
  const auto main = show("main"), other = show("other");
  other.helper()->closeSheetWindow();
  main.helper()->closeChildAlert();
  other.helper()->convertAsSheetWindowWithParentWindowHelper(nullptr);
  EXPECT_FALSE(other.native->isClosed());
  EXPECT_TRUE(other.native->isVisible());
  EXPECT_FALSE(other.helper()->isSheetWindow());
}

TEST_F(RolesTest, ASheetOutlivesItsParentsHelper) {
  const auto main = show("main"), sheet = show("sheet");
  sheet.helper()->convertAsSheetWindowWithParentWindowHelper(main.helper());
  desktop.settle();  // what is still to be posted holds the helper
  main.host->helper = nullptr;
  sheet.helper()->closeSheetWindow();
  EXPECT_TRUE(sheet.native->isClosed());
  EXPECT_FALSE(main.native->titlebarAppearsTransparent());
}

TEST_F(RolesTest, AWindowIsKeptOnItsScreen) {
  struct Row {
    const char* name;
    Rect frame;
    Rect expected;
  };
  const Row rows[] = {
      {"inside", {100, 100, 300, 200}, {100, 100, 300, 200}},
      {"just inside", {1140, 0, 300, 900}, {1140, 0, 300, 900}},
      {"over the right edge", {1240, 100, 300, 200}, {1140, 100, 300, 200}},
      {"over the left edge", {-120, 100, 300, 200}, {0, 100, 300, 200}},
      {"wider than the screen", {-200, 100, 2000, 200}, {0, 100, 1440, 200}},
      {"below the bottom", {100, -50, 300, 200}, {100, 0, 300, 200}},
      {"above the top", {100, 800, 300, 200}, {100, 0, 300, 200}},
      {"over a corner", {1240, -50, 300, 200}, {1140, 0, 300, 200}},
      {"on no screen", {3000, 100, 300, 200}, {3000, 100, 300, 200}},
  };
  const auto main = show("main");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    main.native->setFrame(row.frame, true);
    main.helper()->updateFrameIfNeeded();
    EXPECT_EQ(main.helper()->nsWindowFrame(), row.expected);
  }
  desktop.windows().setScreens(
      {{{0, 0, 1440, 900}, {0, 0, 1440, 876}, 1}, {{1440, 100, 800, 600}, {1440, 100, 800, 600}, 1}});
  desktop.settle();
  main.native->setFrame({2100, 200, 300, 200}, true);
  main.helper()->updateFrameIfNeeded();
  EXPECT_EQ(main.helper()->nsWindowFrame(), Rect(1940, 200, 300, 200)) << "on another screen";
}

}  // namespace
}  // namespace veltrik
