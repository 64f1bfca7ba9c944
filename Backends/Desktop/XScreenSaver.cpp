#include "Backends/Desktop/XScreenSaver.h"

#include <xcb/screensaver.h>

#include <QCoreApplication>
#include <string_view>
#include <utility>

#include "Backends/Desktop/XReply.h"

namespace desktop {

namespace {

bool isWaylandSession() {
  return qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland") ||
         !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

}  // namespace

XScreenSaver::XScreenSaver(std::function<void(bool active)> changed) : changed_(std::move(changed)) {
  const auto* extension = xcb_get_extension_data(x_.connection(), &xcb_screensaver_id);
  usable_ = extension && extension->present && servesWholeDesktop();
  if (!usable_) return;
  firstEvent_ = extension->first_event;
  xcb_screensaver_select_input(x_.connection(), x_.root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
  x_.flush();
  QCoreApplication::instance()->installNativeEventFilter(this);
}

XScreenSaver::~XScreenSaver() {
  if (usable_) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool XScreenSaver::servesWholeDesktop() {
  constexpr std::string_view kName = "XWAYLAND";
  const auto cookie = xcb_query_extension(x_.connection(), kName.size(), kName.data());
  const auto reply = owned(xcb_query_extension_reply(x_.connection(), cookie, nullptr));
  return !isWaylandSession() && reply && !reply->present;
}

std::optional<std::uint32_t> XScreenSaver::idleMilliseconds() {
  if (!usable_) return std::nullopt;
  const auto cookie = xcb_screensaver_query_info(x_.connection(), x_.root());
  const auto reply = owned(xcb_screensaver_query_info_reply(x_.connection(), cookie, nullptr));
  return reply ? std::optional(reply->ms_since_user_input) : std::nullopt;
}

bool XScreenSaver::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
  constexpr std::uint8_t kSentBit = 0x80;
  if (type != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & ~kSentBit) != firstEvent_ + XCB_SCREENSAVER_NOTIFY) return false;
  const auto* notice = reinterpret_cast<const xcb_screensaver_notify_event_t*>(event);
  changed_(notice->state == XCB_SCREENSAVER_STATE_ON || notice->state == XCB_SCREENSAVER_STATE_CYCLE);
  return false;
}

}  // namespace desktop
