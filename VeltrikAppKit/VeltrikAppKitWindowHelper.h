#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSWindowDelegate.h"
#include "Platform/Foundation/PassthroughSubject.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperProtocol.h"

namespace platform {
class NSLayoutConstraint;
class NSResponder;
class NSView;
class NSWindow;
}  // namespace platform

namespace veltrik {

class TextInputNSView;
enum class InputType;

/// A window's frame after a change, in screen points, and whether its size changed.
struct ParentFrameChangeInfo {
  platform::Rect parentFrame;
  bool isResized = false;
  friend bool operator==(const ParentFrameChangeInfo&, const ParentFrameChangeInfo&) = default;
};

/// One host window's native window: its delegate, and what the host drives it through. Holds the window's number only.
/// Main thread.
class VeltrikAppKitWindowHelper final : public VeltrikAppKitWindowHelperProtocol,
                                        public platform::NSWindowDelegate,
                                        public platform::NSMenuDelegate,
                                        public std::enable_shared_from_this<VeltrikAppKitWindowHelper> {
 public:
  /// When a binding waits for `uiWindowID`: makes the window's helper, hands it to the host, applies the initial state
  /// and forgets the binding. False, without a change, when none waits.
  static bool bindPendingWindow(platform::NSWindow& window, const std::string& uiWindowID);
  ~VeltrikAppKitWindowHelper() override;

  std::shared_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate) override;

  // Properties
  double alpha() const override;
  void setAlpha(double alpha) override;
  bool alwaysOnTop() const override;
  void setAlwaysOnTop(bool onTop) override;
  bool isWindowHidden() const override;
  void setIsWindowHidden(bool hidden) override;
  bool isWindowRestorable() const override;
  void setIsWindowRestorable(bool restorable) override;
  double sheetWindowTopMargin() const override { return sheetWindowTopMargin_; }
  void setSheetWindowTopMargin(double margin) override { sheetWindowTopMargin_ = margin; }
  bool closeWithResignMainWindow() const override { return closeWithResignMainWindow_; }
  void setCloseWithResignMainWindow(bool closes) override { closeWithResignMainWindow_ = closes; }
  platform::Rect nsWindowFrame() const override;
  std::int64_t nsWindowNumber() const override { return windowNumber_.value_or(0); }
  double titleBarHeight() const override;
  bool hasChildWindow() const override;
  bool isCapsLockKeyDown() const override;
  bool isPopoverWindow() const override;
  bool isSheetWindow() const override;
  bool isMainNSWindow() const override;
  bool isKeyNSWindow() const override;
  bool isForcedClose() const override;

  // VeltrikAppKitWindowHelper+Roles.cpp
  void addChildWindowToParentWindowWith(const std::string& uiWindowID) override;
  void convertAsSheetWindowWithParentWindowHelper(
      const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& parent) override;
  void updateFrameIfNeeded() override;
  platform::Rect windowWillPositionSheetUsingRect(platform::NSWindow& window, platform::NSWindow& sheet,
                                                  platform::Rect rect) override;

  // VeltrikAppKitWindowHelper+Events.cpp
  void makeMainAndKeyNSWindow() override;
  void becomeFirstWindow() override;
  void orderFrontNSWindow() override;
  void orderFrontBehideCurrentWindows() override;
  void minimize() override;
  void maximize() override;
  void closeWindow() override;
  void closePopoverWindow() override;
  void closeSheetWindow() override;
  void closeChildAlert() override;
  bool windowShouldClose(platform::NSWindow& window) override;
  void windowWillClose(platform::NSWindow& window) override;
  void windowDidBecomeMain(platform::NSWindow& window) override;
  void windowDidResignMain(platform::NSWindow& window) override;
  void windowDidBecomeKey(platform::NSWindow& window) override;
  void windowDidResignKey(platform::NSWindow& window) override;
  platform::Size windowWillResizeToSize(platform::NSWindow& window, platform::Size size) override;
  void windowDidResize(platform::NSWindow& window) override;
  void windowWillMove(platform::NSWindow& window) override;
  void windowDidMiniaturize(platform::NSWindow& window) override;
  void windowDidDeminiaturize(platform::NSWindow& window) override;

