#include "Backends/Headless/HeadlessBroadcast.h"

namespace headless {

bool HeadlessBroadcast::post(const std::string& name, const std::string& object, const platform::Dictionary& userInfo) {
  journal_.write("broadcast: post " + name);
  if (faults_.broadcastDown) return false;
  posted_.push_back({name, object, userInfo});
  return true;
}

void HeadlessBroadcast::observe(const std::string& name) {
  if (observed_.insert(name).second) journal_.write("broadcast: observe " + name);
}

void HeadlessBroadcast::receiveFromOtherProcess(BroadcastMessage message) {
  loop_.deliver([this, message = std::move(message)] {
    if (!faults_.broadcastDown && receiver_ && observed_.contains(message.name))
      receiver_(message.name, message.object, message.userInfo);
  });
}

}  // namespace headless
