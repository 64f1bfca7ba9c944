#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"

namespace platform {

enum class BorderType { none = 0, line = 1 };
enum class ScrollerStyle { legacy = 0, overlay = 1 };

/// The bar that shows and moves the visible part. An overlay scroller appears while scrolling or under the pointer.
class PLATFORM_EXPORT NSScroller : public NSView {
 public:
  ScrollerStyle scrollerStyle() const { return style_; }
  void setScrollerStyle(ScrollerStyle style);

 private:
  ScrollerStyle style_ = ScrollerStyle::legacy;
};

/// A view onto a larger document view. Wheel scrolling stops at the document's ends. Main thread.
class PLATFORM_EXPORT NSScrollView : public NSView {
 public:
  NSScrollView();
  explicit NSScrollView(const Rect& frame);
  ~NSScrollView() override;

  bool isFlipped() const override { return true; }
  std::shared_ptr<NSView> documentView() const { return document_; }
  void setDocumentView(std::shared_ptr<NSView> view);
  /// The visible size, without borders and legacy scrollers.
  Size contentSize() const;
  /// The document's visible part, document coordinates.
  Rect documentVisibleRect() const;
  void scrollTo(Point documentOrigin);
  void scrollRectToVisible(const Rect& inDocument);

  BorderType borderType() const { return border_; }
  void setBorderType(BorderType border);
  bool hasVerticalScroller() const { return hasVertical_; }
  void setHasVerticalScroller(bool has);
  bool hasHorizontalScroller() const { return hasHorizontal_; }
  void setHasHorizontalScroller(bool has);
  bool drawsBackground() const { return drawsBackground_; }
  void setDrawsBackground(bool draws);
  NSScroller* verticalScroller() { return vertical_.get(); }

  void layout() override;
  void scrollWheel(const EventPointer& event) override;
};

}  // namespace platform
