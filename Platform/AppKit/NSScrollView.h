#pragma once

#include <functional>
#include <memory>

#include "Platform/AppKit/NSView.h"

namespace platform {

class NSClipView;
class Timer;

enum class BorderType { none = 0, line = 1 };
enum class ScrollerStyle { legacy = 0, overlay = 1 };

/// The bar that shows and moves the visible part. An overlay scroller appears while scrolling and fades out.
class PLATFORM_EXPORT NSScroller : public NSView {
 public:
  ~NSScroller() override;

  bool isFlipped() const override { return true; }
  ScrollerStyle scrollerStyle() const { return style_; }
  void setScrollerStyle(ScrollerStyle style);
  /// The visible part of the whole, from 0 to 1, and where it stands: 0 at the start, 1 at the end.
  void setKnob(double proportion, double position);
  double knobProportion() const { return proportion_; }
  double knobPosition() const { return position_; }
  /// Called with a position while the user drags the knob.
  void setAction(std::function<void(double)> action) { action_ = std::move(action); }
  /// Shows an overlay scroller for a while.
  void flash();
  /// How much of the scroller shows, 0 to 1.
  double visibility() const;

  NSView* hitTest(Point point) override;
  void draw(port::Canvas& canvas) override;
  void mouseDown(const EventPointer& event) override;

 private:
  Rect knob() const;
  void fade();

  ScrollerStyle style_ = ScrollerStyle::legacy;
  double proportion_ = 1;
  double position_ = 0;
  double opacity_ = 0;
  std::function<void(double)> action_;
  std::shared_ptr<Timer> timer_;
};

/// A view onto a larger document view. Wheel scrolling stops at the document's ends. Main thread.
class PLATFORM_EXPORT NSScrollView : public NSView {
 public:
  NSScrollView();
  explicit NSScrollView(const Rect& frame);
  ~NSScrollView() override;

  /// The nearest scroll view whose document `view` is or is inside of; null when there is none.
  static NSScrollView* enclosing(const NSView& view);

  bool isFlipped() const override { return true; }
  std::shared_ptr<NSView> documentView() const { return document_; }
  void setDocumentView(std::shared_ptr<NSView> view);
  /// The visible size, without borders and legacy scrollers.
  Size contentSize() const;
  /// The document's visible part, from the document's top left corner.
  Rect documentVisibleRect() const;
  /// `documentOrigin` from the document's top left corner; as near to it as the document's ends allow.
  void scrollTo(Point documentOrigin);
  /// Scrolls as little as shows `inDocument`; of a larger rectangle the start.
  void scrollRectToVisible(const Rect& inDocument);
  /// The document's frame changed: keeps the visible part inside it.
  void documentFrameDidChange();

  BorderType borderType() const { return border_; }
  void setBorderType(BorderType border);
  bool hasVerticalScroller() const { return hasVertical_; }
  void setHasVerticalScroller(bool has);
  bool hasHorizontalScroller() const { return hasHorizontal_; }
  void setHasHorizontalScroller(bool has);
  bool drawsBackground() const { return drawsBackground_; }
  void setDrawsBackground(bool draws);
  NSScroller* verticalScroller() { return vertical_.get(); }
  NSScroller* horizontalScroller() { return horizontal_.get(); }

  void draw(port::Canvas& canvas) override;
  void layout() override;
  void scrollWheel(const EventPointer& event) override;

 private:
  Size documentSize() const;
  double borderWidth() const { return border_ == BorderType::line ? 1 : 0; }
  void updateScrollers();
  void caretMayHaveMoved();

  std::shared_ptr<NSClipView> clip_;
  std::shared_ptr<NSView> document_;
  std::shared_ptr<NSScroller> vertical_;
  std::shared_ptr<NSScroller> horizontal_;
  BorderType border_ = BorderType::none;
  bool hasVertical_ = false;
  bool hasHorizontal_ = false;
  bool drawsBackground_ = true;
};

}  // namespace platform
