#include "Platform/Foundation/ProcessInfo.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

class BindingTest : public PluginTest {};

TEST_F(BindingTest, TheTitleThatIsAPendingIdentifierBindsTheWindowAndIsNotShown) {
  const auto bound = bind("main");
  ASSERT_TRUE(bound.helper());
  EXPECT_EQ(bound.native->title(), "");
  EXPECT_EQ(bound.native->attached().get(kHostWindowID), "main");
  EXPECT_TRUE(bound.native->attached().get(kIsHelperBound));
  EXPECT_EQ(bound.helper()->nsWindowNumber(), bound.native->windowNumber());
  EXPECT_EQ(bound.native->tabbingMode(), platform::TabbingMode::disallowed);
  EXPECT_THAT(bound.native->registeredDraggedTypes(), ElementsAre("public.file-url"));
  EXPECT_THAT(log, Contains("[🍀VERBOSE] VeltrikAppKitWindowHelper.init(main)"));
}

TEST_F(BindingTest, OfTwoBindingsOfOneIdentifierOnlyTheSecondIsCalledAndOnlyOnce) {
  std::vector<int> called;
  appKit->bindNSWindowWithUIWindowID("main", [&](const auto&) { called.push_back(1); });
  appKit->bindNSWindowWithUIWindowID("main", [&](const auto&) { called.push_back(2); });
  const auto first = makeNativeWindow(), second = makeNativeWindow();
  second->setTitle("Main");
  EXPECT_EQ(second->title(), "Main") << "any other title is shown and binds nothing";
  EXPECT_FALSE(second->attached().get(kIsHelperBound));
  EXPECT_EQ(second->attached().get(kHostWindowID), "");
  first->setTitle("main");
  second->setTitle("main");
  EXPECT_THAT(called, ElementsAre(2));
  EXPECT_EQ(second->title(), "main");
}

