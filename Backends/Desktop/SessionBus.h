#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Backends/Desktop/BusMessage.h"
#include "Platform/Foundation/FileDescriptor.h"

namespace desktop {

/// A connection to the user's session bus, or to the system's, driven by the toolkit's loop a few milliseconds at a
/// time. What isn't read yet waits with the bus. Nothing here waits for an answer: with no bus, a dead or a hanging one
/// the main thread goes on. A bus that has died is looked for again and again, ever more slowly. Main thread.
class SessionBus {
 public:
  enum class Kind { user, system };
  /// How a call ended. `text` is the answer's first argument where that is a text, `number` where it is a truth value,
  /// also in a variant; `descriptor` where it is a file descriptor, null otherwise. `error` says what went wrong.
  struct Reply {
    bool succeeded = false;
    std::string text{};
    int number = 0;
    std::shared_ptr<const platform::FileDescriptor> descriptor{};
    std::string error{};
  };
  using Completion = std::function<void(const Reply&)>;
  /// Hears the unique name of who owns a name, empty for nobody.
  using OwnerWatcher = std::function<void(const std::string& owner)>;

  explicit SessionBus(Kind kind = Kind::user);
  /// What was sent goes out if the bus takes it in a fraction of a second.
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  /// Null while there is no bus.
  sd_bus* connection() const { return bus_.get(); }
  /// Runs now, if there is a bus, and at every later connection: what is to be observed or offered.
  void onConnection(std::function<void()> setUp);
  /// Tells who owns `name` as soon as it is known and at every change.
  void watchOwner(const std::string& name, OwnerWatcher watcher);

  /// False when there is no bus, or one that takes nothing any more.
  bool send(const BusMessage& message);
  /// The completion runs exactly once, in a later turn, unless the bus is destroyed before. A call that can't be sent
  /// ends as one that isn't answered in time does.
  void call(const BusMessage& message, std::chrono::milliseconds patience, Completion completion);
  /// A call's message without arguments yet; null without a bus or for names that the bus doesn't take.
  BusMessage newCall(const char* destination, const char* path, const char* interface, const char* member) const;
  /// To be called after something was queued by the bus library's own functions.
  void updateWatch();

  /// Runs `work` outside of the bus library, in order: it may send, run a loop of its own or destroy this object.
  /// Handlers that the bus library calls do no more than answer and keep what came with this.
  void deliver(std::function<void()> work) { deliveries_.push_back(std::move(work)); }

 private:
  struct Closer {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };
  /// A notifier may be what calls us while it is given up.
  struct GiveUp {
    void operator()(QSocketNotifier* notifier) const {
      notifier->setEnabled(false);
      notifier->deleteLater();
    }
  };
  struct DeleteLater {
    void operator()(QTimer* timer) const {
      timer->stop();
      timer->deleteLater();
    }
  };
  struct Watched {
    std::string name;
    std::string owner;
    bool isKnown;
    OwnerWatcher watcher;
  };
  struct PendingCall;
  using TimerPointer = std::unique_ptr<QTimer, DeleteLater>;
  using NotifierPointer = std::unique_ptr<QSocketNotifier, GiveUp>;

  void connect();
  void disconnect();
  void scheduleConnection();
  void watchDescriptor();
  bool takesMore() const;
  void observeOwner(Watched& watched);
  void ownerChanged(const std::string& name, const std::string& owner);
  void drain();
  void sendRest();

  const Kind kind_;
  QObject context_;
  std::shared_ptr<bool> life_ = std::make_shared<bool>();
  std::vector<std::function<void()>> setUps_;
  std::deque<Watched> watched_;
  std::deque<std::function<void()>> deliveries_;
  TimerPointer continue_;
  TimerPointer reconnect_;
  int patience_;
  std::unique_ptr<sd_bus, Closer> bus_;
  NotifierPointer readable_;
  NotifierPointer writable_;
};

}  // namespace desktop
