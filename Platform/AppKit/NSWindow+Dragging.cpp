#include <ranges>

#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSThemeFrame.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

namespace {

/// The front-most view at a point in the superview's coordinates that takes something of the pasteboard. Other than for
/// clicks it doesn't matter what the view says of hits.
std::shared_ptr<NSView> destination(NSView& view, Point inSuperview, const NSPasteboard& pasteboard) {
  if (view.isHidden() || !view.frame().contains(inSuperview)) return nullptr;
  const Point inside = view.convertFrom(inSuperview, view.superview());
  const auto subviews = view.subviews();
  for (const auto& subview : std::views::reverse(subviews))
    if (auto found = destination(*subview, inside, pasteboard)) return found;
  if (!pasteboard.offersAny(view.registeredDraggedTypes())) return nullptr;
  return std::static_pointer_cast<NSView>(view.shared_from_this());
}

}  // namespace

bool NSWindow::surfaceDragMoved(const port::Contents& contents, Point location) {
  const auto alive = self();
  layoutIfNeeded();
  const NSPasteboard pasteboard(contents);
  const NSDraggingInfo dragged{convertPointFromScreen(location), pasteboard};
  const auto content = contentView();
  const auto target = content ? destination(*content, dragged.location, pasteboard) : nullptr;
  if (target != dragTarget_.lock()) {
    surfaceDragExited();
    dragTarget_ = target;
    if (target) dragOperation_ = target->draggingEntered(dragged);
  }
  return dragOperation_ != DragOperation::none;
}

void NSWindow::surfaceDragExited() {
  const auto alive = self();
  const auto target = dragTarget_.lock();
  dragTarget_.reset();
  dragOperation_ = DragOperation::none;
  if (target) target->draggingExited();
}

bool NSWindow::surfaceDropped(const port::Contents& contents, Point location) {
  const auto alive = self();
  // The drop may be the first that is heard of this place.
  const bool wanted = surfaceDragMoved(contents, location);
  const auto target = dragTarget_.lock();
  dragTarget_.reset();
  dragOperation_ = DragOperation::none;
  if (!wanted || !target) return false;
  const NSPasteboard pasteboard(contents);
  const NSDraggingInfo dropped{convertPointFromScreen(location), pasteboard};
  return target->prepareForDragOperation(dropped) && target->performDragOperation(dropped);
}

}  // namespace platform
