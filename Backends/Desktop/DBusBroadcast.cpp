#include "Backends/Desktop/DBusBroadcast.h"

#include <cstring>
#include <utility>

#include "Backends/Desktop/BusPayload.h"

namespace desktop {

using platform::Dictionary;

namespace {

bool isPlain(const std::string& text) {
  return text.find('\0') == std::string::npos;
}

/// In a match rule a value stands in quotes, and a quote outside of them, escaped.
std::string quoted(const std::string& value) {
  std::string result = "'";
  for (const char character : value) result += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return result + "'";
}

}  // namespace

DBusBroadcast::DBusBroadcast(SessionBus& bus) : bus_(bus) {
  bus_.onConnection([this] {
    for (const std::string& name : observed_) match(name);
  });
}

void DBusBroadcast::observe(const std::string& name) {
  if (!isPlain(name) || !observed_.insert(name).second || !bus_.connection()) return;
  match(name);
  bus_.updateWatch();
}

void DBusBroadcast::match(const std::string& name) {
  const std::string rule = std::string("type='signal',interface='") + kInterface + "',member='" + kMember + "',path='" +
                           kPath + "',arg0=" + quoted(name);
  const auto callback = [](sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<DBusBroadcast*>(self)->take(message);
    return 0;
  };
  sd_bus_add_match_async(bus_.connection(), nullptr, rule.c_str(), callback, nullptr, this);
}

bool DBusBroadcast::post(const std::string& name, const std::string& object, const Dictionary& userInfo) {
  sd_bus_message* made = nullptr;
  if (!isPlain(name) || !isPlain(object) || !canCross(userInfo) || !bus_.connection()) return false;
  if (sd_bus_message_new_signal(bus_.connection(), &made, kPath, kInterface, kMember) < 0) return false;
  const BusMessage message(made);
  if (sd_bus_message_append(made, "ss", name.c_str(), object.c_str()) < 0 || !append(made, userInfo)) return false;
  return bus_.send(message);
}

bool DBusBroadcast::isOwn(sd_bus_message* message) const {
  const char* own = nullptr;
  const char* sender = sd_bus_message_get_sender(message);
  return sender && sd_bus_get_unique_name(bus_.connection(), &own) >= 0 && std::strcmp(sender, own) == 0;
}

/// Runs inside the bus library, so it only keeps what came.
void DBusBroadcast::take(sd_bus_message* message) {
  const char* name = nullptr;
  const char* object = nullptr;
  if (isOwn(message) || sd_bus_message_has_signature(message, "ssa{sv}") <= 0) return;
  if (sd_bus_message_read(message, "ss", &name, &object) < 0) return;
  if (auto userInfo = readDictionary(message))
    bus_.deliver([this, name = std::string(name), object = std::string(object), userInfo = *std::move(userInfo)] {
      if (receiver_) receiver_(name, object, userInfo);
    });
}

}  // namespace desktop
