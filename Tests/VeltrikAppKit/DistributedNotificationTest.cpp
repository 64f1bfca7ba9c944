#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/DictionaryText.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"

namespace veltrik {
namespace {

using Case = MireloDistributedNotification;
using platform::Dictionary;
using platform::Value;

TEST(NotificationName, IsThePrefixAndTheRawValue) {
  for (const auto& [notification, raw] : {std::pair<Case, std::string>{Case::webViewLoading, "webViewLoading"},
                                          {Case::webViewFeedback, "webViewFeedback"},
                                          {Case::mireloAppBecomeActive, "mireloAppBecomeActive"},
                                          {Case::mireloAppWillTerminate, "mireloAppWillTerminate"},
                                          {Case::parentWindowFrame, "parentWindowFrame"},
                                          {Case::parentWindowDidBecomeMain, "parentWindowDidBecomeMain"},
                                          {Case::parentWindowWillClose, "parentWindowWillClose"}}) {
    EXPECT_EQ(rawValue(notification), raw);
    EXPECT_EQ(notificationName(notification), "mirelo_" + raw);
    EXPECT_EQ(mireloDistributedNotification(raw), notification);
    for (const std::string& other : {"mirelo_" + raw, raw + " ", raw.substr(1), std::string(1, 'X') + raw.substr(1)})
      EXPECT_EQ(mireloDistributedNotification(other), std::nullopt) << other;
  }
}

TEST(DictionaryTextTest, IsOneLineWithSortedKeys) {
  const Dictionary dictionary = {
      {"text", "a \"b\"\\\n\x01가"}, {"array", Value::Array{1, 2.5, true, Value()}}, {"inner", Dictionary()}};
  EXPECT_EQ(textualForm(dictionary), R"(["array": [1, 2.5, true, null], "inner": [:], "text": "a \"b\"\\\n\u0001가"])");
  EXPECT_EQ(textualForm({}), "[:]");
}

class DistributedNotificationTest : public PluginTest {};

TEST_F(DistributedNotificationTest, APostReachesOthersAndOwnObserversAndIsLoggedOnce) {
  std::vector<Dictionary> heard;
  addObserver(this, Case::parentWindowWillClose, [&](const Dictionary& userInfo) { heard.push_back(userInfo); });
  log.clear();
  post({{"parentID", "main"}}, Case::parentWindowWillClose);
  EXPECT_THAT(log, ElementsAre("WebView >>>> pos mirelo_parentWindowWillClose userInfo: [\"parentID\": \"main\"]"));
  desktop.settle();
  EXPECT_THAT(heard, ElementsAre(Dictionary{{"parentID", "main"}}));
  EXPECT_THAT(desktop.broadcast()->posted(),
              ElementsAre(headless::BroadcastMessage{"mirelo_parentWindowWillClose", "", {{"parentID", "main"}}}));
}

}  // namespace
}  // namespace veltrik
