#include "Backends/Desktop/SessionBus.h"

#include <fcntl.h>
#include <poll.h>

#include <QElapsedTimer>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "Platform/Foundation/Log.h"

namespace desktop {

namespace {

constexpr int kFirstPatience = 50, kLastPatience = 5000;  // milliseconds between attempts to connect
constexpr qint64 kSliceMilliseconds = 8;
constexpr qint64 kFarewellMilliseconds = 250;
/// A bus that takes nothing any more counts as none, before the queue grows.
constexpr std::uint64_t kMostUnsent = 256;
constexpr std::chrono::seconds kOwnerPatience{25};

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

/// `due` in microseconds of the monotonic clock.
int millisecondsUntil(std::uint64_t due) {
  constexpr std::uint64_t kLongest = 60'000'000;
  const auto now = static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
          .count());
  return due > now ? static_cast<int>(std::min(due - now, kLongest) / 1000) + 1 : 0;
}

SessionBus::Reply replyOf(sd_bus_message* message) {
  SessionBus::Reply reply;
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    reply.error = error->message ? error->message : error->name;
    return reply;
  }
  reply.succeeded = true;
  char type = 0;
  const char* text = nullptr;
  const char* contents = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == 'v')
    sd_bus_message_enter_container(message, type, contents);
  const bool isText = sd_bus_message_peek_type(message, &type, nullptr) > 0 && (type == 's' || type == 'o');
  if (isText && sd_bus_message_read_basic(message, type, &text) > 0) reply.text = text;
  if (type == 'b') sd_bus_message_read_basic(message, type, &reply.number);
  // The message keeps its own one.
  if (int lent = -1; type == 'h' && sd_bus_message_read_basic(message, type, &lent) > 0)
    reply.descriptor = std::make_shared<platform::FileDescriptor>(fcntl(lent, F_DUPFD_CLOEXEC, 0));
  return reply;
}

}  // namespace

/// A call that waits for its answer; the bus library owns it and destroys it with the answer or the connection.
struct SessionBus::PendingCall {
  SessionBus& bus;
  std::weak_ptr<bool> life;
  Completion completion;

  void end(Reply reply) {
    if (!completion || life.expired()) return;
    bus.deliver([completion = std::exchange(completion, nullptr), reply = std::move(reply)] { completion(reply); });
  }
  static int answered(sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<PendingCall*>(self)->end(replyOf(message));
    return 0;
  }
  static void destroyed(void* self) {
    const std::unique_ptr<PendingCall> owned(static_cast<PendingCall*>(self));
    owned->end({.error = "the bus has gone"});
  }
};

SessionBus::SessionBus(Kind kind)
    : kind_(kind), continue_(new QTimer), reconnect_(new QTimer), patience_(kFirstPatience) {
  continue_->setSingleShot(true);
  reconnect_->setSingleShot(true);
  QObject::connect(continue_.get(), &QTimer::timeout, &context_, [this] { drain(); });
  QObject::connect(reconnect_.get(), &QTimer::timeout, &context_, [this] { connect(); });
  connect();
}

SessionBus::~SessionBus() {
  life_.reset();
  sendRest();
}

void SessionBus::connect() {
  sd_bus* opened = nullptr;
  if ((kind_ == Kind::user ? sd_bus_open_user(&opened) : sd_bus_open_system(&opened)) < 0) {
    if (kind_ == Kind::user && patience_ == kFirstPatience)
      platform::NSLog("There is no session bus; it is looked for now and then");
    return scheduleConnection();
  }
  bus_.reset(opened);
  sd_bus_set_exit_on_disconnect(opened, 0);
  // Those who observe are gone before the bus is, which still reads while it sends its rest.
  const auto swallow = [](sd_bus_message*, void* self, sd_bus_error*) {
    return static_cast<const SessionBus*>(self)->life_ ? 0 : 1;
  };
  sd_bus_add_filter(opened, nullptr, swallow, this);
  for (const auto& setUp : setUps_) setUp();
  for (Watched& watched : watched_) observeOwner(watched);
  watchDescriptor();
}

void SessionBus::disconnect() {
  readable_.reset();
  writable_.reset();
  bus_.reset();
  for (const Watched& watched : watched_) ownerChanged(watched.name, "");
  scheduleConnection();
  if (!deliveries_.empty()) continue_->start(0);
}

void SessionBus::scheduleConnection() {
  reconnect_->start(patience_);
  patience_ = std::min(patience_ * 2, kLastPatience);
}

void SessionBus::watchDescriptor() {
  const int descriptor = sd_bus_get_fd(bus_.get());
  readable_.reset(new QSocketNotifier(descriptor, QSocketNotifier::Read));
  writable_.reset(new QSocketNotifier(descriptor, QSocketNotifier::Write));
  QObject::connect(readable_.get(), &QSocketNotifier::activated, &context_, [this] { drain(); });
  QObject::connect(writable_.get(), &QSocketNotifier::activated, &context_, [this] { drain(); });
  updateWatch();
}

