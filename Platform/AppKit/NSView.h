#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/AppKit/NSDragging.h"
#include "Platform/AppKit/NSResponder.h"
#include "Platform/Export.h"
#include "Platform/Port/Canvas.h"
#include "Platform/Port/WindowHost.h"

namespace platform {

class NSLayoutConstraint;
class NSWindow;

/// A view's backing layer.
struct CALayer {
  double cornerRadius = 0;
  bool masksToBounds = false;
  std::optional<Color> backgroundColor;
};

namespace Autoresizing {
inline constexpr unsigned kMinXMargin = 1, kWidth = 2, kMaxXMargin = 4, kMinYMargin = 8, kHeight = 16, kMaxYMargin = 32;
}

/// A rectangle of a window: a part of the view tree. `frame` is in the superview's coordinates, `bounds` has the origin
/// (0, 0) (a scroll view's clip moves it); the origin is bottom left, or top left where `isFlipped`. Views are made
/// with std::make_shared; a superview owns its subviews. Main thread.
class PLATFORM_EXPORT NSView : public NSResponder {
 public:
  NSView() = default;
  explicit NSView(const Rect& frame) : frame_(frame), bounds_(0, 0, frame.width, frame.height) {}
  ~NSView() override;

  const Rect& frame() const { return frame_; }
  void setFrame(const Rect& frame);
  const Rect& bounds() const { return bounds_; }
  void setBoundsOrigin(Point origin);
  virtual bool isFlipped() const { return false; }

  NSView* superview() const { return superview_; }
  NSWindow* window() const { return window_; }
  const std::vector<std::shared_ptr<NSView>>& subviews() const { return subviews_; }
  /// Puts `view` on top of the subviews, taking it out of its former superview.
  void addSubview(std::shared_ptr<NSView> view);
  /// A window whose first responder is in the subtree falls back to itself.
  void removeFromSuperview();
  bool isDescendantOf(const NSView& ancestor) const;
  virtual void viewWillMoveToWindow(NSWindow* /*window*/) {}
  virtual void viewDidMoveToWindow() {}

  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  bool isHiddenOrHasHiddenAncestor() const;
  virtual int tag() const { return -1; }
  bool wantsLayer() const { return layer_ != nullptr; }
  /// True gives the view a backing layer when it has none; false takes it away.
  void setWantsLayer(bool wants);
  CALayer* layer() { return layer_.get(); }

  /// From this view's coordinates to `view`'s, or to window coordinates when null. Unchanged for a view of another
  /// tree.
  Point convertTo(Point point, const NSView* view) const;
  Point convertFrom(Point point, const NSView* view) const;
  Rect convertTo(const Rect& rect, const NSView* view) const;
  Rect convertFrom(const Rect& rect, const NSView* view) const;
  /// The deepest visible view at a point in the superview's coordinates, or null.
  virtual NSView* hitTest(Point point);
  /// The part of the bounds that no ancestor clips away.
  Rect visibleRect() const;

  void setNeedsDisplay() { setNeedsDisplay(bounds_); }
  void setNeedsDisplay(const Rect& rect);
  /// Paints what lies under the subviews. The canvas's origin is the view's top left corner, y grows downwards.
  virtual void draw(port::Canvas& /*canvas*/) {}
  /// Paints the view and its subtree; the canvas stands at the superview's top left corner.
  void display(port::Canvas& canvas);

  bool needsLayout() const { return needsLayout_; }
  void setNeedsLayout();
  /// Places the subviews. The base solves the active constraints of its subviews.
  virtual void layout();
  void layoutSubtreeIfNeeded();
  bool translatesAutoresizingMaskIntoConstraints() const { return translatesAutoresizingMask_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
  unsigned autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }
  virtual std::optional<Size> intrinsicContentSize() const { return std::nullopt; }

  virtual bool acceptsFirstMouse(const EventPointer& event);
  virtual bool mouseDownCanMoveWindow() const { return false; }
  virtual port::Cursor cursorAt(Point /*inView*/) const { return port::Cursor::arrow; }

  /// The pasteboard types of dragged things that the view takes; none: things are dragged over what lies below it.
  void registerForDraggedTypes(std::set<std::string> types) { draggedTypes_ = std::move(types); }
  const std::set<std::string>& registeredDraggedTypes() const { return draggedTypes_; }
  /// Something of a registered type came over the view: what would be done with it.
  virtual DragOperation draggingEntered(const NSDraggingInfo& /*dragged*/) { return DragOperation::none; }
  virtual void draggingExited() {}
  /// It was dropped here; false refuses it after all.
  virtual bool prepareForDragOperation(const NSDraggingInfo& /*dragged*/) { return true; }
  /// Whether it was taken.
  virtual bool performDragOperation(const NSDraggingInfo& /*dragged*/) { return false; }

  NSResponder* nextResponder() override;
  /// Asks the subviews, the topmost first.
  bool performKeyEquivalent(const EventPointer& event) override;

 protected:
  virtual void frameDidChange(const Rect& /*old*/) {}

 private:
  friend class NSWindow;
  friend class NSLayoutConstraint;
  void moveToWindow(NSWindow* window);
  void forgetWindow();
  void dropConstraintsOf(const NSView& leaving);
  bool clipsToBounds() const { return !layer_ || layer_->masksToBounds; }
  const NSView& root() const;
  Point toRoot(Point point) const;
  Point fromRoot(Point point) const;
  void resizeSubviews(Size old);
  Point toSuperview(Point point) const;
  Point fromSuperview(Point point) const;

  Rect frame_;
  Rect bounds_;
  NSView* superview_ = nullptr;
  NSWindow* window_ = nullptr;
  std::vector<std::shared_ptr<NSView>> subviews_;
  std::vector<std::shared_ptr<NSLayoutConstraint>> constraints_;
  std::unique_ptr<CALayer> layer_;
  std::set<std::string> draggedTypes_;
  unsigned autoresizingMask_ = 0;
  bool translatesAutoresizingMask_ = true;
  bool hidden_ = false;
  bool needsLayout_ = true;
};

}  // namespace platform
