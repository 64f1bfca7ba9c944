#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/AppKit/ModalResponse.h"
#include "Platform/AppKit/NSDragging.h"
#include "Platform/AppKit/NSResponder.h"
#include "Platform/AppKit/NSWindowDelegate.h"
#include "Platform/Export.h"
#include "Platform/Port/WindowHost.h"
#include "Platform/Runtime/AttachedValues.h"
#include "Platform/Runtime/Class.h"

namespace platform {

class Attempts;
class NSAnimation;
class NSThemeFrame;
class NSView;
class NSViewController;
class NSWindowController;

namespace StyleMask {
inline constexpr unsigned kBorderless = 0, kTitled = 1, kClosable = 2, kMiniaturizable = 4, kResizable = 8;
}
namespace WindowLevel {
inline constexpr int kNormal = 0, kFloating = 3, kModalPanel = 8;
}
namespace CollectionBehavior {
inline constexpr unsigned kFullScreenAuxiliary = 0x100;
}
enum class WindowOrdering { below = -1, out = 0, above = 1 };
enum class WindowButton { close = 0, miniaturize = 1, zoom = 2 };
enum class TabbingMode { automatic = 0, preferred = 1, disallowed = 2 };

/// A title bar's button. Drawn and clicked through the window's theme frame.
struct StandardButton {
  bool hidden = false;
};

/// A window of the model: what it decides is the same on every back end, which shows it and reports what the user or
/// the window manager did. Its frame includes the title bar; screen points, origin bottom left. Made with `make`, kept
/// alive by the application while it isn't closed. Main thread.
class PLATFORM_EXPORT NSWindow : public NSResponder, private port::SurfaceSink {
 public:
  /// `contentRect` in screen points; the frame follows from the style. The window is not shown yet.
  static std::shared_ptr<NSWindow> make(const Rect& contentRect, unsigned styleMask);
  ~NSWindow() override;

  /// The methods that may be exchanged at run time; made once a process.
  static runtime::Class& staticClass();
  virtual runtime::Class& runtimeClass() const { return staticClass(); }
  runtime::AttachedValues& attached() { return attached_; }
  const runtime::AttachedValues& attached() const { return attached_; }

  std::int64_t windowNumber() const { return number_; }
  std::weak_ptr<NSWindowDelegate> delegate() const { return delegate_; }
  void setDelegate(std::weak_ptr<NSWindowDelegate> delegate) { delegate_ = std::move(delegate); }

  // Title and chrome (NSWindow+Chrome.cpp).
  const std::string& title() const { return title_; }
  /// Sends "setTitle:".
  void setTitle(const std::string& title);
  bool titlebarAppearsTransparent() const { return titlebarTransparent_; }
  void setTitlebarAppearsTransparent(bool transparent);
  bool isTitleHidden() const { return titleHidden_; }
  void setTitleHidden(bool hidden);
  unsigned styleMask() const { return styleMask_; }
  void setStyleMask(unsigned mask);
  /// Null when the window's style has no such button.
  StandardButton* standardWindowButton(WindowButton button);
  void setButtonHidden(WindowButton button, bool hidden);
  /// Nothing: the platform's window colour.
  std::optional<Color> backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const Color& color);
  bool isOpaque() const { return opaque_; }
  void setOpaque(bool opaque);
  bool isMovable() const { return movable_; }
  void setMovable(bool movable) { movable_ = movable; }
  bool hasShadow() const { return hasShadow_; }
  void setHasShadow(bool shadow) { hasShadow_ = shadow; }

  // Frame (NSWindow+Frame.cpp).
  const Rect& frame() const { return frame_; }
  /// Children move along by the change of the origin. `display` repaints at once.
  void setFrame(const Rect& frame, bool display);
  void setFrameOrigin(Point origin) { setFrame({origin, frame_.size()}, false); }
  void setContentSize(Size size);
  /// Content size below which neither user nor program shrinks the window.
  Size contentMinSize() const { return contentMinSize_; }
  void setContentMinSize(Size size);
  Size minSize() const { return minSize_; }
  void setMinSize(Size size);
  /// Sends "contentRectForFrameRect:styleMask:" with the window's style mask.
  Rect contentRectForFrameRect(const Rect& frame);
  /// Sends "frameRectForContentRect:styleMask:".
  Rect frameRectForContentRect(const Rect& content);
  std::optional<port::ScreenInfo> screen() const;
  void center();
  Point convertPointToScreen(Point inWindow) const { return inWindow + frame_.origin(); }
  Point convertPointFromScreen(Point onScreen) const { return onScreen - frame_.origin(); }
  /// Restores the frame saved under the name, if any, and saves it there from now on. Empty: stops that.
  bool setFrameAutosaveName(const std::string& name);
  const std::string& frameAutosaveName() const { return frameAutosaveName_; }
  void saveFrameUsingName(const std::string& name) const;
  bool setFrameUsingName(const std::string& name);
  std::shared_ptr<NSWindowController> windowController() const { return controller_; }
  void setWindowController(std::shared_ptr<NSWindowController> controller) { controller_ = std::move(controller); }

