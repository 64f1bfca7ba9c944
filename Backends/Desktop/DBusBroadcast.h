#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <memory>
#include <set>
#include <string>

#include "Platform/Port/Broadcast.h"

struct sd_bus;
struct sd_bus_message;

namespace desktop {

/// Notifications as signals on the user's session bus: interface `kInterface`, member "Posted", arguments name, object
/// and a{sv}. A private connection, read on the main thread a few milliseconds at a time, in order; what isn't read yet
/// waits with the bus. When the bus dies, it is looked for again and again, ever more slowly, and observed again.
class DBusBroadcast final : public platform::port::Broadcast {
 public:
  static constexpr const char* kInterface = "com.brenholt.VeltrikAppKit.Notifications";
  static constexpr const char* kPath = "/com/brenholt/VeltrikAppKit/Notifications";
  static constexpr const char* kMember = "Posted";

  DBusBroadcast();
  ~DBusBroadcast() override;
  DBusBroadcast(const DBusBroadcast&) = delete;
  DBusBroadcast& operator=(const DBusBroadcast&) = delete;

  bool post(const std::string& name, const std::string& object, const platform::Dictionary& userInfo) override;
  void observe(const std::string& name) override;
  void setReceiver(Receiver receiver) override { receiver_ = std::move(receiver); }

 private:
  struct Closer {
    void operator()(sd_bus* bus) const;
  };
  struct Notification {
    std::string name;
    std::string object;
    platform::Dictionary userInfo;
  };

  void connect();
  void disconnect();
  void match(const std::string& name);
  void watch();
  void updateWatch();
  void drain();
  bool isOwn(sd_bus_message* message) const;
  void take(sd_bus_message* message);

  std::unique_ptr<sd_bus, Closer> bus_;
  std::set<std::string> observed_;
  Receiver receiver_;
  std::deque<Notification> received_;
  QObject context_;
  std::unique_ptr<QSocketNotifier> readable_;
  std::unique_ptr<QSocketNotifier> writable_;
  QTimer continue_;
  QTimer reconnect_;
  int patience_;
};

}  // namespace desktop
