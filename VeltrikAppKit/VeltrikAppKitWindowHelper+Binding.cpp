#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/NSWindowController.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/ProcessState.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperDelegateProtocol.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

using platform::NSWindow;
using platform::WindowButton;

namespace {

constexpr const char* kFileURLPasteboardType = "public.file-url";

/// A binding block under way. Its place in the table stays, empty, until the end, however the block ends.
class TakenBinding {
 public:
  explicit TakenBinding(const std::string& uiWindowID) : uiWindowID_(uiWindowID) {
    auto& pending = ProcessState::current().pendingWindowBindings;
    if (const auto found = pending.find(uiWindowID); found != pending.end()) block_ = std::exchange(found->second, {});
  }
  ~TakenBinding() {
    if (block_) ProcessState::current().pendingWindowBindings.erase(uiWindowID_);
  }
  TakenBinding(const TakenBinding&) = delete;
  TakenBinding& operator=(const TakenBinding&) = delete;

  explicit operator bool() const { return static_cast<bool>(block_); }
  void operator()(const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& helper) const { block_(helper); }

 private:
  std::string uiWindowID_;
  VeltrikAppKitProtocol::WindowBinding block_;
};

}  // namespace

bool VeltrikAppKitWindowHelper::bindPendingWindow(NSWindow& window, const std::string& uiWindowID) {
  const TakenBinding binding(uiWindowID);
  if (!binding) return false;
  const std::shared_ptr<VeltrikAppKitWindowHelper> helper(new VeltrikAppKitWindowHelper());
  helper->attachTo(window, uiWindowID);
  binding(helper);
  helper->applyInitialState(window);
  return true;
}

void VeltrikAppKitWindowHelper::attachTo(NSWindow& window, const std::string& uiWindowID) {
  platform::NSLog("[🍀VERBOSE] VeltrikAppKitWindowHelper.init(" + uiWindowID + ")");
  const auto weak = weak_from_this();
  window.setDelegate(weak);
  window.attached().set(kHostWindowID, uiWindowID);
  window.attached().set<std::function<void(NSWindow&)>>(kFirstOrderFrontHandler, [weak](NSWindow& shown) {
    if (const auto self = weak.lock()) self->configure(shown);
  });
  if (platform::operatingSystemVersion() < 11) window.setContentMinSize({100, 100});
  windowNumber_ = window.windowNumber();
  if (const auto found = nsWindow()) found->registerForDraggedTypes({kFileURLPasteboardType});
  window.setTabbingMode(platform::TabbingMode::disallowed);
  cancelables_.push_back(
      windowFrameDidChangeSubject_.removeDuplicates().sink([weak](const ParentFrameChangeInfo& change) {
        if (const auto self = weak.lock()) self->publishFrame(change);
      }));
}

void VeltrikAppKitWindowHelper::applyInitialState(NSWindow& window) {
  window.attached().set(kIsHelperBound, true);
  const auto delegate = delegate_.lock();
  if (!delegate) return;
  if (delegate->customTitleBackgroundColor()) window.attached().set(kContentTopInset, {standardTitleBarHeight()});
  if (delegate->popoverWindowDescription()) {
    window.attached().set(kContentTopInset, {standardTitleBarHeight()});
    window.attached().set(kIsPopover, true);
  }
  if (const auto size = delegate->initialWindowSize(); size != platform::Size())
    window.setFrame({window.frame().origin(), size}, true);
}

// The delegate may close the window or let go of the helper in any answer; the caller keeps both alive, and a closed
// window takes what follows without effect.
void VeltrikAppKitWindowHelper::configure(NSWindow& window) {
  const auto delegate = delegate_.lock();
  if (!delegate) return;
  if (delegate->isOrderedOutWithFirstBecomeMain()) {
    platform::NSLog("[🍀VERBOSE] window ordered out: " + window.attached().get(kHostWindowID));
    window.orderOut();
  }
  if (!delegate->closableByUserInterface())
    window.setStyleMask(window.styleMask() & ~(platform::StyleMask::kResizable | platform::StyleMask::kClosable));
  if (delegate->showOnlyCloseButton()) {
    window.setButtonHidden(WindowButton::miniaturize, true);
    window.setButtonHidden(WindowButton::zoom, true);
    window.setButtonHidden(WindowButton::close, false);
  }
  applyRole(*delegate);
  if (const auto color = delegate->customTitleBackgroundColor()) {
    window.setTitlebarAppearsTransparent(true);
    window.setTitleHidden(true);
    window.setBackgroundColor(*color);
  }
  applyFrameAutosaveName(window, *delegate);
  window.setRestorable(false);
  window.setCollectionBehavior(platform::CollectionBehavior::kFullScreenAuxiliary);
  catalystFirstResponder_ = window.firstResponder();
}

void VeltrikAppKitWindowHelper::applyFrameAutosaveName(NSWindow& window,
                                                       VeltrikAppKitWindowHelperDelegateProtocol& delegate) {
  const auto name = delegate.frameAutosaveName();
  if (!name) return;
  if (const auto controller = window.windowController()) controller->setWindowFrameAutosaveName(*name);
  delegate.windowDidResizeByAutoSavedFrame();
}

}  // namespace veltrik
