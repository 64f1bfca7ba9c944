#include "Platform/AppKit/NSImageView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSWindow.h"

namespace platform {

void NSImageView::setImage(std::shared_ptr<const NSImage> image) {
  image_ = std::move(image);
  setNeedsDisplay();
}

void NSImageView::draw(port::Canvas& canvas) {
  if (image_) drawImageFitting(canvas, *this, *image_);
}

void drawImageFitting(port::Canvas& canvas, const NSView& view, const NSImage& image) {
  const Size space = view.bounds().size(), natural = image.size();
  if (natural.width <= 0 || natural.height <= 0) return;
  const double shrink = std::min({1.0, space.width / natural.width, space.height / natural.height});
  const Size shown{natural.width * shrink, natural.height * shrink};
  const auto screen = view.window() ? view.window()->screen() : std::nullopt;
  const auto bitmap = image.bestRepresentation((screen ? screen->scale : 1) * shrink);
  if (bitmap)
    canvas.image(*bitmap,
                 {(space.width - shown.width) / 2, (space.height - shown.height) / 2, shown.width, shown.height});
}

}  // namespace platform
