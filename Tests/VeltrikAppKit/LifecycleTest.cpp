#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using headless::BroadcastMessage;
using platform::NSApplicationDelegate;

class LifecycleTest : public PluginTest {
 protected:
  LifecycleTest() { NSApplication::shared().setDelegate(applicationDelegate); }
  void launch() {
    appKit->applicationDidFinishLaunching();
    desktop.settle();
  }
  void launchWithAllQuestions() {
    applicationDelegate->answerAll();
    launch();
  }
  void activateAgain() {
    desktop.windows().userDeactivatesAll();
    desktop.settle();
    appKit->activeIgnoringOtherApps();
    desktop.settle();
  }

  std::shared_ptr<TestApplicationDelegate> applicationDelegate = std::make_shared<TestApplicationDelegate>();
};

TEST_F(LifecycleTest, TheTakeOverHappensInALaterTurn) {
  applicationDelegate->answerReopen();
  appKit->applicationDidFinishLaunching();
  EXPECT_FALSE(NSApplication::shared().reopen());
  EXPECT_THAT(applicationDelegate->asked, ElementsAre("reopen"));
  desktop.settle();
  EXPECT_TRUE(NSApplication::shared().reopen());
  EXPECT_THAT(applicationDelegate->asked, ElementsAre("reopen"));
}

TEST_F(LifecycleTest, OnlyTheQuestionsThatTheHostsClassAnswersAreTakenOver) {
  applicationDelegate->answerTerminate();
  launch();
  EXPECT_FALSE(applicationDelegate->hostClass.responds(platform::kShouldHandleReopen.selector));
  EXPECT_FALSE(applicationDelegate->hostClass.responds(platform::kDockMenu.selector));
  EXPECT_EQ(NSApplication::shared().dockMenu(), nullptr);
  appKit->terminate();
  EXPECT_TRUE(host->was("applicationUserTerminate"));
  EXPECT_THAT(applicationDelegate->asked, IsEmpty());
  NSApplication::shared().setDelegate({});
  launch();
  EXPECT_EQ(NSApplication::shared().dockMenu(), nullptr) << "with nothing to take over";
}

TEST_F(LifecycleTest, AnInheritedAnswerIsTakenOverForTheHostsClassAlone) {
  platform::runtime::Class base("Base", nullptr);
  base.addMethod(platform::kShouldHandleReopen, [](NSApplicationDelegate&, bool) { return false; });
  class Derived final : public NSApplicationDelegate {
   public:
    explicit Derived(const platform::runtime::Class& superclass) : hostClass("Derived", &superclass) {}
    platform::runtime::Class& runtimeClass() const override { return hostClass; }
    mutable platform::runtime::Class hostClass;
  };
  const auto derived = std::make_shared<Derived>(base);
  NSApplication::shared().setDelegate(derived);
  launch();
  EXPECT_TRUE(NSApplication::shared().reopen());
  const auto inherited =
      base.instanceMethod(platform::kShouldHandleReopen.selector).as<bool(NSApplicationDelegate&, bool)>();
  EXPECT_FALSE((*inherited)(*derived, true));
}

TEST_F(LifecycleTest, ReopeningIsTheHostsToAnswerAndGrantedWithoutOne) {
  launchWithAllQuestions();
  host->reopens = false;
  EXPECT_FALSE(NSApplication::shared().reopen());
  host->reopens = true;
  EXPECT_TRUE(NSApplication::shared().reopen());
  host.reset();
  for (const bool hasVisibleWindows : {false, true})
    EXPECT_TRUE(platform::runtime::send(platform::kShouldHandleReopen,
                                        static_cast<NSApplicationDelegate&>(*applicationDelegate), hasVisibleWindows));
}

TEST_F(LifecycleTest, TerminatingMarksAllWindowsBeforeItClosesTheFirst) {
  launchWithAllQuestions();
  const auto first = show("first");
  const auto second = show("second");
  const auto foreign = makeNativeWindow();
  bool allMarked = false;
  first.host->reactions["windowWillClose"] = [&] {
    allMarked =
        first.helper()->isForcedClose() && second.helper()->isForcedClose() && foreign->attached().get(kIsForcedClose);
  };
  host->reactions["applicationUserTerminate"] = [&] {
    EXPECT_TRUE(NSApplication::shared().windows().empty());
    EXPECT_THAT(postedNames(), ElementsAre("mirelo_parentWindowWillClose", "mirelo_parentWindowWillClose"));
  };
  appKit->terminate();
  EXPECT_TRUE(allMarked);
  EXPECT_TRUE(host->was("applicationUserTerminate"));
  EXPECT_THAT(desktop.broadcast()->takePosted(),
              ElementsAre(BroadcastMessage{"mirelo_mireloAppWillTerminate", "", {}}));
  EXPECT_TRUE(NSApplication::shared().isTerminating());
}

