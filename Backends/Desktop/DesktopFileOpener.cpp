#include "Backends/Desktop/DesktopFileOpener.h"

#include <fcntl.h>

#include <chrono>
#include <filesystem>
#include <utility>
#include <vector>

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/URL.h"

namespace desktop {

namespace {

/// A file manager may have to be started first.
constexpr std::chrono::seconds kPatience{10};

/// The first one that is installed is asked. gio comes first because it ends once the application has been started, and
/// says whether it was.
const std::vector<std::vector<std::string>>& openers() {
  static const std::vector<std::vector<std::string>> all = {{"gio", "open"}, {"xdg-open"}};
  return all;
}

}  // namespace

void DesktopFileOpener::open(const std::string& path, Completion completion) {
  for (std::vector<std::string> command : openers()) {
    const std::string name = command.front();
    command.push_back(path);
    const auto ended = [name, completion](int status) {
      completion(status == 0 ? "" : name + " ended with status " + std::to_string(status));
    };
    if (programs_.start(command, ended) == 0) return;
  }
  askPortal("OpenFile", path, [completion = std::move(completion)](const SessionBus::Reply& reply) {
    completion(reply.succeeded ? "" : "neither gio nor xdg-open can be started, and the portal says: " + reply.error);
  });
}

void DesktopFileOpener::reveal(const std::string& path, Completion completion) {
  constexpr const char* kName = "org.freedesktop.FileManager1";
  const BusMessage message = bus_.newCall(kName, "/org/freedesktop/FileManager1", kName, "ShowItems");
  const std::string uri = platform::URL::fileURL(path).absoluteString();
  if (message) sd_bus_message_append(message.get(), "ass", 1, uri.c_str(), "");
  bus_.call(message, kPatience, [this, path, completion = std::move(completion)](const SessionBus::Reply& shown) {
    if (shown.succeeded) return completion("");
    askPortal("OpenDirectory", path, [this, path, completion](const SessionBus::Reply& opened) {
      if (opened.succeeded) return completion("");
      open(std::filesystem::path(path).parent_path().native(), completion);
    });
  });
}

/// The portal gets the file itself, so that no path has to mean the same to both.
void DesktopFileOpener::askPortal(const char* member, const std::string& path, SessionBus::Completion completion) {
  const platform::FileDescriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
  BusMessage message = bus_.newCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                    "org.freedesktop.portal.OpenURI", member);
  if (!file || !message || sd_bus_message_append(message.get(), "sha{sv}", "", file.get(), 0) < 0) message.reset();
  bus_.call(message, kPatience, std::move(completion));
}

}  // namespace desktop
