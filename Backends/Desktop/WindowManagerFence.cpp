#include "Backends/Desktop/WindowManagerFence.h"

#include <qpa/qwindowsysteminterface.h>

#include <QCoreApplication>
#include <chrono>
#include <utility>

namespace desktop {

namespace {

using namespace std::chrono_literals;

constexpr auto kQuiet = 10ms;
constexpr auto kPatience = 5s;
/// What a window manager gets that can't be asked.
constexpr auto kPatienceWithoutAnswer = 150ms;
constexpr std::uint8_t kSentByClient = 0x80;

}  // namespace

WindowManagerFence::WindowManagerFence(XServer& x, std::function<void()> passed)
    : x_(x), told_(std::move(passed)), extents_(x.atom("_NET_FRAME_EXTENTS")), window_(x.makeHiddenWindow()) {
  for (QTimer* timer : {&quiet_, &patience_}) timer->setSingleShot(true);
  quiet_.setInterval(kQuiet);
  quiet_.callOnTimeout([this] { ask(); });
  patience_.callOnTimeout([this] { answered(); });
  QCoreApplication::instance()->installNativeEventFilter(this);
}

WindowManagerFence::~WindowManagerFence() {
  if (QCoreApplication::instance()) QCoreApplication::instance()->removeNativeEventFilter(this);
  x_.destroyWindow(window_);
}

WindowManagerFence::Ticket WindowManagerFence::issue() {
  quiet_.start();
  return ++issued_;
}

void WindowManagerFence::ask() {
  if (patience_.isActive()) return;  // asked again after the answer
  asked_ = issued_;
  if (!x_.hasWindowManager())
    patience_.start(0);  // the server itself has answered
  else
    patience_.start(x_.requestFrameExtents(window_) ? kPatience : kPatienceWithoutAnswer);
}

bool WindowManagerFence::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  const auto& event = *static_cast<const xcb_generic_event_t*>(message);
  if ((event.response_type & ~kSentByClient) != XCB_PROPERTY_NOTIFY) return false;
  const auto& written = reinterpret_cast<const xcb_property_notify_event_t&>(event);
  // Not from inside the filter: what came before has still to be told.
  if (written.window == window_ && written.atom == extents_ && patience_.isActive()) patience_.start(0);
  return false;
}

void WindowManagerFence::answered() {
  // What came before the answer is with the toolkit, whose windows needn't have heard of it yet.
  QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
  passed_ = asked_;
  if (issued_ > asked_ && !quiet_.isActive()) ask();
  told_();
}

}  // namespace desktop
