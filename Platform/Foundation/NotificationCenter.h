#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Port/Value.h"

namespace platform {

/// `object` is the sender as an identity only, null for none.
struct Notification {
  std::string name;
  const void* object = nullptr;
  Dictionary userInfo;
};

/// Observers by name and sender inside the process; `post` calls them before it returns. Main thread.
class PLATFORM_EXPORT NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  static NotificationCenter& defaultCenter();

  /// `observer` is an identity to remove by; `object` null observes every sender. An observer added or removed inside a
  /// handler counts from the next post, a removed one not any more.
  void addObserver(const void* observer, const std::string& name, const void* object, Handler handler);
  void removeObserver(const void* observer);
  void post(const Notification& notification);

 private:
  struct Entry;
  std::vector<std::shared_ptr<Entry>> entries_;
};

}  // namespace platform
