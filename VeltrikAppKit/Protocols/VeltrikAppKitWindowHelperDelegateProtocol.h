#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/URL.h"
#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Geometry.h"
#include "Platform/Port/Text.h"

namespace veltrik {

class VeltrikAppKitWindowHelperProtocol;

/// Makes a window a popover: a floating child window of its parent without borders, which fades in. It becomes one only
/// with a target frame and a parent; any description at all gives it a popover's content rectangle.
struct PopoverWindowDescription {
  /// Where it goes, host points from the top left corner of the parent window. Left of the parent's screen it goes to
  /// the parent's right instead, below it 20 points above the bottom.
  std::optional<platform::Rect> targetFrame;
  std::shared_ptr<VeltrikAppKitWindowHelperProtocol> parentWindowHelper;
  /// Edges as in `initialAttachmentsEdge`; when there are any, they place the popover beside its parent.
  std::optional<std::vector<int>> attachments;
};

/// What the host answers to a window helper. Held weakly; a call to a delegate that has gone is skipped. Main thread.
/// A member may close the window, let go of the helper, set another delegate or call back into the helper; an exception
/// that it throws passes through the plug-in to whatever led to the call, and leaves the helper usable.
class VeltrikAppKitWindowHelperDelegateProtocol {
 public:
  virtual ~VeltrikAppKitWindowHelperDelegateProtocol() = default;

  // Queries. Those marked "at binding" are read once after the binding block returns, those marked "when shown" once,
  // right after the window was first made key and ordered front.

  /// The host window's identifier; empty for none, and then no notification about the window is posted.
  virtual std::string uiWindowID() = 0;
  /// Bounds of the host window in the host's points; with the native content size they give the scale between both.
  virtual platform::Rect uiWindowBounds() = 0;
  /// The window's size at binding; (0, 0) keeps the size it has.
  virtual platform::Size initialWindowSize() = 0;
  /// When shown: the name under which the window's frame is kept from run to run.
  virtual std::optional<std::string> frameAutosaveName() = 0;
  /// When shown: edges by which the window attaches to its parent, 0 left, 1 top, 2 right, 3 bottom: [2, 1] and
  /// [2, 3] at its right, tops or bottoms level, [0, 1] and [0, 3] at its left, 4 points away, or at the other side
  /// where the screen ends; [0, 2, 1, 3] in its middle, then not as a child window; any others leave it where it is.
  virtual std::optional<std::vector<int>> initialAttachmentsEdge() = 0;
  /// When shown: place the window beside its parent without making it a child window.
  virtual bool attachWithoutAppendingAsChild() = 0;
  /// When shown: hide the window again at once.
  virtual bool isOrderedOutWithFirstBecomeMain() = 0;
  /// At binding and when shown.
  virtual std::optional<PopoverWindowDescription> popoverWindowDescription() = 0;
  /// When shown: the window to attach to.
  virtual std::shared_ptr<VeltrikAppKitWindowHelperProtocol> parentWindowHelper() = 0;
  /// Not read by the plug-in.
  virtual std::optional<platform::Bitmap> contentImage() = 0;
  /// When shown: hide the minimise and zoom buttons.
  virtual bool showOnlyCloseButton() = 0;
  /// When shown: false takes the user's means to close and to resize the window away.
  virtual bool closableByUserInterface() = 0;
  /// At binding and when shown: paints the title bar in this colour, with the content below it.
  virtual std::optional<platform::Color> customTitleBackgroundColor() = 0;
  /// Not read by the plug-in.
  virtual std::optional<platform::Bitmap> spaceLogoImage() = 0;
  /// Not read by the plug-in.
  virtual std::optional<std::string> spaceName() = 0;
  /// Whether the host's own focused element takes typing. While it doesn't, plain keys that no native text input takes
  /// are swallowed.
  virtual bool isInputableIosResponder() = 0;

  // Callbacks

  /// A double click in the window, in host points. True consumes it.
  virtual bool mouseDoubleTapped(platform::Point location) = 0;
  /// A right click in the window, in host points. True consumes it.
  virtual bool mouseRightClick(platform::Point location) = 0;
  /// Files or images were dropped on a window after `setAsFileDropable`; an image without a file has become one.
  virtual void didSelectedFilePath(const std::vector<platform::URL>& files) = 0;
  /// The user asks to close the window; its child windows have been closed. True lets it close.
  virtual bool windowShouldClose() = 0;
  virtual void windowWillClose() = 0;
  virtual void windowDidBecomeMain() = 0;
  /// Not sent for a hidden window.
  virtual void windowDidResignMain() = 0;
  virtual void windowDidBecomeKey() = 0;
  virtual void windowDidResignKey() = 0;
  /// The window became a popover, and is about to fade in.
  virtual void windowDidConvertedAsPopover() = 0;
  /// The user is about to give the window's frame this size.
  virtual void windowWillResize(platform::Size size) = 0;
  /// The window's frame has this size now.
  virtual void windowDidResize(platform::Size size) = 0;
  /// `frameAutosaveName` was applied.
  virtual void windowDidResizeByAutoSavedFrame() = 0;
  virtual void windowDidMiniaturize() = 0;
  virtual void windowDidDeminiaturize() = 0;
};

}  // namespace veltrik
