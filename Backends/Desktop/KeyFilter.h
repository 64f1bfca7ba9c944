#pragma once

#include <xcb/xproto.h>

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QTimer>
#include <deque>
#include <functional>
#include <optional>
#include <set>

#include "Backends/Desktop/Composition.h"
#include "Backends/Desktop/Keyboard.h"
#include "Platform/Port/WindowHost.h"

class QDBusPendingCallWatcher;
class QKeyEvent;

namespace desktop {

/// Shows every key of the hardware to the model before the input method sees it, once.
///
/// Input methods answer asynchronously. While a key is with the input method, later keys wait here, so that the model
/// judges each one (Return above all) knowing what the ones before it did. An input method that dies gives the key
/// back; one that doesn't answer for `kPatience` is passed by until it does, and what it says of the key then is
/// ignored.
class KeyFilter final : public QAbstractNativeEventFilter {
 public:
  /// Answers the window's sink; null for windows that aren't ours.
  using Finder = std::function<platform::port::SurfaceSink*(xcb_window_t)>;

  KeyFilter(XServer& x, Composition& composition, Finder finder);
  ~KeyFilter() override;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
  /// A key that the input method left, or made itself, has arrived at a window. Returns what to report; nothing for a
  /// key that was reported already.
  std::optional<platform::port::KeyInput> afterInputMethod(const QKeyEvent& event);
  /// To be called when `afterInputMethod`'s key has been reported.
  void keyReported();
  /// Reports a key release that waits for the decision whether it belongs to an auto-repeat.
  void flushRelease();

 private:
  using KeyEvent = xcb_key_press_event_t;
  static constexpr int kPatience = 1000;  // milliseconds
  static constexpr std::size_t kRemembered = 16;

  bool filterPress(const KeyEvent& event);
  void filterRelease(const KeyEvent& event);
  bool isRepeat(const KeyEvent& event);
  /// True: the input method is to see the key.
  bool report(const KeyEvent& event, bool repeated);
  void beginFlight(const KeyEvent& event);
  void lookForAnswer();
  void watch(QDBusPendingCallWatcher& call);
  void endFlight(const KeyEvent& key);
  void answered(const QObject* call);
  void giveBack();
  void fallSilent();
  void heardAgain();
  void resume();

  XServer& x_;
  Composition& composition_;
  Keyboard keyboard_;
  Finder finder_;
  QObject context_;
  std::optional<KeyEvent> release_;
  std::optional<KeyEvent> last_;
  std::optional<KeyEvent> flight_;
  bool returning_ = false;   ///< the key in flight was sent to ourselves once more and hasn't come yet
  bool unanswered_ = false;  ///< the input method was silent; nothing goes to it but releases, until it answers
  bool answered_ = false;    ///< since it fell silent
  /// A key that was reported without the input method, which may still leave it to us: then it is not reported again.
  struct GivenBack {
    KeyEvent event;
    const QObject* call = nullptr;  ///< the open question about it
    bool answered = false;          ///< the last that is said of it is in the toolkit's queue
  };
  std::deque<GivenBack> givenBack_;
  bool flightReported_ = false;  ///< the input method, or a toolkit without one, has left the key in flight to us
  const QObject* flightCall_ = nullptr;  ///< the question about the key in flight, once it is asked
  QTimer patience_;
  std::set<const QObject*> watched_;
  struct Held {
    KeyEvent event;
    bool repeated = false;
  };
  std::deque<Held> held_;
};

}  // namespace desktop
