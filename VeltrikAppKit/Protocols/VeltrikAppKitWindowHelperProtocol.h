#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/URL.h"
#include "Platform/Port/Geometry.h"
#include "Platform/Port/Text.h"

namespace veltrik {

class VeltrikAppKitWindowHelperDelegateProtocol;
class VeltrikPopoverMenuItemProtocol;
class VeltrikTextInputView;
class VeltrikTextInputViewDelegate;

/// One host window's native window, as the host drives it. The host owns the helper; the helper doesn't own the window
/// and looks it up at each use, so it may outlive it: every operation then does nothing and every query answers the
/// default named with it. Letting go of the helper leaves the window as it is.
///
/// Main thread only. Screen rectangles are points with the origin at the bottom left of the primary screen; rectangles
/// from the host are points with the origin at the top left of the host window.
class VeltrikAppKitWindowHelperProtocol {
 public:
  virtual ~VeltrikAppKitWindowHelperProtocol() = default;

  /// Held weakly; null when none was set or it has gone. To be set inside the binding block, so that the window's
  /// initial state can be read from it.
  virtual std::shared_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate() const = 0;
  virtual void setDelegate(std::weak_ptr<VeltrikAppKitWindowHelperDelegateProtocol> delegate) = 0;

  // Properties

  /// Opacity from 0 to 1; 0 without a window.
  virtual double alpha() const = 0;
  virtual void setAlpha(double alpha) = 0;
  /// Whether the window floats above ordinary windows; false without a window.
  virtual bool alwaysOnTop() const = 0;
  virtual void setAlwaysOnTop(bool onTop) = 0;
  /// True without a window.
  virtual bool isWindowHidden() const = 0;
  virtual void setIsWindowHidden(bool hidden) = 0;
  /// False without a window.
  virtual bool isWindowRestorable() const = 0;
  virtual void setIsWindowRestorable(bool restorable) = 0;
  /// Distance in points from the window's top at which sheets hang; 0 or less: the title bar's height.
  virtual double sheetWindowTopMargin() const = 0;
  virtual void setSheetWindowTopMargin(double margin) = 0;
  /// Whether a popover closes itself when it stops being the main window; true at first.
  virtual bool closeWithResignMainWindow() const = 0;
  virtual void setCloseWithResignMainWindow(bool closes) = 0;

  /// The window's frame, title bar included; the zero rectangle without a window.
  virtual platform::Rect nsWindowFrame() const = 0;
  /// The number of the window the helper was made for, also after that has gone.
  virtual std::int64_t nsWindowNumber() const = 0;
  /// The standard title bar's height in points, the same for every window.
  virtual double titleBarHeight() const = 0;
  virtual bool hasChildWindow() const = 0;
  /// Whether Caps Lock was on at the application's current event.
  virtual bool isCapsLockKeyDown() const = 0;
  virtual bool isPopoverWindow() const = 0;
  virtual bool isSheetWindow() const = 0;
  virtual bool isMainNSWindow() const = 0;
  virtual bool isKeyNSWindow() const = 0;
  /// Whether the window is being closed because the application terminates.
  virtual bool isForcedClose() const = 0;

  // Roles

  /// Makes this window a child of the one bound to `uiWindowID`, above it; its place stays. Nothing when there is
  /// no such window.
  virtual void addChildWindowToParentWindowWith(const std::string& uiWindowID) = 0;
  /// Hangs this window as a sheet from the other helper's window, which gets its title bar back until the sheet ends.
  /// The other window's content takes no input meanwhile.
  virtual void convertAsSheetWindowWithParentWindowHelper(
      const std::shared_ptr<VeltrikAppKitWindowHelperProtocol>& parent) = 0;
  /// Moves the window so that it fits its screen, narrows one that is wider; one that sticks out at the top or at the
  /// bottom goes to the height 0.
  virtual void updateFrameIfNeeded() = 0;

  // Order and closing

  /// Makes the window key and orders it front, main as well where it can be.
  virtual void makeMainAndKeyNSWindow() = 0;
  /// Makes the window key and orders it front.
  virtual void becomeFirstWindow() = 0;
  /// Makes the window key and orders it front.
  virtual void orderFrontNSWindow() = 0;
  /// Shows the window without making it key, behind the host's other windows.
  virtual void orderFrontBehideCurrentWindows() = 0;
  virtual void minimize() = 0;
  /// Zooms the window, or back.
  virtual void maximize() = 0;
  /// Ends an attached sheet, closes every child window, then the window, without asking the delegate.
  virtual void closeWindow() = 0;
  /// As `closeWindow`, for a popover only.
  virtual void closePopoverWindow() = 0;
  /// Ends and closes this window when it is a sheet.
  virtual void closeSheetWindow() = 0;
  /// Ends and closes the sheet that is attached to this window.
  virtual void closeChildAlert() = 0;

  // Chrome

  virtual void setTitleBarTransparentAndTitleHidden() = 0;
  /// Lets the user drag the window by a rectangle of the host window. Regions add up, and keep their place when the
  /// window is resized.
  virtual void addMovableBounds(const platform::Rect& bounds) = 0;
  virtual void resetAllMovableBounds() = 0;
  /// The rectangle's origin is not used.
  virtual void setContentSize(const platform::Rect& bounds) = 0;
  virtual void setCloseButtonHidden(bool hidden) = 0;

  // Menu, keys, colour

  /// Shows a native context menu at the pointer and returns when it has closed; the chosen item's handler has run then.
  virtual void showPopoverMenuWithItems(const std::vector<std::shared_ptr<VeltrikPopoverMenuItemProtocol>>& items) = 0;
  /// Sends the application a press and a release of the right arrow key.
  virtual void generateRightArrowKey() = 0;
  /// The colour 0xRRGGBB with an opacity from 0 to 1.
  virtual platform::Color nsColorFromHex(std::int32_t hex, double alpha) const = 0;

  // Paste and drop

  /// Makes the content area take dropped files and images; the delegate hears `didSelectedFilePath`.
  virtual void setAsFileDropable() = 0;
  /// The files on the clipboard, or an image on it, written to a file of the cache; empty when there are none.
  virtual std::vector<platform::URL> readPastedFilePath() = 0;

  // Text input

  /// Places a native text input over the window, at a rectangle measured in points from the content's top left corner
  /// without scaling. The conversation kind treats Return and the input method as a composer does.
  virtual void addConversationTextInputViewOn(const platform::Rect& bounds,
                                              std::weak_ptr<VeltrikTextInputViewDelegate> delegate) = 0;
  virtual void addCommonTextInputViewOn(const platform::Rect& bounds,
                                        std::weak_ptr<VeltrikTextInputViewDelegate> delegate) = 0;
  /// The text of the input placed last; null before. Ask again rather than keep it: it belongs to the window.
  virtual std::shared_ptr<VeltrikTextInputView> textInputView() const = 0;
  /// True gives the native input the keyboard focus and lets it keep it; false gives it back, in a later turn of the
  /// main loop, to what had it when the window was first shown.
  virtual void makeTextViewFirstResponder(bool firstResponder) = 0;
  /// Moves the left edge of the input placed last to `leading` points from the content's left edge.
  virtual void setInputViewLeading(double leading) = 0;
};

}  // namespace veltrik