TEST_F(LifecycleTest, TerminatingWithoutADelegateIsPostedToo) {
  launchWithAllQuestions();
  host.reset();
  appKit->terminate();
  EXPECT_THAT(postedNames(), ElementsAre("mirelo_mireloAppWillTerminate"));
  EXPECT_TRUE(NSApplication::shared().isTerminating());
}

TEST_F(LifecycleTest, BecomingActiveIsToldAndPostedHalfASecondLater) {
  const auto bound = show("main");
  launch();
  activateAgain();
  EXPECT_TRUE(host->was("applicationDidBecomeActive"));
  postedNames();
  desktop.advance(0.49);
  EXPECT_THAT(postedNames(), IsEmpty());
  desktop.advance(0.02);
  EXPECT_THAT(desktop.broadcast()->takePosted(), ElementsAre(BroadcastMessage{"mirelo_mireloAppBecomeActive", "", {}}));
  EXPECT_THAT(log, Contains("WebView >>>> pos mirelo_mireloAppBecomeActive userInfo: [:]"));
}

TEST_F(LifecycleTest, BecomingActiveIsNeitherToldNorPostedWithoutSomebodyToTell) {
  struct Row {
    const char* name;
    std::function<void()> before, after;
    bool told = false;
  };
  const auto nothing = [] {};
  const Row rows[] = {{"no delegate", [&] { host.reset(); }, nothing},
                      {"the end was told", [&] { appKit->applicationWillTerminate(); }, nothing},
                      {"the principal object goes meanwhile", nothing, [&] { appKit.reset(); }, true}};
  const auto bound = show("main");
  bound.helper()->setDelegate({});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    host = std::make_shared<TestHost>();
    appKit = VeltrikAppKit::make();
    appKit->setDelegate(host);
    launch();
    row.before();
    activateAgain();
    EXPECT_EQ(host && host->was("applicationDidBecomeActive"), row.told);
    postedNames();
    row.after();
    desktop.advance(1);
    EXPECT_THAT(postedNames(), IsEmpty());
  }
}

TEST_F(LifecycleTest, TheDockMenuOpensTheMainWindow) {
  launchWithAllQuestions();
  const auto menu = NSApplication::shared().dockMenu();
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->title(), "MainWindow");
  EXPECT_FALSE(menu->autoenablesItems());
  ASSERT_EQ(menu->items().size(), 1u);
  const auto item = menu->items()[0];
  EXPECT_EQ(item->title(), "Mirelo 열기");
  EXPECT_EQ(item->action(), "openMainWindow:");
  EXPECT_EQ(item->keyEquivalent(), "");
  EXPECT_EQ(item->tag(), 1);
  EXPECT_TRUE(item->perform());
  EXPECT_THAT(host->takeCalls(), ElementsAre("openMainWindow"));
}

TEST_F(LifecycleTest, TheDelegateSetLastAnswersForTheApplication) {
  launchWithAllQuestions();
  const auto second = VeltrikAppKit::make();
  const auto secondHost = std::make_shared<TestHost>();
  secondHost->reopens = false;
  second->setDelegate(secondHost);
  EXPECT_FALSE(NSApplication::shared().reopen());
  EXPECT_TRUE(NSApplication::shared().dockMenu()->items()[0]->perform());
  EXPECT_TRUE(secondHost->was("openMainWindow"));
  EXPECT_EQ(appKit->delegate(), host);
  appKit->setDelegate(host);
  EXPECT_TRUE(NSApplication::shared().reopen());
}

TEST_F(LifecycleTest, ItsEndIsWrittenToStandardOutput) {
  testing::internal::CaptureStdout();
  appKit.reset();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), ">>> veltrikAppKit deinit\n");
}

TEST_F(LifecycleTest, FeedbackIsRelayedAsJSONText) {
  struct Row {
    const char* name;
    platform::Dictionary userInfo;
    std::optional<std::string> json;
    const char* logged;
  };
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Row& row :
       {Row{"empty", {}, std::nullopt, "[:]"},
        Row{"text", {{"답", "예"}}, "{\n  \"답\": \"예\"\n}", "[\"답\": \"예\"]"},
        Row{"not a number", {{"n", platform::Value::Array{infinity}}}, std::nullopt, "[\"n\": [inf]]"}}) {
    SCOPED_TRACE(row.name);
    host->calls.clear();
    desktop.broadcast()->receiveFromOtherProcess({"mirelo_webViewFeedback", "", row.userInfo});
    desktop.settle();
    EXPECT_TRUE(host->was("handleWebViewFeedBackWithUserInfo"));
    EXPECT_EQ(host->feedback, row.json);
    EXPECT_THAT(log, Contains(std::string("WebView >>>> notification userInfo = ") + row.logged));
  }
}

}  // namespace
}  // namespace veltrik
