#pragma once

#include <set>
#include <string>

#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/Broadcast.h"

namespace desktop {

/// Notifications as signals on the user's session bus: interface `kInterface`, member "Posted", arguments name, object
/// and a{sv}; in order, and observed again when the bus comes back.
class DBusBroadcast final : public platform::port::Broadcast {
 public:
  static constexpr const char* kInterface = "com.brenholt.VeltrikAppKit.Notifications";
  static constexpr const char* kPath = "/com/brenholt/VeltrikAppKit/Notifications";
  static constexpr const char* kMember = "Posted";

  /// Borrowed; outlives this.
  explicit DBusBroadcast(SessionBus& bus);
  DBusBroadcast(const DBusBroadcast&) = delete;
  DBusBroadcast& operator=(const DBusBroadcast&) = delete;

  bool post(const std::string& name, const std::string& object, const platform::Dictionary& userInfo) override;
  void observe(const std::string& name) override;
  void setReceiver(Receiver receiver) override { receiver_ = std::move(receiver); }

 private:
  void match(const std::string& name);
  bool isOwn(sd_bus_message* message) const;
  void take(sd_bus_message* message);

  SessionBus& bus_;
  std::set<std::string> observed_;
  Receiver receiver_;
};

}  // namespace desktop
