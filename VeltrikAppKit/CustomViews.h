#pragma once

#include "Platform/AppKit/NSView.h"

namespace veltrik {

/// A view whose origin is at the top left.
class FlipedNSView : public platform::NSView {
 public:
  using NSView::NSView;
  bool isFlipped() const override { return true; }
};

/// A region by which the user drags the window, also when the press brings the window to the front. A press that
/// doesn't move by 5 points counts as a click on what lies below.
class DraggerNSView : public FlipedNSView {
 public:
  using FlipedNSView::FlipedNSView;
  bool mouseDownCanMoveWindow() const override { return true; }
  bool acceptsFirstMouse(const platform::EventPointer& event) override;
  void mouseDown(const platform::EventPointer& event) override;
};

/// A region by which the window is not dragged; for the host's use.
class DragPreventerNSView : public FlipedNSView {
 public:
  using FlipedNSView::FlipedNSView;
  bool mouseDownCanMoveWindow() const override { return false; }
};

}  // namespace veltrik
