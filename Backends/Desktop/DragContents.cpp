#include "Backends/Desktop/DragContents.h"

#include <QCoreApplication>
#include <QMimeData>
#include <QStringList>

#include "Backends/Desktop/FileTransfer.h"
#include "Backends/Desktop/XServer.h"

namespace desktop {

namespace {

constexpr std::uint8_t kSentByClient = 0x80;

}  // namespace

DragClock::DragClock() {
  XServer x;
  position_ = x.atom("XdndPosition");
  drop_ = x.atom("XdndDrop");
  QCoreApplication::instance()->installNativeEventFilter(this);
}

DragClock::~DragClock() {
  if (QCoreApplication::instance()) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool DragClock::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  const auto& event = *static_cast<const xcb_generic_event_t*>(message);
  if ((event.response_type & ~kSentByClient) != XCB_CLIENT_MESSAGE) return false;
  const auto& told = *static_cast<const xcb_client_message_event_t*>(message);
  if (told.type == position_) time_ = told.data.data32[3];
  if (told.type == drop_) time_ = told.data.data32[2];
  return false;
}

std::vector<std::string> DragContents::offered() const {
  std::vector<std::string> types;
  for (const QString& format : data_.formats()) types.push_back(format.toStdString());
  return types;
}

std::vector<std::string> DragContents::types() const {
  return withTransferredList(offered());
}

std::optional<std::string> DragContents::read(const std::string& type) const {
  return readWithTransfer(type, offered(),
                          [this](const auto& each) { return reader_.read("XdndSelection", each, time_); });
}

}  // namespace desktop
