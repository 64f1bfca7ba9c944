#include "Platform/AppKit/NSButton.h"

#include <limits>
#include <utility>

#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSWindow.h"

namespace platform {

namespace {
constexpr double kHighlightedOpacity = 0.6;
}

void NSButton::setImage(std::shared_ptr<const NSImage> image) {
  image_ = std::move(image);
  setNeedsDisplay();
}

void NSButton::setHighlighted(bool highlighted) {
  if (std::exchange(highlighted_, highlighted) != highlighted) setNeedsDisplay();
}

void NSButton::draw(port::Canvas& canvas) {
  if (highlighted_) canvas.fade(kHighlightedOpacity);
  if (image_) drawImageFitting(canvas, *this, *image_);
}

void NSButton::mouseDown(const EventPointer& /*event*/) {
  if (!window()) return;
  // Whatever happens while the button is down may remove this view or close the window.
  const auto self = shared_from_this();
  const auto host = window()->shared_from_this();
  bool clicked = false;
  setHighlighted(true);
  window()->trackEvents(eventMask(EventType::leftMouseDragged) | eventMask(EventType::leftMouseUp),
                        std::numeric_limits<double>::max(), [&](const EventPointer& next, bool& stop) {
                          stop = !next || !window() || next->type == EventType::leftMouseUp;
                          const bool inside =
                              next && window() && bounds().contains(convertFrom(next->locationInWindow, nullptr));
                          clicked = inside && stop;
                          setHighlighted(inside && !stop);
                        });
  if (clicked) sendAction();
}

}  // namespace platform