TEST_F(BindingTest, ABlockThatSetsTheTitleAgainOrThrowsIsNotCalledAgain) {
  for (const bool throws : {false, true}) {
    SCOPED_TRACE(throws);
    int calls = 0;
    const auto window = makeNativeWindow();
    appKit->bindNSWindowWithUIWindowID("main", [&](const auto&) {
      ++calls;
      if (throws) throw std::runtime_error("host");
      window->setTitle("main");
    });
    try {
      window->setTitle("main");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(window->title(), "");
    window->setTitle("main");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(window->title(), "main");
  }
}

TEST_F(BindingTest, AHelperThatTheHostDoesNotKeepIsGone) {
  appKit->bindNSWindowWithUIWindowID("main", [](const auto&) {});
  const auto window = makeNativeWindow();
  window->setTitle("main");
  EXPECT_THAT(log, Contains("[🍀VERBOSE] deinit VeltrikAppKitWindowHelper"));
  window->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(window->isVisible());
}

// A window made with the content rectangle (100, 100, 800, 600) has the frame (100, 100, 800, 629).
TEST_F(BindingTest, TheInitialStateFollowsTheDelegate) {
  struct Row {
    const char* name;
    Size size;
    bool hasTitleColor, isPopover;
    Rect frame;
    std::optional<double> inset;
  };
  const Rect unchanged{100, 100, 800, 629};
  for (const Row& row :
       {Row{"nothing", {}, false, false, unchanged, std::nullopt},
        Row{"size", {640, 480}, false, false, {100, 100, 640, 480}, std::nullopt},
        Row{"zero width", {0, 300}, false, false, {100, 100, 0, 300}, std::nullopt},
        Row{"title colour", {}, true, false, unchanged, 29}, Row{"popover", {}, false, true, unchanged, 29}}) {
    SCOPED_TRACE(row.name);
    const auto hostWindow = std::make_shared<TestHostWindow>("main");
    hostWindow->initialSize = row.size;
    if (row.hasTitleColor) hostWindow->titleColor = platform::Color{};
    if (row.isPopover) hostWindow->popover.emplace();
    const auto bound = bind(hostWindow);
    EXPECT_EQ(bound.native->frame(), row.frame);
    EXPECT_EQ(bound.native->attached().get(kContentTopInset), row.inset);
    EXPECT_EQ(bound.helper()->isPopoverWindow(), row.isPopover);
  }
}

TEST_F(BindingTest, TheMinimumSizeAndTheTitleBarBelongToTheSystemsVersion) {
  EXPECT_EQ(bind("new").native->contentMinSize(), Size());
  EXPECT_EQ(bind("new bar").helper()->titleBarHeight(), 29.0);
  platform::setOperatingSystemVersionForTesting(10);
  EXPECT_EQ(bind("old").native->contentMinSize(), Size(100, 100));
  EXPECT_EQ(bind("old bar").helper()->titleBarHeight(), 23.0);
  platform::setOperatingSystemVersionForTesting(11);
}

TEST_F(BindingTest, TheFirstTimeItIsShownConfiguresTheWindow) {
  const auto hostWindow = std::make_shared<TestHostWindow>("main");
  hostWindow->closable = false;
  hostWindow->onlyCloseButton = true;
  hostWindow->titleColor = platform::Color{0.25, 0.5, 0.75, 1};
  const auto bound = bind(hostWindow);
  bound.native->setRestorable(true);
  bound.native->makeKeyAndOrderFront(nullptr);

  EXPECT_EQ(bound.native->styleMask(), platform::StyleMask::kTitled | platform::StyleMask::kMiniaturizable);
  using platform::WindowButton;
  EXPECT_TRUE(bound.native->standardWindowButton(WindowButton::miniaturize)->hidden);
  EXPECT_TRUE(bound.native->titlebarAppearsTransparent());
  EXPECT_TRUE(bound.native->isTitleHidden());
  EXPECT_EQ(bound.native->backgroundColor(), hostWindow->titleColor);
  EXPECT_FALSE(bound.helper()->isWindowRestorable());
  EXPECT_EQ(bound.native->collectionBehavior(), 0x100u);
}

TEST_F(BindingTest, TheSecondTimeItIsShownConfiguresNothing) {
  const auto hostWindow = std::make_shared<TestHostWindow>("main");
  hostWindow->onlyCloseButton = true;
  const auto bound = bind(hostWindow);
  bound.native->makeKeyAndOrderFront(nullptr);
  using platform::WindowButton;
  EXPECT_FALSE(bound.native->standardWindowButton(WindowButton::close)->hidden);
  EXPECT_TRUE(bound.native->standardWindowButton(WindowButton::zoom)->hidden);
  bound.helper()->setIsWindowRestorable(true);
  hostWindow->titleColor = platform::Color{};
  bound.native->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(bound.helper()->isWindowRestorable());
  EXPECT_FALSE(bound.native->isTitleHidden());
}

TEST_F(BindingTest, AWindowToBeHiddenAtFirstIsShownByTheNextOrder) {
  const auto hostWindow = std::make_shared<TestHostWindow>("main");
  hostWindow->orderedOut = true;
  const auto bound = bind(hostWindow);
  bound.native->makeKeyAndOrderFront(nullptr);
  EXPECT_FALSE(bound.native->isVisible());
  EXPECT_THAT(log, Contains("[🍀VERBOSE] window ordered out: main"));
  bound.helper()->orderFrontNSWindow();
  EXPECT_TRUE(bound.native->isVisible());
}

TEST_F(BindingTest, WithoutAControllerTheAutosavedFrameIsToldAllTheSame) {
  const auto hostWindow = std::make_shared<TestHostWindow>("main");
  hostWindow->autosaveName = "Chat";
  const auto bound = bind(hostWindow);
  bound.native->makeKeyAndOrderFront(nullptr);
  EXPECT_THAT(hostWindow->calls, Contains("windowDidResizeByAutoSavedFrame"));
  EXPECT_EQ(bound.native->frameAutosaveName(), "");
}

TEST_F(BindingTest, WithoutADelegateTheWindowIsBoundButNotConfigured) {
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> helper;
  appKit->bindNSWindowWithUIWindowID("main", [&](const auto& made) { helper = made; });
  const auto window = makeNativeWindow();
  window->setTitle("main");
  window->setRestorable(true);
  window->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(window->attached().get(kIsHelperBound));
  EXPECT_TRUE(window->isRestorable());
}

TEST_F(BindingTest, ASecondPrincipalObjectSharesTheBindingAndLeavesTheExchangeAsItIs) {
  const auto second = VeltrikAppKit::make();
  const auto bound = bind("main");
  EXPECT_EQ(bound.native->title(), "");
  int calls = 0;
  second->bindNSWindowWithUIWindowID("other", [&](const auto&) { ++calls; });
  makeNativeWindow()->setTitle("other");
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace veltrik
