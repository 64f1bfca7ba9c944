#include "VeltrikAppKit/MireloDistributedNotification.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/Log.h"
#include "VeltrikAppKit/DictionaryText.h"

namespace veltrik {

using platform::DistributedNotificationCenter;

namespace {

constexpr std::array<std::string_view, 7> kRawValues = {
    "webViewLoading",    "webViewFeedback",           "mireloAppBecomeActive", "mireloAppWillTerminate",
    "parentWindowFrame", "parentWindowDidBecomeMain", "parentWindowWillClose"};

}  // namespace

std::string_view rawValue(MireloDistributedNotification notification) {
  return kRawValues.at(static_cast<std::size_t>(notification));
}

std::optional<MireloDistributedNotification> mireloDistributedNotification(std::string_view rawValue) {
  const auto found = std::find(kRawValues.begin(), kRawValues.end(), rawValue);
  if (found == kRawValues.end()) return std::nullopt;
  return static_cast<MireloDistributedNotification>(found - kRawValues.begin());
}

std::string notificationName(MireloDistributedNotification notification) {
  return "mirelo_" + std::string(rawValue(notification));
}

void post(const platform::Dictionary& userInfo, MireloDistributedNotification notification) {
  const std::string name = notificationName(notification);
  DistributedNotificationCenter::defaultCenter().post(name, "", userInfo,
                                                      DistributedNotificationCenter::kDeliverImmediately);
  platform::NSLog("WebView >>>> pos " + name + " userInfo: " + textualForm(userInfo));
}

void addObserver(const void* observer, MireloDistributedNotification notification,
                 std::function<void(const platform::Dictionary& userInfo)> handler) {
  DistributedNotificationCenter::defaultCenter().addObserver(
      observer, notificationName(notification), "", DistributedNotificationCenter::kSuspensionDeliverImmediately,
      [handler = std::move(handler)](const std::string&, const platform::Dictionary& userInfo) { handler(userInfo); });
}

}  // namespace veltrik
