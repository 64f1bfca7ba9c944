#include <stdexcept>

#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Protocols/VeltrikPopoverMenuItemProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {
namespace {

/// One member of a window's delegate, and what leads to its call.
struct Callback {
  const char* member;
  bool shownBefore;
  std::function<void(headless::HeadlessBackend&, NSWindow&)> provoke;
  bool isPopover = false;
};

enum class Deed { closeWindow, dropHelper, dropDelegate, callBackIn, openWindow, becomeSheet, throwException };

constexpr std::pair<Deed, const char*> kDeeds[] = {
    {Deed::closeWindow, "ClosesTheWindow"},   {Deed::dropHelper, "DropsTheHelper"},
    {Deed::dropDelegate, "DropsTheDelegate"}, {Deed::callBackIn, "CallsBackIn"},
    {Deed::openWindow, "OpensAWindow"},       {Deed::becomeSheet, "BecomesASheet"},
    {Deed::throwException, "Throws"}};

void show(headless::HeadlessBackend&, NSWindow& window) {
  window.makeKeyAndOrderFront(nullptr);
}
void resize(headless::HeadlessBackend&, NSWindow& window) {
  window.setFrame({10, 20, 500, 400}, true);
}
void askToClose(headless::HeadlessBackend&, NSWindow& window) {
  window.performClose();
}

/// Shows another window over this one.
void loseFocus(headless::HeadlessBackend&, NSWindow&) {
  NSWindow::make({600, 500, 100, 100}, kOrdinaryStyle)->makeKeyAndOrderFront(nullptr);
}

void bindAgain(headless::HeadlessBackend&, NSWindow& window) {
  window.setTitle("again");
}

std::shared_ptr<VeltrikAppKitWindowHelper> helperOf(const NSWindow& window) {
  return std::static_pointer_cast<VeltrikAppKitWindowHelper>(window.delegate().lock());
}

/// Its handler is the host window's reaction "menuItem".
class ReactingItem final : public VeltrikPopoverMenuItemProtocol {
 public:
  explicit ReactingItem(const std::shared_ptr<TestHostWindow>& hostWindow)
      : reaction_(hostWindow->reactions["menuItem"]) {}
  std::string title() const override { return "item"; }
  std::string state() const override { return ""; }
  bool isSeperator() const override { return false; }
  std::function<void()> handler() const override { return reaction_; }