  // VeltrikAppKitWindowHelper+Chrome.cpp
  void setTitleBarTransparentAndTitleHidden() override;
  void addMovableBounds(const platform::Rect& bounds) override;
  void resetAllMovableBounds() override;
  void setContentSize(const platform::Rect& bounds) override;
  void setCloseButtonHidden(bool hidden) override;

  // VeltrikAppKitWindowHelper+Menu.cpp
  void showPopoverMenuWithItems(const std::vector<std::shared_ptr<VeltrikPopoverMenuItemProtocol>>& items) override;
  void menuDidClose(platform::NSMenu& menu) override;

  // VeltrikAppKitWindowHelper+Monitors.cpp
  void generateRightArrowKey() override;
  platform::Color nsColorFromHex(std::int32_t hex, double alpha) const override;

  // VeltrikAppKitWindowHelper+PasteAndDrop.cpp
  void setAsFileDropable() override;
  std::vector<platform::URL> readPastedFilePath() override;

  // VeltrikAppKitWindowHelper+TextInput.cpp
  void addConversationTextInputViewOn(const platform::Rect& bounds,
                                      std::weak_ptr<VeltrikTextInputViewDelegate> delegate) override;
  void addCommonTextInputViewOn(const platform::Rect& bounds,
                                std::weak_ptr<VeltrikTextInputViewDelegate> delegate) override;
  std::shared_ptr<VeltrikTextInputView> textInputView() const override;
  void makeTextViewFirstResponder(bool firstResponder) override;
  void setInputViewLeading(double leading) override;

 private:
  struct Scale {
    double x = 1;
    double y = 1;
  };

  VeltrikAppKitWindowHelper() = default;

  // VeltrikAppKitWindowHelper+Binding.cpp
  void attachTo(platform::NSWindow& window, const std::string& uiWindowID);
  void applyInitialState(platform::NSWindow& window);
  void configure(platform::NSWindow& window);
  void applyFrameAutosaveName(platform::NSWindow& window, VeltrikAppKitWindowHelperDelegateProtocol& delegate);

  // VeltrikAppKitWindowHelper+Roles.cpp
  void applyRole(VeltrikAppKitWindowHelperDelegateProtocol& delegate);
  void convertToPopover(const platform::Rect& targetFrame, VeltrikAppKitWindowHelper& parentHelper,
                        const std::vector<int>& attachments);
  void attachToParent(VeltrikAppKitWindowHelperDelegateProtocol& delegate);

  /// Looked up by its number; null when it has gone.
  std::shared_ptr<platform::NSWindow> nsWindow() const;
  /// Native points a host point, of this window.
  Scale hostToNativeScale() const;
  void publishFrame(const ParentFrameChangeInfo& change);
  void installEventMonitors();
  void removeEventMonitors();
  platform::EventPointer handleMouse(const platform::EventPointer& event);
  bool isDoubleClickConsumed(const platform::NSEvent& event);
  bool isRightClickConsumed(const platform::NSEvent& event);
  void moveFocusForClick(const platform::NSEvent& event);
  platform::EventPointer handleKey(const platform::EventPointer& event);
  std::shared_ptr<platform::NSMenuItem> makeMenuItem(const VeltrikPopoverMenuItemProtocol& item);
  void popoverMenuAction(const platform::NSMenuItem& sender);
  void addTextInputView(InputType type, const platform::Rect& bounds,
                        std::weak_ptr<VeltrikTextInputViewDelegate> delegate);

  std::optional<std::int64_t> windowNumber_;
  double sheetWindowTopMargin_ = 0;
  bool closeWithResignMainWindow_ = true;
  std::weak_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate_;
  platform::EventMonitorToken mouseMonitor_ = 0;
  platform::EventMonitorToken keyboardMonitor_ = 0;
  /// What the compatibility layer had given the keyboard focus when the window was configured.
  std::shared_ptr<platform::NSResponder> catalystFirstResponder_;
  std::shared_ptr<TextInputNSView> inputView_;
  std::shared_ptr<platform::NSLayoutConstraint> inputViewLeadingConstraint_;
  /// Covers the content while the context menu is open.
  std::shared_ptr<platform::NSView> contextMenuContainer_;
  /// The user moves the window; the next left mouse-up publishes where to.
  bool windowMoveOn_ = false;
  std::vector<platform::AnyCancellable> cancelables_;
  platform::PassthroughSubject<ParentFrameChangeInfo> windowFrameDidChangeSubject_;
};

}  // namespace veltrik
