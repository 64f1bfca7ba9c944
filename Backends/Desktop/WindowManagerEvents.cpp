#include "Backends/Desktop/WindowManagerEvents.h"

#include <QCoreApplication>
#include <utility>

namespace desktop {

namespace {

constexpr std::uint8_t kSentByClient = 0x80;

}  // namespace

WindowManagerEvents::WindowManagerEvents(XServer& x, StateChanged stateChanged)
    : activeWindow_(x.atom("_NET_ACTIVE_WINDOW")),
      state_(x.atom("_NET_WM_STATE")),
      stateChanged_(std::move(stateChanged)) {
  QCoreApplication::instance()->installNativeEventFilter(this);
}

WindowManagerEvents::~WindowManagerEvents() {
  if (QCoreApplication::instance()) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool WindowManagerEvents::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  switch (static_cast<const xcb_generic_event_t*>(message)->response_type & ~kSentByClient) {
    case XCB_CLIENT_MESSAGE:
      // Our own request to be activated comes back to us, and the toolkit would take it for granted. Whether it was,
      // the server tells with the focus.
      return static_cast<const xcb_client_message_event_t*>(message)->type == activeWindow_;
    case XCB_PROPERTY_NOTIFY:
      if (const auto& changed = *static_cast<const xcb_property_notify_event_t*>(message); changed.atom == state_)
        QMetaObject::invokeMethod(
            &context_, [this, window = changed.window] { stateChanged_(window); }, Qt::QueuedConnection);
      return false;
    default:
      return false;
  }
}

}  // namespace desktop