 private:
  std::function<void()> reaction_;
};

const Callback kCallbacks[] = {
    {"customTitleBackgroundColor", true, bindAgain},
    {"customTitleBackgroundColor", false, show},
    {"popoverWindowDescription", true, bindAgain},
    {"initialWindowSize", true, bindAgain},
    {"isOrderedOutWithFirstBecomeMain", false, show},
    {"closableByUserInterface", false, show},
    {"showOnlyCloseButton", false, show},
    {"frameAutosaveName", false, show},
    {"windowDidResizeByAutoSavedFrame", false, show},
    {"initialAttachmentsEdge", false, show},
    {"parentWindowHelper", false, show},
    {"attachWithoutAppendingAsChild", false, show},
    {"popoverWindowDescription", false, show, true},
    {"uiWindowBounds", false, show, true},
    {"windowDidConvertedAsPopover", false, show, true},
    {"windowDidBecomeMain", false, show},
    {"windowDidBecomeKey", false, show},
    {"windowDidResignMain", true, loseFocus},
    {"windowDidResignKey", true, loseFocus},
    {"windowShouldClose", true, askToClose},
    {"windowWillClose", true, askToClose},
    {"windowDidResize", true, resize},
    {"uiWindowID", true, resize},
    {"uiWindowID", false, show},
    {"uiWindowID", true, askToClose},
    {"windowWillResize", true,
     [](headless::HeadlessBackend& desktop, NSWindow& window) {
       const Point corner{window.frame().maxX() - 1, window.frame().minY() + 1};
       desktop.user().drag(corner, corner + Point{40, -30}, 2);
     }},
    {"windowDidMiniaturize", true, [](headless::HeadlessBackend&, NSWindow& window) { window.miniaturize(); }},
    {"windowDidDeminiaturize", true,
     [](headless::HeadlessBackend& desktop, NSWindow& window) {
       window.miniaturize();
       desktop.settle();
       window.deminiaturize();
     }},
    {"mouseDoubleTapped", true,
     [](headless::HeadlessBackend& desktop, NSWindow& window) { desktop.user().click(window.frame().center(), 2); }},
    {"mouseRightClick", true,
     [](headless::HeadlessBackend& desktop, NSWindow& window) {
       desktop.user().click(window.frame().center(), 1, headless::Button::right);
     }},
    {"isInputableIosResponder", true,
     [](headless::HeadlessBackend& desktop, NSWindow&) { desktop.user().key(platform::KeyCode::kA, "a"); }},
    {"uiWindowBounds", true,
     [](headless::HeadlessBackend&, NSWindow& window) {
       helperOf(window)->addMovableBounds({0, 0, 100, 40});
     }},
    {"didSelectedFilePath", true,
     [](headless::HeadlessBackend& desktop, NSWindow& window) {
       helperOf(window)->setAsFileDropable();
       window.layoutIfNeeded();
       desktop.user().drop({{"text/uri-list", "file:///a"}}, window.frame().center());
     }},
    {"menuItem", true, [](headless::HeadlessBackend& desktop, NSWindow& window) {
       const auto helper = helperOf(window);
       const auto item = std::make_shared<ReactingItem>(std::static_pointer_cast<TestHostWindow>(helper->delegate()));
       desktop.loop().deliver([&desktop] { desktop.menus()->choose("item"); });
       helper->showPopoverMenuWithItems({item});
     }}};

class WindowDelegateReentrancyTest
    : public PluginTest,
      public testing::WithParamInterface<std::tuple<Callback, std::pair<Deed, const char*>>> {
 protected:
  /// Inside a call from the helper: what a hostWindow may do.
  static void commit(Deed deed, std::shared_ptr<TestHostWindow>& hostWindow, NSWindow& window) {
    const auto helper = hostWindow->helper;
    switch (deed) {
      case Deed::closeWindow:
        helper->closeWindow();
        break;
      case Deed::dropHelper:
        hostWindow->helper.reset();
        break;
      case Deed::dropDelegate:
        hostWindow.reset();
        break;
      case Deed::callBackIn:
        helper->addMovableBounds({0, 0, 10, 10});
        helper->addChildWindowToParentWindowWith("parent");
        helper->updateFrameIfNeeded();
        helper->closeChildAlert();
        helper->closeSheetWindow();
        helper->orderFrontBehideCurrentWindows();
        helper->makeMainAndKeyNSWindow();
        helper->addConversationTextInputViewOn({0, 500, 100, 30}, {});
        helper->makeTextViewFirstResponder(false);
        helper->setContentSize({0, 0, 321, 234});
        window.setTitle("main");
        helper->generateRightArrowKey();
        helper->resetAllMovableBounds();
        break;
      case Deed::openWindow:
        makeNativeWindow({600, 500, 100, 100})->makeKeyAndOrderFront(nullptr);
        break;
      case Deed::becomeSheet:
        helper->convertAsSheetWindowWithParentWindowHelper(hostWindow->parentHelper);
        break;
      case Deed::throwException:
        throw std::runtime_error("host");
    }
  }
};

TEST_P(WindowDelegateReentrancyTest, LeavesThePluginUsable) {
  const auto& [callback, deed] = GetParam();
  const Deed wanted = deed.first;
  const auto parent = PluginTest::show("parent");
  const auto native = makeNativeWindow();
  native->contentView()->addSubview(std::make_shared<HostView>(Rect{0, 0, 800, 600}));
  auto hostWindow = std::make_shared<TestHostWindow>("main");
  hostWindow->autosaveName = "Chat";
  hostWindow->edges = {2, 1};
  hostWindow->parentHelper = parent.helper();
  if (callback.isPopover) hostWindow->popover = {Rect{10, 20, 100, 80}, parent.helper(), std::nullopt};
  bind(hostWindow, native);
  if (callback.shownBefore) native->makeKeyAndOrderFront(nullptr);
  desktop.settle();
  // For the members that are read at binding: the same hostWindow window once more.
  appKit->bindNSWindowWithUIWindowID("again", [&hostWindow](const auto& helper) {
    hostWindow->helper = helper;
    helper->setDelegate(hostWindow);
  });
  int calls = 0;
  hostWindow->reactions[callback.member] = [&] {
    if (++calls == 1) commit(wanted, hostWindow, *native);
  };

  bool thrown = false;
  try {
    callback.provoke(desktop, *native);
    desktop.settle();
  } catch (const std::runtime_error&) {
    thrown = true;
  }
  desktop.settle();
  EXPECT_GE(calls, 1);
  EXPECT_EQ(thrown, wanted == Deed::throwException);

  // Another window lives a whole life beside what is left of this one.
  const auto next = PluginTest::show("next");
  desktop.user().key(platform::KeyCode::kA, "a");
  EXPECT_EQ(next.view().keys, "a");
  next.helper()->closeWindow();
  EXPECT_TRUE(next.host->was("windowWillClose"));
  native->close();
  desktop.settle();
}

INSTANTIATE_TEST_SUITE_P(Every, WindowDelegateReentrancyTest,
                         testing::Combine(testing::ValuesIn(kCallbacks), testing::ValuesIn(kDeeds)),
                         [](const auto& row) {
                           const Callback& callback = std::get<0>(row.param);
                           return callback.member + std::string(std::get<1>(row.param).second) + "_" +
                                  std::to_string(row.index);
                         });

/// One member of the application-wide delegate, and what leads to its call.
struct ApplicationCallback {
  const char* member;
  std::function<void(headless::HeadlessBackend&, VeltrikAppKit&)> provoke;
};

const ApplicationCallback kApplicationCallbacks[] = {
    {"applicationShouldHandleReopen", [](auto&, auto&) { NSApplication::shared().reopen(); }},
    {"applicationUserTerminate", [](auto&, auto&) { NSApplication::shared().terminate(nullptr); }},
    {"openMainWindow", [](auto&, auto&) { NSApplication::shared().dockMenu()->items()[0]->perform(); }},
    {"applicationDidBecomeActive",
     [](headless::HeadlessBackend& desktop, auto&) {
       desktop.windows().userDeactivatesAll();
       desktop.settle();
       NSApplication::shared().activate(true);
     }},
    {"handleWebViewFeedBackWithUserInfo",
     [](headless::HeadlessBackend& desktop, auto&) {
       desktop.broadcast()->receiveFromOtherProcess({"mirelo_webViewFeedback", "", {{"a", 1}}});
     }},
    {"webViewDownloadCompletedWithResult",
     [](auto&, VeltrikAppKit& appKit) { appKit.openWebViewWithUrl("address", std::nullopt, std::nullopt, {}); }},
    {"handleFunctionKey",
     [](headless::HeadlessBackend& desktop, auto&) { desktop.user().keyDown(platform::KeyCode::kA, "a"); }},
    {"notifyWorkspaceEnvironment",
     [](headless::HeadlessBackend& desktop, auto&) { desktop.presence()->setScreensAsleep(true); }},
    {"notifyUserInteraction", [](headless::HeadlessBackend& desktop, auto&) {
       desktop.faults().idleTimeUnreadable = true;  // counts as activity
       desktop.advance(1);
     }}};

class HostDelegateReentrancyTest
    : public PluginTest,
      public testing::WithParamInterface<std::tuple<ApplicationCallback, std::pair<Deed, const char*>>> {
 protected:
  void commit(Deed deed, const BoundWindow& bound) {
    switch (deed) {
      case Deed::closeWindow:
        bound.helper()->closeWindow();
        break;
      case Deed::dropHelper:
        appKit.reset();  // here the plug-in's object is the principal one
        break;
      case Deed::dropDelegate:
        host.reset();
        break;
      case Deed::callBackIn:
        appKit->setDelegate(std::make_shared<TestHost>());
        appKit->bindNSWindowWithUIWindowID("x", [](const auto&) {});
        appKit->activeIgnoringOtherApps();
        appKit->applicationDidFinishLaunching();
        appKit->applicationWillTerminate();
        break;
      case Deed::openWindow:
        makeNativeWindow({600, 500, 100, 100})->makeKeyAndOrderFront(nullptr);
        break;
      case Deed::becomeSheet:
        bound.helper()->convertAsSheetWindowWithParentWindowHelper(show("parent").helper());
        break;
      case Deed::throwException:
        throw std::runtime_error("host");
    }
  }
};

TEST_P(HostDelegateReentrancyTest, LeavesThePluginUsable) {
  const auto& [callback, deed] = GetParam();
  const Deed wanted = deed.first;
  const auto applicationDelegate = std::make_shared<TestApplicationDelegate>();
  applicationDelegate->answerAll();
  NSApplication::shared().setDelegate(applicationDelegate);
  const auto bound = show("main");
  appKit->applicationDidFinishLaunching();
  desktop.settle();
  int calls = 0;
  host->reactions[callback.member] = [&, wanted] {
    if (++calls == 1) commit(wanted, bound);
  };
  bool thrown = false;
  try {
    callback.provoke(desktop, *appKit);
    desktop.settle();
  } catch (const std::runtime_error&) {
    thrown = true;
  }
  desktop.advance(1);
  EXPECT_GE(calls, 1);
  EXPECT_EQ(thrown, wanted == Deed::throwException);

  const auto second = VeltrikAppKit::make();
  const auto secondHost = std::make_shared<TestHost>();
  second->setDelegate(secondHost);
  EXPECT_TRUE(NSApplication::shared().reopen());
  EXPECT_TRUE(secondHost->was("applicationShouldHandleReopen"));
}

INSTANTIATE_TEST_SUITE_P(Every, HostDelegateReentrancyTest,
                         testing::Combine(testing::ValuesIn(kApplicationCallbacks), testing::ValuesIn(kDeeds)),
                         [](const auto& row) {
                           return std::string(std::get<0>(row.param).member) + std::get<1>(row.param).second;
                         });

}  // namespace
}  // namespace veltrik
