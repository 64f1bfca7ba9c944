#include "Backends/Desktop/FileTransfer.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <algorithm>
#include <cstdint>
#include <memory>

#include "Backends/Desktop/BusMessage.h"

namespace desktop {

namespace {

constexpr std::uint64_t kPatienceMicroseconds = 1'000'000;
const std::string kList = "text/uri-list";
const std::string kKey = "application/vnd.portal.filetransfer";

struct Closer {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};

/// Of the session bus, with nothing but the question on it.
BusMessage answerOfPortal(const std::string& key) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) return nullptr;
  const std::unique_ptr<sd_bus, Closer> bus(opened);
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_method_call(opened, &made, "org.freedesktop.portal.Documents",
                                     "/org/freedesktop/portal/documents", "org.freedesktop.portal.FileTransfer",
                                     "RetrieveFiles") < 0)
    return nullptr;
  const BusMessage question(made);
  sd_bus_message* answered = nullptr;
  if (sd_bus_message_append(made, "sa{sv}", key.c_str(), 0) < 0 ||
      sd_bus_call(opened, made, kPatienceMicroseconds, nullptr, &answered) < 0)
    return nullptr;
  return BusMessage(answered);
}

/// As text/uri-list (RFC 2483); nothing for a key that the portal doesn't take.
std::optional<std::string> listBehind(const std::string& key) {
  const BusMessage answer = answerOfPortal(key);
  if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "s") < 0) return std::nullopt;
  std::string list;
  const char* path = nullptr;
  while (sd_bus_message_read(answer.get(), "s", &path) > 0)
    list += QUrl::fromLocalFile(QString::fromUtf8(path)).toEncoded().toStdString() + "\r\n";
  return list;
}

bool isBehindKey(const std::vector<std::string>& offered) {
  const auto offers = [&](const std::string& type) { return std::ranges::find(offered, type) != offered.end(); };
  return offers(kKey) && !offers(kList);
}

}  // namespace

std::vector<std::string> withTransferredList(std::vector<std::string> offered) {
  if (isBehindKey(offered)) offered.push_back(kList);
  return offered;
}

std::optional<std::string> readWithTransfer(
    const std::string& type, const std::vector<std::string>& offered,
    const std::function<std::optional<std::string>(const std::string& type)>& read) {
  if (type != kList || !isBehindKey(offered)) return read(type);
  const auto key = read(kKey);
  return key ? listBehind(*key) : std::nullopt;
}

}  // namespace desktop
