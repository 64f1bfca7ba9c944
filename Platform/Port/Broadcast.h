#pragma once

#include <functional>
#include <string>

#include "Platform/Port/Value.h"

namespace platform::port {

/// Notifications between the processes of one user. Main thread.
class Broadcast {
 public:
  using Receiver = std::function<void(const std::string& name, const std::string& object, const Dictionary& userInfo)>;
  virtual ~Broadcast() = default;
  /// Sends to every *other* process that observes `name`. False when there is no channel or the payload is too large.
  virtual bool post(const std::string& name, const std::string& object, const Dictionary& userInfo) = 0;
  /// From now on notifications of this name reach the receiver; kept over the loss of the channel.
  virtual void observe(const std::string& name) = 0;
  virtual void setReceiver(Receiver receiver) = 0;
};

}  // namespace platform::port
