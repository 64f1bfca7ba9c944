#include "Backends/Desktop/DBusBroadcast.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <QElapsedTimer>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "Backends/Desktop/BusPayload.h"

namespace desktop {

using platform::Dictionary;

namespace {

constexpr int kFirstPatience = 50, kLastPatience = 5000;  // milliseconds between attempts to connect
constexpr qint64 kSliceMilliseconds = 8;
/// A bus that takes nothing any more counts as none, before the queue grows.
constexpr std::uint64_t kMostUnsent = 256;

struct MessageFree {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageFree>;

bool isPlain(const std::string& text) {
  return text.find('\0') == std::string::npos;
}

/// `due` in microseconds of the monotonic clock.
int millisecondsUntil(std::uint64_t due) {
  constexpr std::uint64_t kLongest = 60'000'000;
  const auto now = static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
          .count());
  return due > now ? static_cast<int>(std::min(due - now, kLongest) / 1000) + 1 : 0;
}

/// In a match rule a value stands in quotes, and a quote outside of them, escaped.
std::string quoted(const std::string& value) {
  std::string result = "'";
  for (const char character : value) result += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return result + "'";
}

}  // namespace

void DBusBroadcast::Closer::operator()(sd_bus* bus) const {
  sd_bus_close_unref(bus);
}

DBusBroadcast::DBusBroadcast() : patience_(kFirstPatience) {
  continue_.setSingleShot(true);
  reconnect_.setSingleShot(true);
  QObject::connect(&continue_, &QTimer::timeout, &context_, [this] { drain(); });
  QObject::connect(&reconnect_, &QTimer::timeout, &context_, [this] { connect(); });
  connect();
}

DBusBroadcast::~DBusBroadcast() {
  readable_.reset();
  writable_.reset();
  if (bus_) sd_bus_flush(bus_.get());
}

void DBusBroadcast::connect() {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) {
    reconnect_.start(patience_);
    patience_ = std::min(patience_ * 2, kLastPatience);
    return;
  }
  bus_.reset(opened);
  sd_bus_set_exit_on_disconnect(opened, 0);
  for (const std::string& name : observed_) match(name);
  watch();
}

void DBusBroadcast::disconnect() {
  // One of them may be what calls us.
  for (auto* notifier : {&readable_, &writable_}) {
    (*notifier)->setEnabled(false);
    notifier->release()->deleteLater();
  }
  bus_.reset();
  reconnect_.start(patience_);
  patience_ = std::min(patience_ * 2, kLastPatience);
}

void DBusBroadcast::watch() {
  const int descriptor = sd_bus_get_fd(bus_.get());
  readable_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  writable_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
  QObject::connect(readable_.get(), &QSocketNotifier::activated, &context_, [this] { drain(); });
  QObject::connect(writable_.get(), &QSocketNotifier::activated, &context_, [this] { drain(); });
  updateWatch();
}

void DBusBroadcast::updateWatch() {
  const int events = bus_ ? sd_bus_get_events(bus_.get()) : 0;
  if (readable_) readable_->setEnabled(events > 0 && (events & POLLIN));
  if (writable_) writable_->setEnabled(events > 0 && (events & POLLOUT));
  // A connection that a post found broken has no events any more, only something to do now.
  std::uint64_t due = 0;
  if (bus_ && sd_bus_get_timeout(bus_.get(), &due) > 0) continue_.start(millisecondsUntil(due));
}

void DBusBroadcast::observe(const std::string& name) {
  if (!isPlain(name) || !observed_.insert(name).second || !bus_) return;
  match(name);
  updateWatch();
}

void DBusBroadcast::match(const std::string& name) {
  const std::string rule = std::string("type='signal',interface='") + kInterface + "',member='" + kMember + "',path='" +
                           kPath + "',arg0=" + quoted(name);
  const auto callback = [](sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<DBusBroadcast*>(self)->take(message);
    return 0;
  };
  sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), callback, nullptr, this);
}

bool DBusBroadcast::post(const std::string& name, const std::string& object, const Dictionary& userInfo) {
  if (!bus_ || !isPlain(name) || !isPlain(object) || !canCross(userInfo)) return false;
  std::uint64_t unsent = 0;
  if (sd_bus_get_n_queued_write(bus_.get(), &unsent) < 0 || unsent > kMostUnsent) return false;
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_signal(bus_.get(), &made, kPath, kInterface, kMember) < 0) return false;
  const Message message(made);
  if (sd_bus_message_append(made, "ss", name.c_str(), object.c_str()) < 0 || !append(made, userInfo)) return false;
  const bool sent = sd_bus_send(bus_.get(), made, nullptr) >= 0;
  updateWatch();
  return sent;
}

bool DBusBroadcast::isOwn(sd_bus_message* message) const {
  const char* own = nullptr;
  const char* sender = sd_bus_message_get_sender(message);
  return sender && sd_bus_get_unique_name(bus_.get(), &own) >= 0 && std::strcmp(sender, own) == 0;
}

/// Runs inside the bus library, so it only keeps what came: a receiver may post, or run a loop of its own.
void DBusBroadcast::take(sd_bus_message* message) {
  const char* name = nullptr;
  const char* object = nullptr;
  if (isOwn(message) || sd_bus_message_has_signature(message, "ssa{sv}") <= 0) return;
  if (sd_bus_message_read(message, "ss", &name, &object) < 0) return;
  if (auto userInfo = readDictionary(message)) received_.push_back({name, object, *std::move(userInfo)});
}

/// Reads and delivers one by one; a loop inside a receiver goes on with the next.
void DBusBroadcast::drain() {
  QElapsedTimer slice;
  slice.start();
  while (bus_ && slice.elapsed() < kSliceMilliseconds) {
    const int processed = received_.empty() ? sd_bus_process(bus_.get(), nullptr) : 1;
    if (processed == -EBUSY) return;
    if (processed < 0) return disconnect();
    if (processed == 0) {
      if (sd_bus_is_ready(bus_.get()) > 0) patience_ = kFirstPatience;
      return updateWatch();
    }
    if (received_.empty()) continue;
    const Notification next = std::move(received_.front());
    received_.pop_front();
    if (receiver_) receiver_(next.name, next.object, next.userInfo);
  }
  if (bus_) continue_.start(0);
}

}  // namespace desktop