  // Order, key and main (NSWindow+Ordering.cpp).
  bool isVisible() const { return visible_; }
  /// As `orderFront` and `orderOut`.
  void setIsVisible(bool visible);
  void orderFront();
  void orderOut();
  void order(WindowOrdering place, std::int64_t relativeTo);
  /// Sends "makeKeyAndOrderFront:"; `sender` is an identity, null for none.
  void makeKeyAndOrderFront(const void* sender);
  void makeKey();
  void makeMain();
  bool isKeyWindow() const;
  bool isMainWindow() const;
  virtual bool canBecomeKey() const;
  virtual bool canBecomeMain() const;
  virtual bool isPanel() const { return false; }
  /// 0 is the front-most window of the application.
  std::size_t orderedIndex() const;
  int level() const { return level_; }
  void setLevel(int level);
  double alphaValue() const { return alpha_; }
  /// Ends an animation of the value.
  void setAlphaValue(double alpha);
  /// Changes the value little by little; seconds.
  void animateAlphaValue(double alpha, double duration);
  bool isMiniaturized() const { return miniaturized_; }
  void miniaturize();
  void deminiaturize();
  bool isZoomed() const { return zoomed_; }
  void zoom();
  bool isRestorable() const { return restorable_; }
  void setRestorable(bool restorable) { restorable_ = restorable; }
  unsigned collectionBehavior() const { return collectionBehavior_; }
  void setCollectionBehavior(unsigned behavior) { collectionBehavior_ = behavior; }
  TabbingMode tabbingMode() const { return tabbingMode_; }
  void setTabbingMode(TabbingMode mode) { tabbingMode_ = mode; }
  static bool allowsAutomaticWindowTabbing();
  static void setAllowsAutomaticWindowTabbing(bool allows);
  /// Marks the types of dragged things the window takes; "public.file-url" for files.
  void registerForDraggedTypes(std::set<std::string> types) { draggedTypes_ = std::move(types); }
  const std::set<std::string>& registeredDraggedTypes() const { return draggedTypes_; }

  // Children (NSWindow+Children.cpp).
  /// The child stays above (or below) this window, and moves, minimises, hides and closes with it.
  void addChildWindow(const std::shared_ptr<NSWindow>& child, WindowOrdering place);
  void removeChildWindow(NSWindow& child);
  /// A window without children has an empty list.
  std::vector<std::shared_ptr<NSWindow>> childWindows() const;
  NSWindow* parentWindow() const { return parent_; }

  // Sheets (NSWindow+Sheets.cpp).
  /// Runs once, when the sheet has ended, with what it was ended with.
  using SheetCompletion = std::function<void(int response)>;
  /// Hangs `sheet` from this window's title bar, or from where the delegate says. It is a child window, without a title
  /// bar, and takes the keyboard; until it ends, this window's content and its close button get no input. A second
  /// sheet waits until the first has ended. `completion` gets `ModalResponse::kAbort` when the sheet can't begin, or
  /// goes away without being ended.
  void beginSheet(const std::shared_ptr<NSWindow>& sheet, SheetCompletion completion);
  /// Takes the sheet off the screen, not closing it; the keyboard comes back. Nothing for a window that isn't a sheet
  /// of this one.
  void endSheet(NSWindow& sheet, int response = ModalResponse::kStop);
  /// The sheet that hangs from this window; null for none.
  std::shared_ptr<NSWindow> attachedSheet() const;
  /// The window that this one is a sheet of, attached or waiting.
  NSWindow* sheetParent() const { return sheetParent_; }
  bool isSheet() const { return sheetParent_ != nullptr; }
  /// A sheet is on its way out of the title bar.
  bool isSlidingIn() const { return revealed_ < 1; }
  /// A sheet or a modal session keeps the user's input from this window.
  bool isInputBlocked() const;

  // Closing.
  /// As the user's close button: asks the delegate first. Refused while a sheet or a modal session blocks the window.
  void performClose();
  /// Children close first. The delegate hears `windowWillClose`; afterwards the application knows the window no more.
  void close();
  bool isClosed() const { return closed_; }

