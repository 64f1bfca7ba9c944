#include "Programs/SampleHost/HostView.h"

#include <utility>

#include "Platform/Foundation/DispatchQueue.h"
#include "Programs/SampleHost/ChatTheme.h"

namespace samplehost {

HostView::HostView(const platform::Rect& frame) : NSView(frame) {
  setAutoresizingMask(platform::Autoresizing::kWidth | platform::Autoresizing::kHeight);
}

void HostView::setScene(std::shared_ptr<HostScene> scene) {
  scene_ = std::move(scene);
  setNeedsDisplay();
}

void HostView::draw(platform::port::Canvas& canvas) {
  if (firstDrawn_) platform::DispatchQueue::main().async(std::exchange(firstDrawn_, nullptr));
  if (scene_) {
    scene_->draw(canvas, bounds().size());
  } else {
    canvas.fill({0, 0, bounds().width, bounds().height}, theme::kWindow, 0);
  }
}

void HostView::scrollWheel(const platform::EventPointer& event) {
  if (scene_ && scene_->scroll(event->deltaY)) setNeedsDisplay();
}

}  // namespace samplehost
