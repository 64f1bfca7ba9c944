#pragma once

#include <optional>

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

/// The root of a window's views, as large as its frame: holds the content view, draws the title bar over it, and works
/// the title bar's buttons, the drag of the window and the resize by its edges. Main thread.
class PLATFORM_EXPORT NSThemeFrame final : public NSView {
 public:
  static constexpr double kEdge = 5;  ///< points from the edge at which a resize begins
  static constexpr double kDragDistance = 3;

  using NSView::NSView;

  /// Points; 29, before version 11 of the system 23.
  static double titleBarHeight();

  /// Paints title bar, title and buttons; the canvas stands at the window's top left corner.
  void drawChrome(port::Canvas& canvas);
  /// A button's place in window coordinates, whether the window has it or not.
  Rect buttonFrame(WindowButton button) const;

  NSView* hitTest(Point point) override;
  bool acceptsFirstMouse(const EventPointer& event) override;
  port::Cursor cursorAt(Point inView) const override;
  void mouseDown(const EventPointer& event) override;
  void mouseDragged(const EventPointer& event) override;
  void mouseUp(const EventPointer& event) override;

 private:
  /// -1, 0 or 1 in each direction: the edge that is dragged.
  struct Edges {
    int x = 0;
    int y = 0;
    explicit operator bool() const { return x != 0 || y != 0; }
  };
  struct Press {
    Point onScreen;
    Rect frame;
    Edges edges;
    std::optional<WindowButton> button;
    bool inside = true;  ///< the pointer is over the pressed button
  };

  bool isTitled() const;
  Edges edgesAt(Point point) const;
  std::optional<WindowButton> buttonAt(Point point) const;
  bool isTitleBarAt(Point point) const;
  bool isChromeAt(Point point) const;
  bool isShown(WindowButton button) const;
  void drawTitle(port::Canvas& canvas, double height);
  void drawButton(port::Canvas& canvas, WindowButton button);
  void resizeTo(Point onScreen);
  void perform(WindowButton button);

  std::optional<Press> press_;
};

}  // namespace platform
