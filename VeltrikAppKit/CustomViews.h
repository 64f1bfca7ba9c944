#pragma once

#include <functional>
#include <vector>

#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/URL.h"

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

/// Takes dropped files and pictures, and leaves the pointer to what lies below it.
class FileDroppableNSView final : public platform::NSView {
 public:
  using FileDropAction = std::function<void(const std::vector<platform::URL>&)>;

  using NSView::NSView;
  const FileDropAction& fileDropAction() const { return fileDropAction_; }
  /// Also makes the view a place for drops.
  void setFileDropAction(FileDropAction action);

  NSView* hitTest(platform::Point) override { return nullptr; }
  platform::DragOperation draggingEntered(const platform::NSDraggingInfo& dragged) override;
  bool prepareForDragOperation(const platform::NSDraggingInfo& dragged) override;
  bool performDragOperation(const platform::NSDraggingInfo& dragged) override;

 private:
  FileDropAction fileDropAction_;
};

/// A region by which the window is not dragged; for the host's use.
class DragPreventerNSView : public FlipedNSView {
 public:
  using FlipedNSView::FlipedNSView;
  bool mouseDownCanMoveWindow() const override { return false; }
};

}  // namespace veltrik