  // Views and responders (NSWindow+Events.cpp).
  std::shared_ptr<NSView> contentView() const;
  /// Gives the view the content rectangle as frame and keeps it at that.
  void setContentView(std::shared_ptr<NSView> view);
  std::shared_ptr<NSViewController> contentViewController() const { return contentViewController_; }
  /// Null takes the controller away; the content view stays.
  void setContentViewController(std::shared_ptr<NSViewController> controller);
  NSThemeFrame& themeFrame() { return *themeFrame_; }
  /// The window itself when no view has the focus.
  std::shared_ptr<NSResponder> firstResponder();
  /// Null: the window itself. False when the present one keeps the focus or the new one refuses it.
  bool makeFirstResponder(const std::shared_ptr<NSResponder>& responder);
  /// Dispatches an event that `NSApplication::sendEvent` found to be this window's.
  void sendEvent(const EventPointer& event);
  bool performKeyEquivalent(const EventPointer& event) override;
  /// Takes events of the mask from the application's queue (waiting until `deadline`, run-loop time) and hands each to
  /// `handler`, null when the deadline passed, the window closed or was hidden, or a window drag ended the press.
  /// `handler` sets `stop`.
  void trackEvents(std::uint64_t mask, double deadline,
                   const std::function<void(const EventPointer&, bool& stop)>& handler);
  /// Moves the window with the pointer until the button is released. The delegate hears `windowWillMove` first. Only
  /// for a movable window and a left-mouse event.
  void performDrag(const EventPointer& event);
  void display();
  void layoutIfNeeded();
  NSResponder* nextResponder() override;

  /// True when `event` is the key that a back end is delivering at this moment and may go to the input method: it will
  /// be offered, and what the input method leaves comes back to the first responder's `NSTextInputClient`. False for an
  /// event made by code or dispatched later from the queue.
  bool offerToInputMethod(const EventPointer& event);
  /// The caret, the selection or the focused text changed; the input method is told.
  void textInputChanged(bool endComposition);
  /// What the window shows now, painted by the back end; nothing where it can't tell.
  std::optional<Bitmap> snapshot();
  /// The machine's own number of the window, 0 when it is not on a machine.
  std::uint64_t nativeHandle() const;

 protected:
  NSWindow(const Rect& contentRect, unsigned styleMask);
  /// Makes a new window known to the application; every `make` ends with it.
  static void introduce(const std::shared_ptr<NSWindow>& window);
  /// Puts the window on the machine, at its first showing.
  virtual std::unique_ptr<port::Surface> makeSurface(port::SurfaceSink& sink, const port::SurfaceState& state);
  /// The window has closed; nothing of it is on the screen any more.
  virtual void didClose() {}
  /// The machine keeps a window that has no parent before the main one from now on.
  void belongToMainWindow();

 private:
  friend class NSApplication;
  friend class NSView;
  friend class NSThemeFrame;
  struct FrameChange;
  struct Sheet {
    std::shared_ptr<NSWindow> window;
    SheetCompletion completion;
  };
  using DelegateCall = void (NSWindowDelegate::*)(NSWindow&);

  std::shared_ptr<NSWindow> self();
  void tell(DelegateCall call);
  void titleChanged(const std::string& title);
  bool hasButton(WindowButton button) const;
  void ensureSurface();
  void updateSurface();
  port::SurfaceState surfaceState() const;
  double cornerRadius() const;
  /// `inWindow` in window coordinates.
  void invalidate(const Rect& inWindow);

  void placeContent();
  void moveFamily(const Rect& frame, bool reported, std::vector<FrameChange>& changes);
  void applyFrame(const Rect& frame, bool reported);
  void autosaveFrame() const;
  Size smallestUserSize();

  void showSelf();
  void hideSelf();
  void showChildren();
  void hideChildren();
  void changeMiniaturized(bool miniaturized, bool reported);
  void keyChanged(bool key);
  int effectiveLevel() const;
  NSWindow& familyRoot();
  /// Visible members, the front-most first.
  void appendFamily(std::vector<NSWindow*>& members);
  bool isAncestorOf(const NSWindow& window) const;
  void finishClosing();

  void applyAlphaValue(double alpha);
  void setSheetParent(NSWindow* parent);
  void slideIn();
  void applyRevealed(double part);
  void attachFrontSheet();
  void hangSheet();
  void endWaitingSheets(Attempts& attempt);

  void needsLayout();
  /// A view leaves the tree or is hidden: the focus doesn't stay inside it.
  void viewLeaves(const NSView& view);
  void pressed(const EventPointer& event);
  void otherPressed(const EventPointer& event, void (NSResponder::*handler)(const EventPointer&));
  void deliverToGrab(const EventPointer& event, void (NSResponder::*handler)(const EventPointer&), bool ends);
  void hovered(const EventPointer& event);
  void hoverLeft(const EventPointer& event);
  bool takeActivatingClick(const EventPointer& event);
  std::shared_ptr<NSView> viewAt(Point inWindow);
  std::function<bool()> hasLeftScreen() const;
  void moveByModel(const EventPointer& event, bool movedByMachine, const std::function<bool()>& left);

