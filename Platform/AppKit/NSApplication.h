#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Platform/AppKit/ModalResponse.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/PointerState.h"
#include "Platform/Export.h"
#include "Platform/Port/WindowHost.h"
#include "Platform/Runtime/Class.h"

namespace platform {

class MenuTracking;
class NSMenu;
class NSWindow;
class Timer;
enum class WindowOrdering;

/// The host application's delegate as the object runtime sees it. A host derives from it, gives its class a
/// `runtime::Class` with the methods it implements, and hands an object to `NSApplication::setDelegate`.
class PLATFORM_EXPORT NSApplicationDelegate {
 public:
  virtual ~NSApplicationDelegate() = default;
  virtual runtime::Class& runtimeClass() const = 0;
};

enum class TerminateReply { cancel = 0, now = 1, later = 2 };

/// Questions an application delegate may answer; receiver first.
using ReopenMessage = runtime::Message<bool(NSApplicationDelegate&, bool hasVisibleWindows)>;
using ShouldTerminateMessage = runtime::Message<TerminateReply(NSApplicationDelegate&)>;
using DockMenuMessage = runtime::Message<std::shared_ptr<NSMenu>(NSApplicationDelegate&)>;
PLATFORM_EXPORT extern const ReopenMessage kShouldHandleReopen;  // "applicationShouldHandleReopen:hasVisibleWindows:"
PLATFORM_EXPORT extern const ShouldTerminateMessage kShouldTerminate;  // "applicationShouldTerminate:"
PLATFORM_EXPORT extern const DockMenuMessage kDockMenu;                // "applicationDockMenu:"

namespace PresentationOption {
inline constexpr unsigned kFullScreen = 1024;
}

/// Posted on the default notification centre with the application as object.
inline constexpr const char* kApplicationDidBecomeActive = "NSApplicationDidBecomeActiveNotification";
inline constexpr const char* kApplicationDidResignActive = "NSApplicationDidResignActiveNotification";

/// The application: its windows and their order, key and main, the event queue, monitors, life and end. Main thread.
class PLATFORM_EXPORT NSApplication {
 public:
  static NSApplication& shared();
  NSApplication();
  ~NSApplication();

  std::shared_ptr<NSApplicationDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<NSApplicationDelegate> delegate) { delegate_ = std::move(delegate); }

  /// In the order of their making.
  std::vector<std::shared_ptr<NSWindow>> windows() const;
  /// Front-most first; visible windows only.
  const std::vector<NSWindow*>& orderedWindows() const { return ordered_; }
  /// O(1). Null when there is no such window any more.
  std::shared_ptr<NSWindow> windowWithNumber(std::int64_t number) const;
  std::shared_ptr<NSWindow> keyWindow() const;
  std::shared_ptr<NSWindow> mainWindow() const;

  // Modal sessions (NSApplication+Modal.cpp).
  /// Shows the window in front of all others and runs the loop until `stopModal`, the window's closing or hiding, or
  /// the application's stop; returns the response. Meanwhile other windows get no input but moves by their frames, and
  /// only this one, its children and its sheets can be key. Sessions nest. The window stays on the screen. Aborted at
  /// once for no window, a closed one, a sheet, or one whose session runs.
  int runModal(const std::shared_ptr<NSWindow>& window);
  /// Ends the innermost session; nothing without one.
  void stopModal(int response = ModalResponse::kStop);
  void abortModal();
  /// The window of the innermost modal session; null when there is none.
  std::shared_ptr<NSWindow> modalWindow() const;

  bool isActive() const { return active_; }
  /// Brings the application to the front by activating its front-most window.
  void activate(bool ignoringOtherApps);
  unsigned presentationOptions() const { return presentationOptions_; }
  void setPresentationOptions(unsigned options) { presentationOptions_ = options; }

  /// Adds to the queue's end or start.
  void postEvent(EventPointer event, bool atStart);
  /// Takes the first queued event of the mask; the others stay in order. Waits until `deadline` (run-loop time) at
  /// most, dispatching nothing meanwhile; null when it passes.
  EventPointer nextEvent(std::uint64_t mask, double deadline);
  /// Drops the queued events that `matches` answers true for; the others stay in order.
  void discardEvents(const std::function<bool(const NSEvent&)>& matches);
  /// Runs the local monitors in order of installation, then dispatches what they leave.
  void sendEvent(const EventPointer& event);
  /// The event being dispatched, or the last one; null before the first.
  EventPointer currentEvent() const { return currentEvent_; }
  EventMonitorToken addLocalMonitor(std::uint64_t mask, EventMonitor handler);
  void removeMonitor(EventMonitorToken token);

