#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Port/Value.h"

namespace veltrik {

/// The notifications between the plug-in and the web-view companion, in declaration order. All but `webViewFeedback` go
/// to the companion. They carry no sender; what they carry in their dictionaries is listed in docs/boundary.md.
enum class MireloDistributedNotification {
  webViewLoading,
  webViewFeedback,
  mireloAppBecomeActive,
  mireloAppWillTerminate,
  parentWindowFrame,
  parentWindowDidBecomeMain,
  parentWindowWillClose,
};

/// "webViewLoading", …
std::string_view rawValue(MireloDistributedNotification notification);
/// The notification of exactly that raw value; nothing for any other text, a full name included.
std::optional<MireloDistributedNotification> mireloDistributedNotification(std::string_view rawValue);
/// "mirelo_" and the raw value: the name on the bus.
std::string notificationName(MireloDistributedNotification notification);

/// Posts to every process of the user, this one included, for immediate delivery, and writes one log line. Main thread.
void post(const platform::Dictionary& userInfo, MireloDistributedNotification notification);

/// Has `handler` called on the main thread whenever the notification arrives from anyone. `observer` is an identity to
/// remove by.
void addObserver(const void* observer, MireloDistributedNotification notification,
                 std::function<void(const platform::Dictionary& userInfo)> handler);

}  // namespace veltrik