void SessionBus::updateWatch() {
  const int events = bus_ ? sd_bus_get_events(bus_.get()) : 0;
  if (readable_) readable_->setEnabled(events > 0 && (events & POLLIN));
  if (writable_) writable_->setEnabled(events > 0 && (events & POLLOUT));
  // A connection that was found broken while sending has no events any more, only something to do now.
  std::uint64_t due = 0;
  if (bus_ && sd_bus_get_timeout(bus_.get(), &due) > 0) continue_->start(millisecondsUntil(due));
  if (!deliveries_.empty()) continue_->start(0);
}

void SessionBus::onConnection(std::function<void()> setUp) {
  setUps_.push_back(std::move(setUp));
  if (!bus_) return;
  setUps_.back()();
  updateWatch();
}

void SessionBus::watchOwner(const std::string& name, OwnerWatcher watcher) {
  watched_.push_back({name, {}, false, std::move(watcher)});
  if (!bus_) return;
  observeOwner(watched_.back());
  updateWatch();
}

/// Changes are observed before the question is asked, so that none falls between them.
void SessionBus::observeOwner(Watched& watched) {
  const std::string rule = std::string("type='signal',sender='") + kBusName + "',interface='" + kBusName +
                           "',member='NameOwnerChanged',arg0='" + watched.name + "'";
  const auto changed = [](sd_bus_message* message, void* self, sd_bus_error*) {
    const char* name = nullptr;
    const char* former = nullptr;
    const char* owner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &former, &owner) >= 0)
      static_cast<SessionBus*>(self)->ownerChanged(name, owner);
    return 0;
  };
  sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), changed, nullptr, this);
  const BusMessage question = newCall(kBusName, kBusPath, kBusName, "GetNameOwner");
  if (!question || sd_bus_message_append(question.get(), "s", watched.name.c_str()) < 0) return;
  call(question, kOwnerPatience, [this, &watched](const Reply& reply) {
    if (reply.succeeded || !watched.isKnown) ownerChanged(watched.name, reply.text);
  });
}

void SessionBus::ownerChanged(const std::string& name, const std::string& owner) {
  for (Watched& watched : watched_) {
    if (watched.name != name || (watched.isKnown && watched.owner == owner)) continue;
    watched.owner = owner;
    watched.isKnown = true;
    deliver([&watched, owner] { watched.watcher(owner); });
  }
}

bool SessionBus::takesMore() const {
  std::uint64_t unsent = 0;
  return bus_ && sd_bus_get_n_queued_write(bus_.get(), &unsent) >= 0 && unsent <= kMostUnsent;
}

bool SessionBus::send(const BusMessage& message) {
  if (!message || !takesMore()) return false;
  const bool sent = sd_bus_send(bus_.get(), message.get(), nullptr) >= 0;
  updateWatch();
  return sent;
}

void SessionBus::call(const BusMessage& message, std::chrono::milliseconds patience, Completion completion) {
  auto pending = std::make_unique<PendingCall>(PendingCall{*this, life_, std::move(completion)});
  sd_bus_slot* slot = nullptr;
  const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(patience).count();
  if (message && takesMore() &&
      sd_bus_call_async(bus_.get(), &slot, message.get(), &PendingCall::answered, pending.get(),
                        static_cast<std::uint64_t>(microseconds)) >= 0) {
    sd_bus_slot_set_destroy_callback(slot, &PendingCall::destroyed);
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    static_cast<void>(pending.release());
  } else {
    pending->end({.error = "there is no bus"});
  }
  updateWatch();
}

BusMessage SessionBus::newCall(const char* destination, const char* path, const char* interface,
                               const char* member) const {
  sd_bus_message* made = nullptr;
  if (!bus_ || sd_bus_message_new_method_call(bus_.get(), &made, destination, path, interface, member) < 0)
    return nullptr;
  return BusMessage(made);
}

/// Reads and delivers one by one; a loop inside a delivery goes on with the next.
void SessionBus::drain() {
  QElapsedTimer slice;
  slice.start();
  const std::weak_ptr<bool> life = life_;
  while (slice.elapsed() < kSliceMilliseconds) {
    if (!deliveries_.empty()) {
      const auto work = std::move(deliveries_.front());
      deliveries_.pop_front();
      work();
      if (life.expired()) return;
      continue;
    }
    const int processed = bus_ ? sd_bus_process(bus_.get(), nullptr) : 0;
    if (processed == -EBUSY) return;
    if (processed < 0) return disconnect();
    if (processed > 0) continue;
    if (bus_ && sd_bus_is_ready(bus_.get()) > 0) patience_ = kFirstPatience;
    // The bus library's handlers may have left work even when it says that nothing was done.
    if (deliveries_.empty()) return updateWatch();
  }
  continue_->start(0);
}

void SessionBus::sendRest() {
  QElapsedTimer farewell;
  farewell.start();
  std::uint64_t unsent = 0;
  while (bus_ && sd_bus_get_n_queued_write(bus_.get(), &unsent) >= 0 && unsent > 0) {
    const qint64 left = kFarewellMilliseconds - farewell.elapsed();
    if (left <= 0 || sd_bus_process(bus_.get(), nullptr) < 0) return;
    if (sd_bus_get_n_queued_write(bus_.get(), &unsent) < 0 || unsent == 0) return;
    if (sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left) * 1000) < 0) return;
  }
}

}  // namespace desktop
