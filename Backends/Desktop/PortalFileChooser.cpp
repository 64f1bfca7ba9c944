#include "Backends/Desktop/PortalFileChooser.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Platform/Foundation/URL.h"
#include "Platform/Foundation/Unicode.h"

namespace desktop {

using platform::port::FilePanelRequest;
using Paths = std::vector<std::string>;

namespace {

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
/// The portal may have to be started first. It answers when it has taken the request, not when the user has.
constexpr std::chrono::milliseconds kPatience{3000};

/// Nothing before the bus has given us a name; asking then would wait for it.
std::string requestPath(sd_bus* bus, const std::string& token) {
  const char* name = nullptr;
  if (!bus || sd_bus_is_ready(bus) <= 0 || sd_bus_get_unique_name(bus, &name) < 0) return {};
  std::string sender(name + 1);
  std::replace(sender.begin(), sender.end(), '.', '_');
  return fmt::format("{}/request/{}/{}", kPath, sender, token);
}

bool appendBytes(sd_bus_message* message, const char* key, const std::string& bytes) {
  return sd_bus_message_open_container(message, 'e', "sv") >= 0 && sd_bus_message_append(message, "s", key) >= 0 &&
         sd_bus_message_open_container(message, 'v', "ay") >= 0 &&
         sd_bus_message_append_array(message, 'y', bytes.c_str(), bytes.size() + 1) >= 0 &&
         sd_bus_message_close_container(message) >= 0 && sd_bus_message_close_container(message) >= 0;
}

bool appendOptions(sd_bus_message* message, const FilePanelRequest& request, bool modal, const std::string& token) {
  const bool saves = request.kind == FilePanelRequest::Kind::save;
  if (sd_bus_message_open_container(message, 'a', "{sv}") < 0) return false;
  if (sd_bus_message_append(message, "{sv}{sv}", "handle_token", "s", token.c_str(), "modal", "b", modal ? 1 : 0) < 0)
    return false;
  if (!saves && sd_bus_message_append(message, "{sv}{sv}", "multiple", "b", request.multiple ? 1 : 0, "directory", "b",
                                      request.kind == FilePanelRequest::Kind::openFolder ? 1 : 0) < 0)
    return false;
  // A text on the bus is well-formed UTF-8.
  const std::string name = platform::utf8(platform::utf16(request.name));
  if (saves && !name.empty() && sd_bus_message_append(message, "{sv}", "current_name", "s", name.c_str()) < 0)
    return false;
  if (!request.directory.empty() && !appendBytes(message, "current_folder", request.directory)) return false;
  return sd_bus_message_close_container(message) >= 0;
}

std::optional<Paths> readURIs(sd_bus_message* message) {
  Paths paths;
  const char* uri = nullptr;
  if (sd_bus_message_enter_container(message, 'v', "as") <= 0 || sd_bus_message_enter_container(message, 'a', "s") <= 0)
    return std::nullopt;
  while (sd_bus_message_read(message, "s", &uri) > 0) {
    const auto url = platform::URL::fromString(uri);
    if (url && url->isFileURL()) paths.push_back(url->path());
  }
  if (sd_bus_message_exit_container(message) < 0 || sd_bus_message_exit_container(message) < 0 || paths.empty())
    return std::nullopt;
  return paths;
}

/// Nothing when the user left the dialog, or the answer makes no sense.
std::optional<Paths> readResponse(sd_bus_message* message) {
  std::uint32_t response = 0;
  const char* key = nullptr;
  if (sd_bus_message_has_signature(message, "ua{sv}") <= 0 || sd_bus_message_read(message, "u", &response) <= 0 ||
      response != 0 || sd_bus_message_enter_container(message, 'a', "{sv}") <= 0)
    return std::nullopt;
  std::optional<Paths> paths;
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    if (sd_bus_message_read(message, "s", &key) <= 0) return std::nullopt;
    const char* content = nullptr;
    const bool isPaths = std::string_view(key) == "uris" && sd_bus_message_peek_type(message, nullptr, &content) > 0 &&
                         std::string_view(content) == "as";
    if (isPaths)
      paths = readURIs(message);
    else if (sd_bus_message_skip(message, "v") < 0)
      return std::nullopt;
    if (sd_bus_message_exit_container(message) < 0) return std::nullopt;
  }
  return paths;
}

}  // namespace

PortalFileChooser::PortalFileChooser(SessionBus& bus, const FilePanelRequest& request, const Place& place,
                                     platform::port::FilePanels::Answer answered, Failed failed)
    : bus_(bus), answered_(std::move(answered)), failed_(std::move(failed)) {
  static unsigned count = 0;
  const std::string token = fmt::format("panel{}", ++count);
  path_ = requestPath(bus_.connection(), token);
  if (!path_.empty()) observe();
  ask(request, place, token);
}

PortalFileChooser::~PortalFileChooser() {
  if (path_.empty()) return;
  const BusMessage message = bus_.newCall(kService, path_.c_str(), kRequest, "Close");
  if (message) sd_bus_message_set_expect_reply(message.get(), 0);
  bus_.send(message);
}

/// Of all requests: old portals choose another path than the one they are to take.
void PortalFileChooser::observe() {
  const std::string rule =
      fmt::format("type='signal',sender='{}',interface='{}',member='Response',path_namespace='{}/request'", kService,
                  kRequest, kPath);
  const auto responded = [](sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<PortalFileChooser*>(self)->keep(message);
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  sd_bus_add_match_async(bus_.connection(), &slot, rule.c_str(), responded, nullptr, this);
  observation_.reset(slot);
}

void PortalFileChooser::ask(const FilePanelRequest& request, const Place& place, const std::string& token) {
  const bool saves = request.kind == FilePanelRequest::Kind::save;
  BusMessage message;
  if (!path_.empty())
    message = bus_.newCall(kService, kPath, "org.freedesktop.portal.FileChooser", saves ? "SaveFile" : "OpenFile");
  const std::string parent = place.parent ? fmt::format("x11:{:x}", place.parent) : "";
  if (message && (sd_bus_message_append(message.get(), "ss", parent.c_str(), "") < 0 ||
                  !appendOptions(message.get(), request, place.modal, token)))
    message.reset();
  const auto begun = std::chrono::steady_clock::now();
  bus_.call(message, kPatience, [this, begun, life = std::weak_ptr(life_)](const SessionBus::Reply& reply) {
    if (!life.expired()) asked(reply, std::chrono::steady_clock::now() - begun < kPatience);
  });
}

void PortalFileChooser::asked(const SessionBus::Reply& reply, bool inTime) {
  if (!reply.succeeded) return fail(!inTime);
  if (!reply.text.empty()) path_ = reply.text;
}

void PortalFileChooser::fail(bool hangs) {
  // One that only takes its time is told not to show the dialog any more.
  if (!hangs) path_.clear();
  const auto failed = std::exchange(failed_, nullptr);
  if (failed) failed(hangs);
}

/// Runs inside the bus library, so it only keeps what came. The portal's word on the path comes before.
void PortalFileChooser::keep(sd_bus_message* response) {
  bus_.deliver([this, life = std::weak_ptr(life_), path = std::string(sd_bus_message_get_path(response)),
                paths = readResponse(response)] {
    if (!life.expired()) take(path, paths);
  });
}

void PortalFileChooser::take(const std::string& path, const std::optional<Paths>& paths) {
  const auto answered = path == path_ ? std::exchange(answered_, nullptr) : nullptr;
  if (!answered) return;
  path_.clear();
  answered(paths);
}

}  // namespace desktop
