#include "Backends/Desktop/KeyFilter.h"

#include <private/qguiapplication_p.h>
#include <qpa/qplatforminputcontext.h>
#include <qpa/qplatformintegration.h>
#include <qpa/qwindowsysteminterface.h>

#include <QApplication>
#include <QDBusPendingCallWatcher>
#include <QKeyEvent>
#include <algorithm>
#include <utility>

#include "Backends/Desktop/Clock.h"
#include "Backends/Desktop/KeyMap.h"

namespace desktop {

using platform::port::KeyDisposition;
using platform::port::KeyInput;
using platform::port::SurfaceSink;

namespace {

constexpr std::uint8_t kSentByClient = 0x80;
/// A repeat is a release and a press at one time, or nearly so on a busy server; milliseconds. No finger is that fast.
constexpr xcb_timestamp_t kRepeatGap = 2;

bool sameKey(const xcb_key_press_event_t& a, const xcb_key_press_event_t& b) {
  return a.detail == b.detail && a.time == b.time;
}

QPlatformInputContext* inputContext() {
  return QGuiApplicationPrivate::platformIntegration()->inputContext();
}

/// Questions to the input method about keys, from the oldest to the newest, that the toolkit has not dealt with yet.
QList<QDBusPendingCallWatcher*> openCalls() {
  const QPlatformInputContext* input = inputContext();
  return input ? input->findChildren<QDBusPendingCallWatcher*>() : QList<QDBusPendingCallWatcher*>();
}

}  // namespace

KeyFilter::KeyFilter(XServer& x, Composition& composition, Finder finder)
    : x_(x), composition_(composition), keyboard_(x), finder_(std::move(finder)) {
  patience_.setSingleShot(true);
  QObject::connect(&patience_, &QTimer::timeout, &context_, [this] { fallSilent(); });
  QCoreApplication::instance()->installNativeEventFilter(this);
}

KeyFilter::~KeyFilter() {
  if (QCoreApplication::instance()) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool KeyFilter::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  const auto& event = *static_cast<const xcb_generic_event_t*>(message);
  switch (event.response_type & ~kSentByClient) {
    case XCB_KEY_PRESS:
      return filterPress(*reinterpret_cast<const KeyEvent*>(message));
    case XCB_KEY_RELEASE:
      filterRelease(*reinterpret_cast<const KeyEvent*>(message));
      return false;
    case XCB_MAPPING_NOTIFY:
      keyboard_.refresh();
      return false;
    default:
      return false;
  }
}

bool KeyFilter::filterPress(const KeyEvent& event) {
  if (QApplication::activePopupWidget() || !finder_(event.event)) return false;
  const bool sent = event.response_type & kSentByClient;
  if (sent && returning_ && flight_ && sameKey(event, *flight_)) {
    returning_ = false;
    beginFlight(event);
    return false;
  }
  // An input method of the old kind sends a key it leaves back to us.
  if (sent && event.time != 0 && last_ && sameKey(event, *last_)) return false;
  last_ = event;
  const bool repeated = isRepeat(event);
  // What the user did before the key is reported before it.
  QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
  if (flight_ || !held_.empty()) {
    held_.push_back({event, repeated});
    return true;
  }
  if (!report(event, repeated)) return true;
  beginFlight(event);
  return false;
}

void KeyFilter::filterRelease(const KeyEvent& event) {
  if (QApplication::activePopupWidget() || !finder_(event.event)) return;
  if (release_ && release_->detail == event.detail) release_.reset();
  flushRelease();
  release_ = event;
  QTimer::singleShot(0, &context_, [this] {
    // The press that makes it a repeat may arrive in another batch.
    if (release_ && !x_.isDown(release_->detail)) flushRelease();
    // A silent input method that takes a release is back.
    if (unanswered_)
      for (QDBusPendingCallWatcher* call : openCalls()) watch(*call);
  });
}

bool KeyFilter::isRepeat(const KeyEvent& event) {
  if (release_ && release_->detail == event.detail && event.time - release_->time <= kRepeatGap) {
    release_.reset();
    return true;
  }
  flushRelease();
  return false;
}

void KeyFilter::flushRelease() {
  if (!release_) return;
  const KeyEvent event = *std::exchange(release_, std::nullopt);
  if (flight_ || !held_.empty())
    held_.push_back({event, false});
  else
    report(event, false);
}

bool KeyFilter::report(const KeyEvent& event, bool repeated) {
  const bool down = (event.response_type & ~kSentByClient) == XCB_KEY_PRESS;
  auto input = keyboard_.input(event.detail, event.state, down);
  SurfaceSink* sink = finder_(event.event);
  if (!input || !sink) return down && sink;
  input->repeated = repeated;
  input->time = now();
  if (sink->surfaceKey(*input) == KeyDisposition::handled || !down) return false;
  if (!unanswered_) return true;
  if (SurfaceSink* still = finder_(event.event)) still->surfaceKeyAfterInputMethod(*input);
  return false;
}

void KeyFilter::beginFlight(const KeyEvent& event) {
  flight_ = event;
  flightCall_ = nullptr;
  flightReported_ = false;
  composition_.keyAsked();
  patience_.start(kPatience);
  // The toolkit hands the key to the input method as soon as this filter returns.
  QTimer::singleShot(0, &context_, [this] { lookForAnswer(); });
}

void KeyFilter::lookForAnswer() {
  if (!flight_ || returning_) return;
  const auto calls = openCalls();
  for (QDBusPendingCallWatcher* call : calls) watch(*call);
  // Releases of earlier keys are asked about too; the key's own call is the newest.
  if (!flightCall_ && !calls.isEmpty()) flightCall_ = calls.back();
  if (calls.isEmpty()) {
    // An answer on the spot overtakes what the input method said before it, which is still in our queue.
    QMetaObject::invokeMethod(
        &context_, [this, key = *flight_] { endFlight(key); }, Qt::QueuedConnection);
  } else if (calls.back()->isFinished() && calls.back()->isError()) {
    giveBack();  // nobody was there to take the key
  }
}

/// An answer that has come in may still wait for its turn behind what the input method said before it, so a call counts
/// until the toolkit is done with it, which is when it deletes it, at times before others hear that it has finished.
void KeyFilter::watch(QDBusPendingCallWatcher& call) {
  if (!watched_.insert(&call).second) return;
  if (!call.isFinished())
    QObject::connect(&call, &QDBusPendingCallWatcher::finished, &context_, [this](QDBusPendingCallWatcher* done) {
      if (done->isError() && done == flightCall_) giveBack();
    });
  QObject::connect(&call, &QObject::destroyed, &context_, [this, answer = QDBusPendingCall(call)](QObject* gone) {
    watched_.erase(gone);
    if (answer.isFinished() && !answer.isError())
      answered_ = true;
    else if (gone == flightCall_)
      giveBack();
    answered(gone);
    if (unanswered_ && answered_ && openCalls().isEmpty()) heardAgain();
    lookForAnswer();
  });
}

/// What the input method leaves to us comes without the time of the key from some, so it is known by its call.
void KeyFilter::answered(const QObject* call) {
  const auto key = std::ranges::find(givenBack_, call, &GivenBack::call);
  if (key == givenBack_.end()) return;
  *key = {key->event, nullptr, true};
  QMetaObject::invokeMethod(
      &context_,
      [this] {
        QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
        std::erase_if(givenBack_, [](const GivenBack& each) { return each.answered; });
      },
      Qt::QueuedConnection);
}

void KeyFilter::endFlight(const KeyEvent& key) {
  if (!flight_ || returning_ || !sameKey(*flight_, key)) return;
  // A key that was left may still wait in the toolkit's queue; it is reported before the next one.
  QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
  if (!flight_ || returning_) return;
  flight_.reset();
  patience_.stop();
  resume();
}

void KeyFilter::fallSilent() {
  unanswered_ = true;
  answered_ = false;
  giveBack();
  composition_.setIgnoring(true);
}

void KeyFilter::heardAgain() {
  unanswered_ = false;
  composition_.setIgnoring(false);
}

/// The input method is gone or silent: the key does what it would do without one.
void KeyFilter::giveBack() {
  if (!flight_) return;
  const KeyEvent event = *std::exchange(flight_, std::nullopt);
  returning_ = false;
  patience_.stop();
  givenBack_.push_back({event, std::exchange(flightCall_, nullptr)});
  if (givenBack_.size() > kRemembered) givenBack_.pop_front();
  const auto input = keyboard_.input(event.detail, event.state, true);
  if (SurfaceSink* sink = finder_(event.event)) composition_.abandon(*sink);
  if (SurfaceSink* sink = finder_(event.event); input && sink) sink->surfaceKeyAfterInputMethod(*input);
  resume();
}

void KeyFilter::resume() {
  while (!flight_ && !held_.empty()) {
    const Held next = held_.front();
    held_.pop_front();
    if (!report(next.event, next.repeated)) continue;
    // Back to the toolkit by way of the server, in the state in which it came.
    flight_ = next.event;
    returning_ = true;
    patience_.start(kPatience);
    xcb_send_event(x_.connection(), 0, next.event.event, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&next.event));
    x_.flush();
  }
}

std::optional<KeyInput> KeyFilter::afterInputMethod(const QKeyEvent& event) {
  auto keycode = static_cast<std::uint8_t>(event.nativeScanCode());
  const auto reported = std::ranges::find_if(givenBack_, [&](const GivenBack& key) {
    return key.event.detail == keycode && (key.call || key.answered || key.event.time == event.timestamp());
  });
  if (reported != givenBack_.end()) {
    givenBack_.erase(reported);
    return std::nullopt;
  }
  if (flight_ && flight_->detail == keycode && flight_->time == event.timestamp()) flightReported_ = true;
  if (keycode == 0) keycode = keyboard_.keycodeOf(event.nativeVirtualKey());
  auto input = keyboard_.input(keycode, static_cast<std::uint16_t>(event.nativeModifiers()), true);
  if (!input) return std::nullopt;
  const QString text = event.text();
  if (!text.isEmpty() && text.front().isPrint()) input->characters = text.toStdString();
  input->repeated = event.isAutoRepeat();
  return input;
}

void KeyFilter::keyReported() {
  if (flight_ && !returning_ && (flightReported_ || openCalls().isEmpty())) {
    flight_.reset();
    patience_.stop();
    resume();
  }
}

}  // namespace desktop