  /// Runs the main loop until `stop` or a granted `terminate`. Returns the exit status.
  int run();
  void stop();
  /// Asks the delegate; when it doesn't object, `run` returns after this turn. `sender` is an identity, null for none.
  void terminate(const void* sender);
  bool isTerminating() const { return terminating_; }
  /// The user asked for the application again (a second start, a dock click). Answers what the delegate answers, true
  /// without one; then true also shows a window if none is visible.
  bool reopen();
  /// The delegate's dock menu; null when it has none.
  std::shared_ptr<NSMenu> dockMenu();

 private:
  friend class MenuTracking;
  friend class NSWindow;
  struct Monitor {
    EventMonitorToken token;
    std::uint64_t mask;
    EventMonitor handler;
    bool removed = false;
  };
  class ModalSession;

  // Modal sessions and sheets (NSApplication+Modal.cpp).
  /// The window that gets the keyboard in this one's place: the modal one, the innermost sheet, or itself.
  NSWindow& inputTarget(NSWindow& window) const;
  void bringForward(NSWindow& target);
  bool refuseInput(const EventPointer& event);
  void keepModalInFront(NSWindow& placed);

  // Windows (NSApplication+Windows.cpp).
  std::int64_t addWindow(const std::shared_ptr<NSWindow>& window);
  void forgetWindow(NSWindow& window);
  void removeFromOrder(NSWindow& window);
  /// Stacks a window's whole family (parents and children) by the window's new place.
  void placeFamily(NSWindow& window, WindowOrdering place, NSWindow* relative);
  std::vector<NSWindow*>::iterator insertionPoint(int level, WindowOrdering place, const NSWindow* relative);
  void restackSurfaces(const std::vector<NSWindow*>& family, WindowOrdering place, NSWindow* relative);
  void needsLayout(std::weak_ptr<NSWindow> window);

  // Key, main and active (NSApplication+Focus.cpp).
  void focus(NSWindow& wanted);
  void focusMain(NSWindow& window);
  NSWindow* mainFor(NSWindow& key) const;
  /// Finds heirs for a key or main window that is no longer visible.
  void passFocusOn();
  void changeFocus(NSWindow* key, NSWindow* main);
  void surfaceActivated(NSWindow& window, bool active);
  void requestActivation(NSWindow& window);
  bool activationPending() const;
  void becomeActive();
  void resignActive();
  bool resignActiveIfDue();

  // Events (NSApplication+Events.cpp).
  EventPointer takeEvent(std::uint64_t mask, double deadline, const std::function<bool()>& abandoned);
  EventPointer takeQueued(std::uint64_t mask);
  EventPointer runMonitors(EventPointer event);
  void dispatch(const EventPointer& event);
  bool dispatchQueued();
  bool layoutWindows();
  bool turn();

  std::weak_ptr<NSApplicationDelegate> delegate_;
  std::unordered_map<std::int64_t, std::shared_ptr<NSWindow>> windows_;
  std::int64_t lastWindowNumber_ = 0;
  std::vector<NSWindow*> ordered_;
  std::vector<std::weak_ptr<NSWindow>> layoutNeeded_;
  bool allowsAutomaticWindowTabbing_ = true;

  NSWindow* key_ = nullptr;
  NSWindow* main_ = nullptr;
  bool active_ = false;
  std::vector<ModalSession*> modalSessions_;  ///< the innermost last
  std::uint64_t focusTurn_ = 0;               ///< tells a change of focus that another one overtook it
  NSWindow* activeSurface_ = nullptr;         ///< the window whose surface the machine says is active
  NSWindow* pendingSurface_ = nullptr;        ///< the window whose activation was asked for and not yet confirmed
  double pendingSince_ = 0;
  std::shared_ptr<Timer> refusalTimer_;
  bool resignDue_ = false;

  std::deque<EventPointer> queue_;
  int trackingDepth_ = 0;  ///< nested loops that take events themselves
  PointerState pointer_;
  EventPointer currentEvent_;
  std::vector<std::unique_ptr<Monitor>> monitors_;
  int monitorDepth_ = 0;
  EventMonitorToken lastMonitor_ = 0;
  const NSEvent* liveKey_ = nullptr;  ///< the key that a back end is delivering now
  bool liveKeyOffered_ = false;

  std::unique_ptr<MenuTracking> menus_;
  unsigned presentationOptions_ = 0;
  bool stopped_ = false;
  bool asking_ = false;
  bool terminating_ = false;
};

}  // namespace platform
