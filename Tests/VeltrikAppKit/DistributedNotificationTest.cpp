#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/DictionaryText.h"
#include "VeltrikAppKit/MireloDistributedNotification.h"

namespace veltrik {
namespace {

using Case = MireloDistributedNotification;
using platform::Dictionary;
using platform::Value;

struct NameRow {
  Case notification;
  const char* raw;
};

class NotificationNameTest : public testing::TestWithParam<NameRow> {};

TEST_P(NotificationNameTest, IsThePrefixAndTheRawValue) {
  const std::string raw = GetParam().raw;
  EXPECT_EQ(rawValue(GetParam().notification), raw);
  EXPECT_EQ(notificationName(GetParam().notification), "mirelo_" + raw);
  EXPECT_EQ(mireloDistributedNotification(raw), GetParam().notification);
  for (const std::string& other : {"mirelo_" + raw, raw + " ", raw.substr(1), std::string(1, 'X') + raw.substr(1)})
    EXPECT_EQ(mireloDistributedNotification(other), std::nullopt) << other;
}

INSTANTIATE_TEST_SUITE_P(Rows, NotificationNameTest,
                         testing::Values(NameRow{Case::webViewLoading, "webViewLoading"},
                                         NameRow{Case::webViewFeedback, "webViewFeedback"},
                                         NameRow{Case::mireloAppBecomeActive, "mireloAppBecomeActive"},
                                         NameRow{Case::mireloAppWillTerminate, "mireloAppWillTerminate"},
                                         NameRow{Case::parentWindowFrame, "parentWindowFrame"},
                                         NameRow{Case::parentWindowDidBecomeMain, "parentWindowDidBecomeMain"},
                                         NameRow{Case::parentWindowWillClose, "parentWindowWillClose"}),
                         [](const auto& row) { return row.param.raw; });

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
  EXPECT_THAT(log,
              testing::ElementsAre("WebView >>>> pos mirelo_parentWindowWillClose userInfo: [\"parentID\": \"main\"]"));
  desktop.settle();
  EXPECT_THAT(heard, testing::ElementsAre(Dictionary{{"parentID", "main"}}));
  EXPECT_THAT(desktop.broadcast()->posted(), testing::ElementsAre(headless::BroadcastMessage{
                                                 "mirelo_parentWindowWillClose", "", {{"parentID", "main"}}}));
}

TEST_F(DistributedNotificationTest, WithoutABusThePostIsLoggedAndTheProcessRunsOn) {
  desktop.faults().broadcastDown = true;
  log.clear();
  post({}, Case::mireloAppBecomeActive);
  EXPECT_THAT(log, testing::Contains("WebView >>>> pos mirelo_mireloAppBecomeActive userInfo: [:]"));
}

}  // namespace
}  // namespace veltrik
