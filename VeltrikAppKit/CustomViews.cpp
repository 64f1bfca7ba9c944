#include "VeltrikAppKit/CustomViews.h"

#include <cmath>
#include <limits>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSWindow.h"
#include "VeltrikAppKit/PasteboardFiles.h"

namespace veltrik {

using platform::EventPointer;
using platform::EventType;

namespace {

constexpr double kDragThreshold = 5.0;

bool isDragged(platform::Point from, platform::Point to) {
  return std::abs(to.x - from.x) >= kDragThreshold || std::abs(to.y - from.y) >= kDragThreshold;
}

}  // namespace

bool DraggerNSView::acceptsFirstMouse(const EventPointer& event) {
  if (event && event->type == EventType::leftMouseDown) return true;
  return FlipedNSView::acceptsFirstMouse(event);
}

void DraggerNSView::mouseDown(const EventPointer& event) {
  if (!window()) return;
  // Whatever happens while the button is down may remove this view or close the window.
  const auto self = shared_from_this();
  const auto keeper = window()->shared_from_this();
  platform::NSWindow& dragged = *window();

  bool clicked = false;
  const auto track = [&](const EventPointer& next, bool& stop) {
    if (!next) {
      stop = true;
    } else if (next->type == EventType::leftMouseUp) {
      stop = true;
      clicked = true;
      platform::NSApplication::shared().postEvent(next, false);
    } else if (isDragged(event->locationInWindow, next->locationInWindow)) {
      dragged.performDrag(next);
    }
  };
  dragged.trackEvents(eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp),
                      std::numeric_limits<double>::max(), track);
  if (clicked) FlipedNSView::mouseDown(event);
}

void FileDroppableNSView::setFileDropAction(FileDropAction action) {
  registerForDraggedTypes({platform::PasteboardType::kURL});
  fileDropAction_ = std::move(action);
}

platform::DragOperation FileDroppableNSView::draggingEntered(const platform::NSDraggingInfo& /*dragged*/) {
  return platform::DragOperation::copy;
}

bool FileDroppableNSView::prepareForDragOperation(const platform::NSDraggingInfo& /*dragged*/) {
  return true;
}

bool FileDroppableNSView::performDragOperation(const platform::NSDraggingInfo& dragged) {
  const auto files = readFiles(dragged.pasteboard, "dropableImages");
  if (files.empty()) return false;
  const FileDropAction action = fileDropAction_;  // which may close the window, and this view with it
  if (action) action(files);
  return true;
}

}  // namespace veltrik
