#include "Backends/Desktop/LoginSession.h"

#include <QByteArray>
#include <optional>
#include <string_view>
#include <utility>

#include "Backends/Desktop/LoginManager.h"

namespace desktop {

namespace {

constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kLocked = "LockedHint";
constexpr const char* kRules[] = {
    "type='signal',sender='org.freedesktop.login1',interface='org.freedesktop.login1.Session'",
    "type='signal',sender='org.freedesktop.login1',interface='org.freedesktop.DBus.Properties',"
    "member='PropertiesChanged',path_namespace='/org/freedesktop/login1/session'"};

/// What a list of changed properties says of the lock.
std::optional<bool> lockedIn(sd_bus_message* message) {
  const char* interface = nullptr;
  if (sd_bus_message_read(message, "s", &interface) <= 0 || interface != std::string_view(kSession))
    return std::nullopt;
  std::optional<bool> locked;
  if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return std::nullopt;
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    const char* name = nullptr;
    int value = 0;
    if (sd_bus_message_read(message, "s", &name) <= 0) return std::nullopt;
    if (name != std::string_view(kLocked))
      sd_bus_message_skip(message, "v");
    else if (sd_bus_message_read(message, "v", "b", &value) > 0)
      locked = value != 0;
    if (sd_bus_message_exit_container(message) < 0) return std::nullopt;
  }
  return locked;
}

std::optional<bool> lockedBy(sd_bus_message* message) {
  if (sd_bus_message_is_signal(message, kSession, "Lock") > 0) return true;
  if (sd_bus_message_is_signal(message, kSession, "Unlock") > 0) return false;
  return sd_bus_message_is_signal(message, kProperties, "PropertiesChanged") > 0 ? lockedIn(message) : std::nullopt;
}

}  // namespace

LoginSession::LoginSession(SessionBus& bus, std::function<void(bool locked)> changed)
    : bus_(bus), changed_(std::move(changed)) {
  bus_.onConnection([this] { observe(); });
  bus_.watchOwner(loginmanager::kName, [this](const std::string& owner) { ownerChanged(owner); });
}

void LoginSession::observe() {
  for (const char* rule : kRules) sd_bus_add_match_async(bus_.connection(), nullptr, rule, heard, nullptr, this);
}

int LoginSession::heard(sd_bus_message* message, void* self, sd_bus_error*) {
  auto& session = *static_cast<LoginSession*>(self);
  const char* const path = sd_bus_message_get_path(message);
  if (const auto locked = lockedBy(message); locked && path)
    session.bus_.deliver([&session, from = std::string(path), isLocked = *locked] {
      if (from == session.path_) session.changed_(isLocked);
    });
  return 0;
}

void LoginSession::ownerChanged(const std::string& owner) {
  path_.clear();
  // One that has gone won't say that the session was unlocked.
  changed_(false);
  if (owner.empty()) return;
  const auto question = loginmanager::newCall(bus_, "GetSession");
  const QByteArray own = qgetenv("XDG_SESSION_ID");
  if (!question || sd_bus_message_append(question.get(), "s", own.isEmpty() ? "auto" : own.constData()) < 0) return;
  bus_.call(question, loginmanager::kPatience, [this](const SessionBus::Reply& reply) {
    if (reply.succeeded) found(reply.text);
  });
}

void LoginSession::found(const std::string& path) {
  path_ = path;
  const auto question = bus_.newCall(loginmanager::kName, path.c_str(), kProperties, "Get");
  if (!question || sd_bus_message_append(question.get(), "ss", kSession, kLocked) < 0) return;
  bus_.call(question, loginmanager::kPatience, [this](const SessionBus::Reply& reply) {
    if (reply.succeeded && reply.number != 0) changed_(true);
  });
}

}  // namespace desktop
