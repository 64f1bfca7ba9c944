#pragma once

#include <set>
#include <string>
#include <vector>

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/Broadcast.h"

namespace headless {

/// One notification as it crosses between processes.
struct BroadcastMessage {
  std::string name;
  std::string object;
  platform::Dictionary userInfo;
  friend bool operator==(const BroadcastMessage&, const BroadcastMessage&) = default;
};

/// A channel whose other end is the test.
class HeadlessBroadcast final : public platform::port::Broadcast {
 public:
  HeadlessBroadcast(HeadlessLoop& loop, Journal& journal, const Faults& faults)
      : loop_(loop), journal_(journal), faults_(faults) {}

  bool post(const std::string& name, const std::string& object, const platform::Dictionary& userInfo) override;
  void observe(const std::string& name) override;
  void setReceiver(Receiver receiver) override { receiver_ = std::move(receiver); }

  /// What this process posted, oldest first; without what a fault kept back.
  const std::vector<BroadcastMessage>& posted() const { return posted_; }
  std::vector<BroadcastMessage> takePosted() { return std::exchange(posted_, {}); }
  const std::set<std::string>& observed() const { return observed_; }
  /// Another process posts: arrives at the loop's next turn, in order, if the name is observed then.
  void receiveFromOtherProcess(BroadcastMessage message);

 private:
  HeadlessLoop& loop_;
  Journal& journal_;
  const Faults& faults_;
  Receiver receiver_;
  std::set<std::string> observed_;
  std::vector<BroadcastMessage> posted_;
};

}  // namespace headless
