#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/NSWorkspace.h"
#include "Platform/Foundation/Timer.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/Protocols/CFDateGetIdleTimeInterval.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/SearchField.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::EventPointer;
using platform::EventType;
using platform::NSApplication;
using platform::NSEvent;
using platform::NSView;
using platform::NSWorkspace;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

namespace {

constexpr double kIdleTimerInterval = 1.0;
/// Shorter than this without input, and the user is active.
constexpr double kActiveIdleTime = 1.0;
constexpr std::int32_t kScreensSlept = 0, kScreensWoke = 1;
constexpr std::int32_t kUserActive = 2;
/// With fewer or more windows of its own the host keeps the shortcut.
constexpr auto kBoundWindowsForSwitch = 2;
constexpr std::int32_t kKeyWentDown = 0, kKeyWentUp = 1;

std::vector<KeyModifier> heldModifiers(const NSEvent& event) {
  static constexpr std::array<std::pair<std::uint64_t, KeyModifier>, 3> kReported = {
      {{ModifierFlag::kShift, KeyModifier::shift},
       {ModifierFlag::kOption, KeyModifier::option},
       {ModifierFlag::kCommand, KeyModifier::command}}};
  std::vector<KeyModifier> held;
  for (const auto& [flag, modifier] : kReported)
    if (event.modifierFlags & flag) held.push_back(modifier);
  return held;
}

/// The search field's inner field while its text is being edited: it holds the view that has the main window's focus,
/// with one view between them. Null otherwise.
NSView* editedSearchText(platform::NSWindow& main) {
  const auto editor = std::dynamic_pointer_cast<platform::NSTextView>(main.firstResponder());
  NSView* const between = editor ? editor->superview() : nullptr;
  NSView* const candidate = between ? between->superview() : nullptr;
  return candidate && candidate->tag() == SearchField::kTextFieldTag ? candidate : nullptr;
}

void reportArrow(NSView& searchText, bool down) {
  auto* const field = dynamic_cast<SearchField*>(searchText.superview());
  if (!field) return;
  const auto alive = field->shared_from_this();
  if (const auto arrowKeyDidDown = field->arrowKeyDidDown()) arrowKeyDidDown(down);
}

/// True: the key was the search field's.
bool takenBySearchField(const NSEvent& event) {
  const bool isArrow = event.keyCode == KeyCode::kDownArrow || event.keyCode == KeyCode::kUpArrow;
  const bool isEscape = event.keyCode == KeyCode::kEscape;
  const auto takenEvent = isArrow ? EventType::keyDown : EventType::keyUp;
  if ((!isArrow && !isEscape) || event.type != takenEvent) return false;
  const auto main = NSApplication::shared().mainWindow();
  NSView* const searchText = main ? editedSearchText(*main) : nullptr;
  if (!searchText) return false;
  if (isArrow)
    reportArrow(*searchText, event.keyCode == KeyCode::kDownArrow);
  else
    main->makeFirstResponder(nullptr);
  return true;
}

}  // namespace

void VeltrikAppKit::observeScreens() {
  using Handler = void (VeltrikAppKit::*)(const platform::Notification&);
  const auto observe = [this](const char* name, Handler handler) {
    NSWorkspace::shared().notificationCenter().addObserver(
        this, name, nullptr, [weak = weak_from_this(), handler](const platform::Notification& notification) {
          if (const auto self = weak.lock()) (self.get()->*handler)(notification);
        });
  };
  observe(platform::kWorkspaceScreensDidSleep, &VeltrikAppKit::notifyWillSleep);
  observe(platform::kWorkspaceScreensDidWake, &VeltrikAppKit::notifyDidWake);
}

void VeltrikAppKit::notifyWillSleep(const platform::Notification& notification) {
  if (notification.name != platform::kWorkspaceScreensDidSleep) return;
  if (const auto delegate = delegate_.lock()) delegate->notifyWorkspaceEnvironment(kScreensSlept);
}

void VeltrikAppKit::notifyDidWake(const platform::Notification& notification) {
  if (notification.name != platform::kWorkspaceScreensDidWake) return;
  if (const auto delegate = delegate_.lock()) delegate->notifyWorkspaceEnvironment(kScreensWoke);
}

void VeltrikAppKit::startIdleTimer() {
  idleTimer_ = platform::Timer::scheduledTimer(kIdleTimerInterval, true, [weak = weak_from_this()](platform::Timer&) {
    const auto self = weak.lock();
    if (!self || CFDateGetIdleTimeInterval() >= kActiveIdleTime) return;
    if (const auto delegate = self->delegate_.lock()) delegate->notifyUserInteraction(kUserActive);
  });
}

void VeltrikAppKit::installKeyboardMonitor() {
  keyboardMonitor_ =
      NSApplication::shared().addLocalMonitor(eventMask(EventType::keyDown) | eventMask(EventType::keyUp),
                                              [weak = weak_from_this()](const EventPointer& event) -> EventPointer {
                                                const auto modal = NSApplication::shared().modalWindow();
                                                if (modal && modal->performKeyEquivalent(event)) return nullptr;
                                                const auto self = weak.lock();
                                                return self && self->letsKeyGoOn(*event) ? event : nullptr;
                                              });
}

bool VeltrikAppKit::letsKeyGoOn(const NSEvent& event) const {
  if (isCompanionSwitch(event)) {
    activateWebViews();
    return false;
  }
  return !takenBySearchField(event) && isLeftByHost(event);
}

bool VeltrikAppKit::isCompanionSwitch(const NSEvent& event) const {
  if (!(event.modifierFlags & ModifierFlag::kCommand) || event.keyCode != KeyCode::kGrave || !hasActiveWebView())
    return false;
  const auto windows = NSApplication::shared().windows();
  return std::ranges::count_if(windows, [](const auto& window) { return window->attached().get(kIsHelperBound); }) ==
         kBoundWindowsForSwitch;
}

bool VeltrikAppKit::isLeftByHost(const NSEvent& event) const {
  const auto delegate = delegate_.lock();
  return !delegate || delegate->handleFunctionKey(event.keyCode, heldModifiers(event),
                                                  event.type == EventType::keyUp ? kKeyWentUp : kKeyWentDown);
}

}  // namespace veltrik