  void surfacePaint(port::Canvas& canvas, const Rect& dirtyFromTopLeft) override;
  void surfaceFrameChanged(const Rect& frame) override;
  void surfaceActivated(bool active) override;
  void surfaceMinimised(bool minimised) override;
  void surfaceZoomed(bool zoomed) override;
  void surfaceKeptAbove(bool above) override;
  void surfaceCloseRequested() override;
  void surfacePointer(const port::PointerInput& input) override;
  void surfaceWheel(const port::WheelInput& input) override;
  port::KeyDisposition surfaceKey(const port::KeyInput& input) override;
  void surfaceKeyAfterInputMethod(const port::KeyInput& input) override;
  void surfaceMarkedText(const std::u16string& text, std::size_t caret) override;
  void surfaceCommittedText(const std::u16string& text) override;
  void surfaceDeleteSurrounding(std::ptrdiff_t offset, std::size_t length) override;
  std::optional<port::TextInputState> surfaceTextInput() override;
  bool surfaceDragMoved(const port::Contents& contents, Point location) override;
  void surfaceDragExited() override;
  bool surfaceDropped(const port::Contents& contents, Point location) override;

  std::int64_t number_ = 0;
  std::weak_ptr<NSWindowDelegate> delegate_;
  runtime::AttachedValues attached_;
  std::unique_ptr<port::Surface> surface_;  ///< from the first showing on

  std::string title_;
  bool titlebarTransparent_ = false;
  bool titleHidden_ = false;
  unsigned styleMask_;
  std::array<StandardButton, 3> buttons_;
  std::optional<Color> backgroundColor_;
  bool opaque_ = true;
  bool movable_ = true;
  bool hasShadow_ = true;

  Rect frame_;
  Size contentMinSize_;
  Size minSize_;
  std::string frameAutosaveName_;
  std::shared_ptr<NSWindowController> controller_;
  bool movedByMachine_ = false;  ///< in a drag that the machine does
  int userChangesFrame_ = 0;     ///< the model moves or resizes with the pointer: saved at the end, reports are older

  bool visible_ = false;
  bool miniaturized_ = false;
  bool zoomed_ = false;
  bool hiddenWithParent_ = false;
  bool closing_ = false;
  bool closed_ = false;
  int level_ = WindowLevel::kNormal;
  double alpha_ = 1;
  std::unique_ptr<NSAnimation> fade_;
  double revealed_ = 1;  ///< the part of a sheet that has slid out, from its bottom
  std::unique_ptr<NSAnimation> slide_;
  bool restorable_ = true;
  unsigned collectionBehavior_ = 0;
  TabbingMode tabbingMode_ = TabbingMode::automatic;
  std::set<std::string> draggedTypes_;
  std::optional<double> activatedByMachineAt_;  ///< until the next press

  NSWindow* parent_ = nullptr;
  WindowOrdering placeInFamily_ = WindowOrdering::above;
  std::vector<std::shared_ptr<NSWindow>> children_;
  NSWindow* sheetParent_ = nullptr;
  std::deque<Sheet> sheets_;  ///< the first one is attached

  std::shared_ptr<NSThemeFrame> themeFrame_;
  std::shared_ptr<NSView> contentView_;
  std::shared_ptr<NSViewController> contentViewController_;
  std::weak_ptr<NSResponder> firstResponder_;
  std::weak_ptr<NSView> grab_;       ///< has the left button until it is released
  std::weak_ptr<NSView> otherGrab_;  ///< has the other buttons
  std::weak_ptr<NSView> hover_;
  std::weak_ptr<NSView> dragTarget_;  ///< what is dragged over the window is over this one
  DragOperation dragOperation_ = DragOperation::none;
  port::Cursor cursor_ = port::Cursor::arrow;
  bool layoutNeeded_ = false;
  std::uint64_t dragsEnded_ = 0;
};

/// The messages whose implementations are exchanged at run time. The last argument of the rectangles is the style mask.
using SetTitleMessage = runtime::Message<void(NSWindow&, const std::string&)>;
using OrderFrontMessage = runtime::Message<void(NSWindow&, const void*)>;
using RectMessage = runtime::Message<Rect(NSWindow&, const Rect&, unsigned)>;
PLATFORM_EXPORT extern const SetTitleMessage kSetTitle;                // "setTitle:"
PLATFORM_EXPORT extern const OrderFrontMessage kMakeKeyAndOrderFront;  // "makeKeyAndOrderFront:"
PLATFORM_EXPORT extern const RectMessage kContentRectForFrameRect;     // "contentRectForFrameRect:styleMask:"
PLATFORM_EXPORT extern const RectMessage kFrameRectForContentRect;     // "frameRectForContentRect:styleMask:"

}  // namespace platform
